// A generator whose seed every failure names while it lives.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "Random.h"

namespace volux::test {

class Seeded : public Random {
public:
    explicit Seeded(std::uint64_t seed)
        : Random(seed), trace_(__FILE__, __LINE__, "seed " + std::to_string(seed))
    {
    }

private:
    ::testing::ScopedTrace trace_;
};

}  // namespace volux::test
