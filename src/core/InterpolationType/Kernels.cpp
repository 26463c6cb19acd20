// Instantiates the kernels; nothing else.
#include "Cubic.ipp"
#include "Linear.ipp"
#include "NearestNeighbor.ipp"

namespace volux::core {

#define VOLUX_TEMPLATE template
#include "volux/core/detail/instantiations/Kernels.inc"

}  // namespace volux::core
