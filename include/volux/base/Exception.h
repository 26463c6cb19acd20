/// @file
/// The library's only exception.
#pragma once

#include <exception>
#include <string>

#include "volux/core/Export.h"

namespace volux::base {

/// Thrown on misuse of an image's lifecycle and on use of a policy that has no table of its own.
///
/// Destroying an object writes its text and a line end to the standard error stream. That is
/// deliberate: a misuse leaves a trace whether or not the caller reports it. The library throws a
/// copy of a named object, so each misuse that is caught prints its line at least twice.
///
/// Threads: distinct objects are independent; lines printed at the same time may interleave as the
/// standard stream permits.
class VOLUX_CORE_API Exception : public std::exception {
public:
    /// Composes "message, file:line". Throws std::bad_alloc if there is no memory for the text.
    Exception(std::string message, std::string file, int line);
    /// Another object with the same text: destroying it prints the line once more.
    Exception(const Exception& other);
    Exception& operator=(const Exception& other);  ///< Takes the text of `other`.
    /// Prints the text. Never throws: a failing stream is ignored.
    ~Exception() override;

    /// The composed text, file and line included; valid while the object lives.
    const char* what() const noexcept override;

private:
    std::string text;
};

}  // namespace volux::base
