// The kernels called by themselves, without an image's member in between.
#pragma once

#include <type_traits>

#include "WrappedVolume.h"

namespace volux::test {

/// Calls a kernel with a border by value or, whatever its class is, as a Border*.
template <class Kernel>
struct KernelCall {
    template <class T, class B>
    auto operator()(const WrappedVolume<T>& scene, const oracle::Position& p, B border,
                    std::common_type_t<T> value = T{0}, unsigned int c = 0) const
    {
        using Passed = std::conditional_t<std::is_pointer_v<B>, Border*, B>;
        return Kernel().template operator()<T, Passed>(scene.image, p.x, p.y, p.z, c, border,
                                                       value);
    }
};

}  // namespace volux::test
