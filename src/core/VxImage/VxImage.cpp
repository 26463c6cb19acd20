// Instantiates the images and the plane functions; nothing else.
#include "Boxes.ipp"
#include "Fill.ipp"
#include "Planes.ipp"
#include "Sampling.ipp"
#include "Storage.ipp"

namespace volux::core {

#define VOLUX_TEMPLATE_CLASS template class
#include "volux/core/detail/instantiations/Images.inc"

#define VOLUX_TEMPLATE template
#include "volux/core/detail/instantiations/Sampling.inc"

#define VOLUX_TEMPLATE template
#include "volux/core/detail/instantiations/Planes.inc"

}  // namespace volux::core
