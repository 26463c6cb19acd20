#include "Work.h"

#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/info.h>
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>

namespace volux::resample::detail {

namespace {

// Called by many threads at once. Each part begins by reading an atomic that the caller has written
// last, and ends by writing one that the caller reads first: what either has done is seen by the
// other, whatever shares the parts out.
class Parts {
public:
    Parts(std::size_t items, std::size_t most, const Progress& progress,
          const std::function<void(std::size_t, std::size_t)>& work)
        : items_(items), most_(std::max<std::size_t>(most, 1)), progress_(progress), work_(work)
    {
        stopped_.store(false);  // written, not initialised: see above
    }

    std::size_t count() const { return (items_ + most_ - 1) / most_; }

    void operator()(std::size_t part) const { finished_ += stopped_ ? 0 : perform(part); }

    // Throws what a part has thrown first.
    bool areFinished() const
    {
        const bool areAll = finished_ == items_;
        if (failure_ != nullptr) {
            std::rethrow_exception(failure_);
        }
        return areAll;
    }

private:
    // The items that it has finished.
    std::size_t perform(std::size_t part) const
    {
        const std::size_t first = part * most_;
        const std::size_t end = std::min(first + most_, items_);
        try {
            work_(first, end);
            if (progress_) {
                tell(end - first);
            }
            return end - first;
        } catch (...) {
            const std::lock_guard<std::mutex> oneAtATime(mutex_);
            failure_ = failure_ == nullptr ? std::current_exception() : failure_;
            stopped_ = true;
            return 0;
        }
    }

    void tell(std::size_t more) const
    {
        const std::lock_guard<std::mutex> oneAtATime(mutex_);
        done_ += more;
        if (stopped_) {
            return;
        }
        try {
            stopped_ = !goOn();
        } catch (...) {
            stopped_ = true;  // before the next in line asks
            throw;
        }
    }

    // A callback that waits for tasks of its own must not be given another part meanwhile: it would
    // wait for itself.
    bool goOn() const
    {
        return oneapi::tbb::this_task_arena::isolate(
            [&] { return progress_(static_cast<double>(done_) / static_cast<double>(items_)); });
    }

    const std::size_t items_;
    const std::size_t most_;
    const Progress& progress_;
    const std::function<void(std::size_t, std::size_t)>& work_;
    mutable std::mutex mutex_;
    mutable std::size_t done_ = 0;
    mutable std::exception_ptr failure_;
    mutable std::atomic<bool> stopped_;
    mutable std::atomic<std::size_t> finished_{0};
};

void onThreads(int threads, const Parts& parts)
{
    namespace tbb = oneapi::tbb;
    using Control = tbb::global_control;
    // More threads than processors only run if all of the process may.
    const std::size_t allowed = Control::active_value(Control::max_allowed_parallelism);
    const Control control(Control::max_allowed_parallelism,
                          std::max<std::size_t>(allowed, static_cast<std::size_t>(threads)));
    tbb::task_arena arena(threads);
    arena.execute([&] {
        tbb::parallel_for(std::size_t{0}, parts.count(), parts, tbb::simple_partitioner());
    });
}

}  // namespace

bool shareOut(std::size_t items, std::size_t most, const Options& options,
              const std::function<void(std::size_t, std::size_t)>& work)
{
    constexpr unsigned int kMostThreads = 1024;
    const Parts parts(items, most, options.progress, work);
    const unsigned int threads =
        options.threads != 0 ? std::min(options.threads, kMostThreads)
                             : static_cast<unsigned int>(oneapi::tbb::info::default_concurrency());
    if (threads == 1 || parts.count() == 1) {
        for (std::size_t part = 0; part < parts.count(); ++part) {
            parts(part);
        }
    } else {
        onThreads(static_cast<int>(threads), parts);
    }
    return parts.areFinished();
}

}  // namespace volux::resample::detail
