#include "Interrupt.h"

#include <atomic>
#include <csignal>

#include "Failure.h"

namespace reslice {
namespace {

// Lock-free, so a handler may set it and any thread may read it.
std::atomic<bool> interrupted{false};

void remember(int)
{
    interrupted = true;
}

}  // namespace

void watchForInterrupts()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, remember);
    for (const int signal : {SIGPIPE, SIGXFSZ})
        std::signal(signal, SIG_IGN);
}

bool isInterrupted()
{
    return interrupted;
}

void stopIfInterrupted(const std::string& subject)
{
    if (isInterrupted())
        throw Failure("interrupted while working on '" + subject + "'");
}

}  // namespace reslice
