/// @file
/// The only exception of volux_core.
#pragma once

#include <exception>
#include <string>

#include "volux/core/Export.h"

namespace volux::base {

/// volux_core throws it on misuse of an image's lifecycle and on use of a policy that has no table
/// of its own.
///
/// The destructor writes the text and a line end to the standard error stream, so that a misuse
/// leaves a trace whether or not the caller reports it. volux_core throws a copy of a named object,
/// and so each misuse that is caught prints its line at least twice.
///
/// Threads: distinct objects are independent; lines that are printed at the same time may
/// interleave as the standard stream permits. One object must not be assigned to while it is in
/// use.
class VOLUX_CORE_API Exception : public std::exception {
public:
    /// Composes the text "message, file:line". Throws std::bad_alloc if memory runs out.
    Exception(std::string message, std::string file, int line);
    /// Copies the text: the destructor of the copy prints it once more. Throws std::bad_alloc.
    Exception(const Exception& other);
    Exception& operator=(const Exception& other);  ///< Copies the text. Throws std::bad_alloc.
    /// Prints the text and ignores a failing stream. Never throws.
    ~Exception() override;

    /// The composed text with file and line; valid until the object is assigned to or destroyed.
    const char* what() const noexcept override;

private:
    std::string text;
};

}  // namespace volux::base
