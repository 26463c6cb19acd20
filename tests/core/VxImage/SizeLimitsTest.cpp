// Which extents an image can have.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

#include "support/ImageAccess.h"
#include "support/ImageFields.h"
#include "support/ImageStates.h"
#include "support/Seeded.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

constexpr unsigned int kMaxExtent = 2147483647;

template <class T>
class SizeLimits : public ::testing::Test {
protected:
    bool isValid(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
    {
        return callPrivate<member::IsValidSize>(image, w, h, d, c);
    }

    VxImage<T> image;
};
TYPED_TEST_SUITE(SizeLimits, ElementTypes, ElementTypeNames);

struct ExtentCase {
    unsigned int extent;
    bool valid;
};

constexpr ExtentCase kExtents[] = {
    {0, false},         {1, true},           {2, true},           {2147483646, true},
    {2147483647, true}, {2147483648, false}, {2147483649, false}, {4294967295, false},
};

TYPED_TEST(SizeLimits, EachExtentIsFrom1ToTheLargestInt)
{
    for (const ExtentCase& entry : kExtents) {
        EXPECT_EQ(this->isValid(entry.extent, 1, 1, 1), entry.valid) << entry.extent;
        EXPECT_EQ(this->isValid(1, entry.extent, 1, 1), entry.valid) << entry.extent;
        EXPECT_EQ(this->isValid(1, 1, entry.extent, 1), entry.valid) << entry.extent;
        EXPECT_EQ(this->isValid(1, 1, 1, entry.extent), entry.valid) << entry.extent;
    }
}

/// Three extents whose product is the largest number of elements that 64 bits of bytes hold, or for
/// 8 bytes (that number is a prime) one less. One more of any extent is too much.
struct LargestSize {
    std::size_t elementBytes;
    unsigned int a, b, c;
};

constexpr LargestSize kLargest[] = {
    {1, 65535, 42009217, 6700417},
    {2, 454279, 31252369, 649657},
    {4, 2147483647, 715827883, 3},
    {8, 1334550, 1311753, 1317173},
};

TYPED_TEST(SizeLimits, TheBytesFit64BitsExactly)
{
    for (const LargestSize& size : kLargest) {
        if (size.elementBytes != sizeof(TypeParam))
            continue;
        const auto [bytes, a, b, c] = size;
        EXPECT_TRUE(this->isValid(a, b, c, 1));
        EXPECT_TRUE(this->isValid(1, a, b, c));
        EXPECT_TRUE(this->isValid(c, 1, a, b));
        EXPECT_TRUE(this->isValid(b, c, 1, a));
        EXPECT_FALSE(this->isValid(a, b + 1, c, 1));
        EXPECT_FALSE(this->isValid(1, a, b + 1, c));
        EXPECT_FALSE(this->isValid(c + 1, 1, a, b));
        EXPECT_FALSE(this->isValid(b, c + 1, 1, a));
    }
}

TYPED_TEST(SizeLimits, APowerOfTwoBytesTooManyIsRefused)
{
    constexpr unsigned int kHalf = 0x40000000;
    constexpr unsigned int kLast = 16 / sizeof(TypeParam);  // 2^30 * 2^30 * 16 bytes are 2^64
    EXPECT_FALSE(this->isValid(kHalf, kHalf, kLast, 1));
    EXPECT_FALSE(this->isValid(kHalf, kHalf, 1, kLast));
    EXPECT_TRUE(this->isValid(kHalf, kHalf - 1, kLast, 1));
    EXPECT_TRUE(this->isValid(kHalf, kHalf, kLast - 1, 1));
}

TYPED_TEST(SizeLimits, AProductThatWrapsTo0IsRefused)
{
    EXPECT_FALSE(this->isValid(0x10000, 0x10000, 0x10000, 0x10000));
    EXPECT_FALSE(this->isValid(kMaxExtent, kMaxExtent, kMaxExtent, kMaxExtent));
}

__extension__ typedef unsigned __int128 Wide;

bool fits64Bits(unsigned int w, unsigned int h, unsigned int d, unsigned int c,
                std::size_t elementBytes)
{
    const Wide voxels = Wide{w} * h * d;
    const Wide limit = ~std::uint64_t{0};
    return voxels <= limit && voxels * c <= limit && voxels * c * elementBytes <= limit;
}

TYPED_TEST(SizeLimits, AgreesWithWideArithmetic)
{
    Seeded random(71);
    const auto extent = [&] {
        return 1 + static_cast<unsigned int>((random.bits() & kMaxExtent) % kMaxExtent >>
                                             random.below(31));
    };
    int valid = 0;
    for (int i = 0; i < 20000; ++i) {
        const unsigned int w = extent(), h = extent(), d = extent(), c = extent();
        const bool expected = fits64Bits(w, h, d, c, sizeof(TypeParam));
        valid += expected ? 1 : 0;
        ASSERT_EQ(this->isValid(w, h, d, c), expected) << w << ' ' << h << ' ' << d << ' ' << c;
    }
    EXPECT_GT(valid, 1000);
    EXPECT_LT(valid, 19000);
}

TYPED_TEST(SizeLimits, TestingASizeChangesNothing)
{
    EXPECT_TRUE(this->isValid(4, 3, 2, 1));
    EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
}

struct BadSize {
    unsigned int w, h, d, c;
};

constexpr BadSize kBadSizes[] = {
    {0, 1, 1, 1},          {1, 0, 1, 1},
    {1, 1, 0, 1},          {1, 1, 1, 0},
    {2147483648, 1, 1, 1}, {1, 4294967295, 1, 1},
    {1, 1, 2147483648, 1}, {1, 1, 1, 4294967295},
    {0, 0, 0, 0},          {65536, 65536, 65536, 65536},
};

TYPED_TEST(SizeLimits, AnEmptyImageStaysEmptyWhenTheSizeIsInvalid)
{
    TypeParam data{};
    for (const BadSize& s : kBadSizes) {
        EXPECT_EQ(this->image.initialize(s.w, s.h, s.d, s.c), ERR_INVALID_ARGUMENT);
        EXPECT_EQ(this->image.setImageSize(s.w, s.h, s.d, s.c), ERR_INVALID_ARGUMENT);
        EXPECT_EQ(this->image.setImageSize(ImageSize(s.w, s.h, s.d, s.c)), ERR_INVALID_ARGUMENT);
        EXPECT_EQ(this->image.initializeWithPointer(&data, s.w, s.h, s.d, s.c),
                  ERR_INVALID_ARGUMENT);
        EXPECT_EQ(fieldsOf(this->image), ImageFields<TypeParam>{});
    }
}

TYPED_TEST(SizeLimits, TheSameExtentsCanFitOneElementSizeAndNotAnother)
{
    const ErrorType expected =
        sizeof(TypeParam) <= 2 ? ERR_ALLOCATION_FAILED : ERR_INVALID_ARGUMENT;
    EXPECT_EQ(this->image.initialize(kMaxExtent, kMaxExtent, 2, 1), expected);
}

}  // namespace
}  // namespace volux::test
