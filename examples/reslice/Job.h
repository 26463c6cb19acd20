// One picture in the making: its progress, its time, and the place where an interrupt is noticed.
#pragma once

#include <chrono>
#include <string>

namespace reslice {

/// Draws a bar on the error stream, but only if that is a terminal. The destructor removes the bar.
class Job {
public:
    /// `tiles`: how many parts the picture has; rowDone and reached count within one of them.
    Job(std::string name, unsigned int tiles);
    ~Job();
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    /// Throws Failure when the user has interrupted the program.
    void rowDone(unsigned int row, unsigned int rows);

    /// The same with the fraction done, for calls that must not throw; false
    /// once the user has interrupted the program.
    bool reached(double part);

    /// Removes the bar, before anything else is printed.
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
