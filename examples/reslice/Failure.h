// What can go wrong for the user: one sentence each, and the exit status that goes with it.
#pragma once

#include <stdexcept>
#include <string>

namespace reslice {

/// A file that cannot be read or written; names it and the reason. Exit status 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A command line that makes no sense. Exit status 2.
class Misuse : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The words of the operating system for the error number.
std::string reasonOf(int errorNumber);

[[noreturn]] void cannotRead(const std::string& file, const std::string& reason);
[[noreturn]] void cannotWrite(const std::string& file, const std::string& reason);

}  // namespace reslice
