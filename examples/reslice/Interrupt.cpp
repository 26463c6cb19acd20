#include "Interrupt.h"

#include <csignal>

#include "Failure.h"

namespace reslice {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void remember(int)
{
    interrupted = 1;
}

}  // namespace

void watchForInterrupts()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, remember);
    for (const int signal : {SIGPIPE, SIGXFSZ})
        std::signal(signal, SIG_IGN);
}

void stopIfInterrupted(const std::string& subject)
{
    if (interrupted != 0)
        throw Failure("interrupted while working on '" + subject + "'");
}

}  // namespace reslice
