#include "volux/resample/Resample.h"

namespace volux::resample {

const char* describe(core::ErrorType code)
{
    switch (static_cast<int>(code)) {
        case core::SUCCESS:
            return "The call has done what was asked.";
        case static_cast<int>(kCancelled):
            return "The progress callback or the executor has cancelled the call.";
        case core::ERR_INVALID_ARGUMENT:
            return "A size, spacing, map, value or byte count is out of range, or memory overlaps.";
        case core::ERR_NULL_POINTER:
            return "A pointer is null, or an image that is read has no voxels.";
        case core::ERR_INVALID_X:
            return "An index or an extent does not fit along x.";
        case core::ERR_INVALID_Y:
            return "An index or an extent does not fit along y.";
        case core::ERR_INVALID_Z:
            return "An index or an extent does not fit along z.";
        case core::ERR_INVALID_CHANNEL:
            return "There is no such channel, or the numbers of channels differ.";
        case core::ERR_ALLOCATION_FAILED:
            return "There is not enough memory.";
        case core::ERR_EXTERNAL_MEMORY:
            return "The image wraps memory that it does not own, and cannot resize it.";
        default:
            return "No operation of volux_core or volux_resample returns this code.";
    }
}

}  // namespace volux::resample
