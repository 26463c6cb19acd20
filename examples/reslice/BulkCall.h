// What all calls of volux_resample share here: progress, Ctrl-C and messages about failures.
#pragma once

#include "Job.h"
#include "Volume.h"
#include "volux/resample.h"

namespace reslice {

/// Reports the call's progress to the job, which cancels the call once the user has interrupted
/// the program.
template <class Kernel>
volux::resample::Options bulkOptions(Kernel kernel, double outside, Job& job)
{
    volux::resample::Options options(kernel, core::Constant(), outside);
    options.progress = [&job](double part) { return job.reached(part); };
    return options;
}

/// Throws Failure unless the call succeeded, or bad_alloc if there was not enough memory.
void requireDone(core::ErrorType code, const Volume& volume, const Job& job);

}  // namespace reslice
