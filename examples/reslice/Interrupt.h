// Ctrl-C and its like, turned into an ordinary failure so that clean-up is ordinary too.
#pragma once

#include <string>

namespace reslice {

/// From now on an interrupt only sets a flag, and a failing write reports an error instead of
/// ending the program.
void watchForInterrupts();

/// Whether the user has asked to stop.
bool isInterrupted();

/// Throws Failure once the user has asked to stop; `subject` is the file in hand.
void stopIfInterrupted(const std::string& subject);

}  // namespace reslice
