// A small generator that gives the same numbers with every compiler and standard library.
#pragma once

#include <cstdint>

#include "ElementTypes.h"

namespace volux::test {

class Random {
public:
    explicit Random(std::uint64_t seed) : state_(scrambled(seed)) {}

    std::uint64_t bits() { return scrambled(state_++); }

    /// A number from 0 to limit - 1.
    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(bits() % limit); }

    /// A number from first to last.
    unsigned int between(unsigned int first, unsigned int last)
    {
        return first + below(last - first + 1);
    }

private:
    std::uint64_t state_;
};

}  // namespace volux::test
