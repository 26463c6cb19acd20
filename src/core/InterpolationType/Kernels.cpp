// Instantiates the kernels; nothing else.
#include "Kernels.ipp"

namespace volux::core {

#define VOLUX_TEMPLATE template
#include "volux/core/detail/instantiations/Kernels.inc"

}  // namespace volux::core
