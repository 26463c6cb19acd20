#include "Job.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

#include "Interrupt.h"

namespace reslice {

Job::Job(std::string name, unsigned int tiles)
    : name_(std::move(name)), tiles_(std::max(1u, tiles)), terminal_(isatty(STDERR_FILENO) == 1)
{
}

Job::~Job()
{
    hideBar();
}

void Job::rowDone(unsigned int row, unsigned int rows)
{
    reached((row + 1.0) / rows);
    stopIfInterrupted(name_);
}

bool Job::reached(double part)
{
    showBar((tilesDone_ + part) / tiles_);
    if (part >= 1.0)
        ++tilesDone_;
    return !isInterrupted();
}

void Job::hideBar()
{
    if (percentShown_ >= 0)
        std::fputs("\r\033[K", stderr);
    percentShown_ = -1;
}

double Job::seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void Job::showBar(double part)
{
    const int percent = static_cast<int>(100.0 * std::min(1.0, part));
    if (!terminal_ || percent == percentShown_)
        return;
    percentShown_ = percent;
    const std::string bar(static_cast<std::size_t>(percent) * 2 / 5, '#');
    std::fprintf(stderr, "\r[%-40s] %3d %%  %s", bar.c_str(), percent, name_.c_str());
}

}  // namespace reslice
