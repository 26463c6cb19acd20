#include "Work.h"

#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/info.h>
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <mutex>

namespace volux::resample::detail {

namespace {

class Parts {
public:
    Parts(std::size_t items, std::size_t most, const Progress& progress,
          const std::function<void(std::size_t, std::size_t)>& work)
        : items_(items), most_(std::max<std::size_t>(most, 1)), progress_(progress), work_(work)
    {
    }

    std::size_t count() const { return (items_ + most_ - 1) / most_; }

    void operator()(std::size_t part)
    {
        if (stopped_) {
            return;
        }
        try {
            perform(part);
        } catch (...) {
            stopped_ = true;
            throw;
        }
    }

    bool stopped() const { return stopped_; }

private:
    void perform(std::size_t part)
    {
        const std::size_t first = part * most_;
        const std::size_t end = std::min(first + most_, items_);
        work_(first, end);
        if (progress_) {
            tell(end - first);
        }
    }

    void tell(std::size_t more)
    {
        const std::lock_guard<std::mutex> oneAtATime(mutex_);
        done_ += more;
        // Nobody who has said stop, or has thrown, is asked again.
        if (!stopped_ && !goOn() && done_ < items_) {
            stopped_ = true;
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
    std::mutex mutex_;
    std::size_t done_ = 0;
    std::atomic<bool> stopped_{false};
};

void onThreads(int threads, Parts& parts)
{
    namespace tbb = oneapi::tbb;
    using Control = tbb::global_control;
    // More threads than processors only run if all of the process may.
    const std::size_t allowed = Control::active_value(Control::max_allowed_parallelism);
    const Control control(Control::max_allowed_parallelism,
                          std::max<std::size_t>(allowed, static_cast<std::size_t>(threads)));
    tbb::task_arena arena(threads);
    arena.execute([&] {
        tbb::parallel_for(
            tbb::blocked_range<std::size_t>(0, parts.count()),
            [&](const tbb::blocked_range<std::size_t>& range) {
                for (std::size_t part = range.begin(); part < range.end(); ++part) {
                    parts(part);
                }
            },
            tbb::simple_partitioner());
    });
}

}  // namespace

bool shareOut(std::size_t items, std::size_t most, const Options& options,
              const std::function<void(std::size_t, std::size_t)>& work)
{
    constexpr unsigned int kMostThreads = 1024;
    Parts parts(items, most, options.progress, work);
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
    return !parts.stopped();
}

}  // namespace volux::resample::detail
