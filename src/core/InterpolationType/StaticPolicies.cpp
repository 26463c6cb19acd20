// The five policy objects.
//
// They are constant-initialised and no code runs for them when volux_core is loaded. A compiler
// would still register their destructors then, empty as they are, because they are virtual; the
// build files give this source, and no other, the option that ends that: -fno-use-cxa-atexit (g++),
// which needs optimisation to leave no empty initialiser behind, or -fno-c++-static-destructors
// (clang).
#include "volux/core/InterpolationBorderType.h"
#include "volux/core/InterpolationType.h"

namespace volux::core {

namespace InterpolationBorderType {
Constant CONSTANT{detail::ConstantInitialized()};
Replication REPLICATION{detail::ConstantInitialized()};
}  // namespace InterpolationBorderType

namespace InterpolationType {
NearestNeighbor NEAREST_NEIGHBOR{detail::ConstantInitialized()};
Linear LINEAR{detail::ConstantInitialized()};
Cubic CUBIC{detail::ConstantInitialized()};
}  // namespace InterpolationType

}  // namespace volux::core
