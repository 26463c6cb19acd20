#include "Work.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

#include "Processors.h"

namespace volux::resample::detail {

namespace {

// What makes a further thread pay: to begin and to join one takes a tenth of it.
constexpr double kWorthAThread = 200'000.0;  // nanoseconds
constexpr double kMostThreads = 1024.0;

// Called by many threads at once. What the caller did before is visible to them, and what they did
// is visible to the caller, because threads are made and joined in between or an executor
// synchronises.
class Parts {
public:
    Parts(const Job& job, const Options& options,
          const std::function<void(std::size_t, std::size_t)>& work)
        : items_(job.items),
          most_(std::max<std::size_t>(job.most, 1)),
          count_((items_ + most_ - 1) / most_),
          options_(options),
          work_(work)
    {
    }

    std::size_t count() const { return count_; }
    bool areLeft() const { return !stopped_ && next_ < count_; }

    // Parts are begun in their order, so that threads read neighbouring memory.
    void doNext()
    {
        const std::size_t part = next_++;
        if (part < count_ && !stopped_) {
            finished_ += perform(part * most_);
        }
    }

    void doAll()
    {
        while (areLeft()) {
            doNext();
        }
    }

    // Throws what a part has thrown first. A callback that stopped before it was told of all items
    // has cancelled: the answer must not depend on what other threads have finished since.
    bool areFinished() const
    {
        if (failure_ != nullptr) {
            std::rethrow_exception(failure_);
        }
        return finished_ == items_ && (!stopped_ || told_ == items_);
    }

private:
    // The items that it has finished.
    std::size_t perform(std::size_t first)
    {
        const std::size_t end = first + std::min(most_, items_ - first);
        try {
            work_(first, end);
            if (options_.progress) {
                tell(end - first);
            }
            return end - first;
        } catch (...) {
            stopped_ = true;
            const std::lock_guard<std::mutex> oneAtATime(failing_);
            failure_ = failure_ == nullptr ? std::current_exception() : failure_;
            return 0;
        }
    }

    // A thread of an executor does not queue: the callback may wait for the executor itself, which
    // then needs this thread, or has called this function from within the callback. Who is telling
    // tells of these items as well. If the callback throws, nobody tells again.
    void tell(std::size_t more)
    {
        std::unique_lock<std::mutex> turn(telling_, std::defer_lock);
        if (!options_.executor) {
            turn.lock();
        }
        if (untold_.fetch_add(more) != 0) {
            return;
        }
        for (std::size_t told = 0; told == 0 || untold_.fetch_sub(told) != told;) {
            told = untold_;
            ask(told);
        }
    }

    void ask(std::size_t more)
    {
        if (stopped_) {
            return;
        }
        told_ += more;
        if (!options_.progress(static_cast<double>(told_) / static_cast<double>(items_))) {
            stopped_ = true;
        }
    }

    const std::size_t items_;
    const std::size_t most_;
    const std::size_t count_;
    const Options& options_;
    const std::function<void(std::size_t, std::size_t)>& work_;
    std::atomic<std::size_t> next_{0};
    std::atomic<std::size_t> finished_{0};
    std::atomic<bool> stopped_{false};
    std::mutex telling_;
    std::atomic<std::size_t> untold_{0};
    std::size_t told_ = 0;
    std::mutex failing_;
    std::exception_ptr failure_;
};

// At least 1.
std::size_t threadsFor(const Job& job, const Options& options, std::size_t parts)
{
    const double worth = std::clamp(job.nanoseconds / kWorthAThread, 1.0, kMostThreads);
    const std::size_t most = std::min(static_cast<std::size_t>(worth), parts);
    if (most <= 1 || (options.threads == 0 && options.executor)) {
        return most;
    }
    return std::min<std::size_t>(most, options.threads != 0 ? options.threads : processors());
}

// The caller's thread and, as far as the system has them, others.
void onThreads(std::size_t threads, Parts& parts)
{
    std::vector<std::thread> others;
    try {
        others.reserve(threads - 1);
        while (others.size() < threads - 1 && parts.areLeft()) {
            others.emplace_back([&parts] { parts.doAll(); });
        }
    } catch (const std::system_error&) {  // no thread,
    } catch (const std::bad_alloc&) {     // or no memory for one: fewer do it as well
    }
    parts.doAll();
    for (std::thread& other : others) {
        other.join();
    }
}

}  // namespace

bool shareOut(const Job& job, const Options& options,
              const std::function<void(std::size_t, std::size_t)>& work)
{
    Parts parts(job, options, work);
    const std::size_t threads = threadsFor(job, options, parts.count());
    if (threads <= 1) {
        parts.doAll();
    } else if (options.executor) {
        options.executor(parts.count(), [&parts](std::size_t) { parts.doNext(); });
    } else {
        onThreads(threads, parts);
    }
    return parts.areFinished();
}

}  // namespace volux::resample::detail
