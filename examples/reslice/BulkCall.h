// What every call of volux_resample here has in common: progress, Ctrl-C, and what to say of
// failures.
#pragma once

#include "Job.h"
#include "Volume.h"
#include "volux/resample.h"

namespace reslice {

/// The job hears how far the call is, and cancels it once the user has interrupted the program.
template <class Kernel>
volux::resample::Options bulkOptions(Kernel kernel, double outside, Job& job)
{
    volux::resample::Options options(kernel, core::Constant(), outside);
    options.progress = [&job](double part) { return job.reached(part); };
    return options;
}

/// Throws Failure, or bad_alloc where memory was lacking, unless the call is done.
void requireDone(core::ErrorType code, const Volume& volume, const Job& job);

}  // namespace reslice
