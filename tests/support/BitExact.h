// Exact comparison of numbers. +0.0 and -0.0 differ; any NaN equals any NaN, because nothing
// promises the payload or the sign of one.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>

namespace volux::test {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

template <class T>
bool sameBits(T a, T b)
{
    static_assert(std::is_arithmetic_v<T>);
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(a) || std::isnan(b))
            return std::isnan(a) && std::isnan(b);
    }
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

/// "-0.5 (0xbfe0000000000000)"
template <class T>
std::string withBits(T value)
{
    std::uint64_t bits = 0;
    static_assert(sizeof(T) <= sizeof bits);
    if constexpr (std::is_integral_v<T>)
        bits = static_cast<std::make_unsigned_t<T>>(value);
    else if constexpr (sizeof(T) == sizeof(std::uint32_t)) {
        std::uint32_t narrow = 0;
        std::memcpy(&narrow, &value, sizeof narrow);
        bits = narrow;
    } else
        std::memcpy(&bits, &value, sizeof bits);
    std::ostringstream text;
    text << std::setprecision(std::numeric_limits<T>::max_digits10) << +value << " (0x" << std::hex
         << std::setfill('0') << std::setw(2 * static_cast<int>(sizeof(T))) << bits << ")";
    return text.str();
}

/// Use as EXPECT_TRUE(bitEqual(actual, expected)). Both must have one type: nothing is converted.
template <class T>
::testing::AssertionResult bitEqual(T actual, T expected)
{
    if (sameBits(actual, expected))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "got " << withBits(actual) << ", expected " << withBits(expected);
}

}  // namespace volux::test
