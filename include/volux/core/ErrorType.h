/// @file
/// The result codes of the operations that can fail on their arguments.
#pragma once

namespace volux::core {

/// Outcome of an operation: zero is success, every failure is negative.
///
/// Callers compare the numbers, so these are never renumbered, although they are not contiguous. An
/// operation that returns a failure has changed nothing unless it says otherwise.
enum ErrorType : int {
    SUCCESS = 0,                   ///< the operation has done what was asked
    ERR_INVALID_ARGUMENT = -9728,  ///< a size, spacing, position, box or byte count is out of range
    ERR_NULL_POINTER = -9792,      ///< a required pointer argument is null
    ERR_INVALID_X = -9864,         ///< an x index or an x extent does not fit
    ERR_INVALID_Y = -9872,         ///< a y index or a y extent does not fit
    ERR_INVALID_Z = -9880,         ///< a z index or a z extent does not fit
    ERR_INVALID_CHANNEL = -9896,   ///< a channel index or channel count does not fit
    ERR_ALLOCATION_FAILED = -121100,  ///< the heap cannot supply the buffer
    ERR_EXTERNAL_MEMORY = -121800,    ///< refused: the image wraps memory it does not own
};

}  // namespace volux::core
