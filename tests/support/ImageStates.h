// Images in the states that lifecycle tests start from.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "BitExact.h"
#include "ElementTypes.h"
#include "Names.h"

namespace volux::test {

// Valid extents, for every element type, of a block that no machine can supply.
constexpr unsigned int kHugeWidth = 2147483647;
constexpr unsigned int kHugeHeight = 33554432;

template <class T>
std::vector<T> someValues(std::size_t count, std::uint64_t seed)
{
    std::vector<T> values(count);
    for (T& value : values)
        value = someValue<T>(seed++);
    return values;
}

/// Gives every element of the image's block a value of its own.
template <class T>
void stamp(VxImage<T>& image, std::size_t count, std::uint64_t seed)
{
    const std::vector<T> values = someValues<T>(count, seed);
    for (std::size_t i = 0; i < count; ++i)
        image.getBufferPointer()[i] = values[i];
}

/// Whether the elements are those that stamp() or someValues() makes from the seed.
template <class T>
::testing::AssertionResult isStamped(const T* elements, std::size_t count, std::uint64_t seed)
{
    for (std::size_t i = 0; i < count; ++i) {
        const T expected = someValue<T>(seed + i);
        if (!sameBits(elements[i], expected))
            return bitEqual(elements[i], expected) << " at element " << i;
    }
    return ::testing::AssertionSuccess();
}

template <class T>
::testing::AssertionResult isZeroed(const T* elements, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (!sameBits(elements[i], T{}))
            return bitEqual(elements[i], T{}) << " at element " << i;
    }
    return ::testing::AssertionSuccess();
}

/// Empty image with the geometry of a block that could not be had: what a failed allocation leaves.
template <class T>
void failToInitialize(VxImage<T>& image)
{
    ASSERT_EQ(image.initialize(kHugeWidth, kHugeHeight, 1, 1), ERR_ALLOCATION_FAILED);
}

}  // namespace volux::test
