// One picture in the making: its progress, its time, and the place where an interrupt is noticed.
#pragma once

#include <chrono>
#include <string>

namespace reslice {

/// Draws a bar on the error stream, but only when that is a terminal; the bar is gone when the
/// job is.
class Job {
public:
    /// `tiles`: how many parts the picture has; rowDone and reached count within one of them.
    Job(std::string name, unsigned int tiles);
    ~Job();
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    /// Throws Failure when the user has interrupted the program.
    void rowDone(unsigned int row, unsigned int rows);

    /// The same for a part of which only the fraction is known, for calls that must not throw;
    /// false once the user has interrupted the program.
    bool reached(double part);

    /// Takes the bar away, before anything else is printed.
    void hideBar();

    const std::string& name() const { return name_; }
    double seconds() const;

private:
    void showBar(double part);

    std::string name_;
    unsigned int tiles_;
    unsigned int tilesDone_ = 0;
    int percentShown_ = -1;
    bool terminal_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace reslice
