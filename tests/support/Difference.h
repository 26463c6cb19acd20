// How a comparison outside the unit tests says that it did not hold.
#pragma once

#include <stdexcept>

namespace volux::test {

/// The library and what it is compared with part.
class Difference : public std::logic_error {
public:
    using std::logic_error::logic_error;
};

inline void require(bool holds, const char* otherwise)
{
    if (!holds)
        throw Difference(otherwise);
}

}  // namespace volux::test
