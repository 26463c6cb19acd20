#include "BulkCall.h"

#include <new>
#include <string>

#include "Failure.h"
#include "Interrupt.h"

namespace reslice {

void requireDone(core::ErrorType code, const Volume& volume, const Job& job)
{
    if (code == volux::resample::kCancelled)
        stopIfInterrupted(job.name());
    if (code == core::ERR_ALLOCATION_FAILED)
        throw std::bad_alloc();
    if (code != core::SUCCESS)
        cannotRead(volume.path(), "its voxels can not be resampled, code " + std::to_string(code));
}

}  // namespace reslice
