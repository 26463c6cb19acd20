// The three kernels, by the number of neighbours that each reads along an axis.
#pragma once

namespace volux::exact {

enum class Kernel { NEAREST, LINEAR, CUBIC };

constexpr int reach(Kernel kernel)
{
    return kernel == Kernel::NEAREST ? 1 : kernel == Kernel::LINEAR ? 2 : 4;
}

}  // namespace volux::exact
