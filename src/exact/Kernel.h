// The three kernels, by the number of neighbours that each reads along an axis.
#pragma once

namespace volux::exact {

enum class Kernel { NEAREST = 1, LINEAR = 2, CUBIC = 4 };

constexpr int reach(Kernel kernel)
{
    return static_cast<int>(kernel);
}

}  // namespace volux::exact
