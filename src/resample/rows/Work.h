// Work in parts, on several threads.
#pragma once

#include <cstddef>
#include <functional>

#include "volux/resample/Options.h"

namespace volux::resample::detail {

struct Job {
    std::size_t items;   // what parts are counted in
    std::size_t most;    // of them in a part
    double nanoseconds;  // that all of them take one thread, about
};

// Calls `work(first, end)` for parts of a job and the progress callback after each part: on the
// caller's thread and on as many others as the options allow and the job is worth, all of which
// have ended when it returns; or on the options' executor. False if parts were left out, since the
// callback said stop or the executor left them out; parts that had begun are finished. What a call
// throws ends the work likewise, and is thrown.
bool shareOut(const Job& job, const Options& options,
              const std::function<void(std::size_t, std::size_t)>& work);

}  // namespace volux::resample::detail
