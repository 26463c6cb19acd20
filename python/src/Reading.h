// How samples are taken, and what watches a call while it runs without Python's lock.
#pragma once

#include <atomic>
#include <chrono>
#include <exception>
#include <functional>
#include <thread>

#include "Arrays.h"

namespace volux::python {

/// What a number of the package stands for. Other numbers are a ValueError.
core::Interpolator* kernelOf(int number);
core::Border* borderOf(int number);

/// Options, and the progress callback of Python's, which may be None.
struct Reading {
    Reading(int kernel, int border, double outside, bool edgeExtends, int overflow,
            const Extents& subsamples, unsigned int threads, nb::object callback);

    resample::Options options;
    nb::object progress;
};

/// Calls a function of volux_resample without Python's lock.
///
/// The thread that called takes the lock about every 50 ms, to see signals and to tell of progress;
/// the other threads never do. What a signal or the callback raises ends the call.
///
/// Whoever asks for the lock while Python finalizes never gets it: the thread ends there, in the
/// middle of a call. So when Python exits, the calls of other threads are cancelled and waited for
/// first; they raise SystemExit, which ends their threads without a word.
class WatchedCall {
public:
    using Function = std::function<core::ErrorType(const resample::Options&)>;

    /// Returns if the function did SUCCESS, and else raises what fits.
    static void perform(const Reading& reading, const Function& function);

    /// Cancels the calls that other threads are in, and those that they will make.
    static void endAll();
    /// A child has only the thread that forked.
    static void forgetOthers() { running_ = 0; }

private:
    using Clock = std::chrono::steady_clock;

    explicit WatchedCall(const Reading& reading) : reading_(reading) { ++running_; }
    WatchedCall(const WatchedCall&) = delete;
    WatchedCall& operator=(const WatchedCall&) = delete;
    ~WatchedCall() { --running_; }

    void perform(const Function& function);
    bool goesOn(double fraction) noexcept;
    void tell(double fraction);

    static std::atomic<int> running_;
    static std::atomic<bool> isExiting_;

    const Reading& reading_;
    const std::thread::id caller_ = std::this_thread::get_id();
    Clock::time_point looked_ = Clock::now();
    std::exception_ptr raised_;
};

/// Raises what a result other than SUCCESS means.
void raiseUnlessSuccess(core::ErrorType result);

void addReading(nb::module_& module);

}  // namespace volux::python
