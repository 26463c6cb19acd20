// The object LABELS, for which no code runs when the library is loaded: the build files give this
// source the option that core/InterpolationType/StaticPolicies.cpp has, and for its reason.
#include "volux/resample/Labels.h"

namespace volux::resample {

Labels LABELS{core::detail::ConstantInitialized()};

}  // namespace volux::resample
