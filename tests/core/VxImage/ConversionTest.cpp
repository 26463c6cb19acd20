#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <limits>
#include <vector>

#include "support/BitExact.h"
#include "support/OwnPolicies.h"
#include "support/WrappedVolume.h"

namespace volux::test {
namespace {

// What becomes of a kernel's result in the forms that truncate and in those that round.
template <class T>
struct Conversion {
    double result;
    T truncated;
    T rounded;
};

// Drives each result through all forms: an interpolator may yield whatever double it likes.
template <class T>
void expectConversions(const std::vector<Conversion<T>>& table)
{
    const VxImage<T> image;
    const T value{0};
    RecordingInterpolator source;
    for (const Conversion<T>& entry : table) {
        SCOPED_TRACE(withBits(entry.result));
        source.result = entry.result;
        EXPECT_TRUE(bitEqual(image.getValueVoxel(0, 0, 0, 0, &source), entry.truncated));
        EXPECT_TRUE(
            bitEqual(image.getValueVoxel(0, 0, 0, 0, &source, CONSTANT, value), entry.rounded));
        EXPECT_TRUE(
            bitEqual(image.getValueVoxel(0, 0, 0, 0, &source, REPLICATION, value), entry.rounded));
        EXPECT_TRUE(
            bitEqual(image.getValueVoxel(0, 0, 0, 0, &source, &CONSTANT, value), entry.rounded));
        EXPECT_TRUE(bitEqual(image.getValueReal(0, 0, 0, 0, &source), entry.rounded));
        EXPECT_TRUE(
            bitEqual(image.getValueReal(0, 0, 0, 0, &source, CONSTANT, value), entry.rounded));
        EXPECT_TRUE(
            bitEqual(image.getValueReal(0, 0, 0, 0, &source, REPLICATION, value), entry.rounded));
        EXPECT_TRUE(
            bitEqual(image.getValueReal(0, 0, 0, 0, &source, &CONSTANT, value), entry.rounded));
        EXPECT_TRUE(bitEqual(image.getDoubleValueReal(0, 0, 0, 0, &source), entry.result));
        EXPECT_TRUE(bitEqual(image.getDoubleValueReal(0, 0, 0, 0, &source, &REPLICATION, value),
                             entry.result));
    }
}

TEST(Conversion, ToUnsignedCharWrapsModulo256)
{
    expectConversions<unsigned char>({
        {0.0, 0, 0},
        {-0.0, 0, 0},
        {0x1.fffffffffffffp-2, 0, 0},
        {0.5, 0, 1},
        {10.5, 10, 11},
        {254.5, 254, 255},
        {255.0, 255, 255},
        {255.5, 255, 0},
        {256.0, 0, 0},
        {300.0, 44, 44},
        {-0.4, 0, 0},
        {-0.5, 0, 255},
        {-0.6, 0, 255},
        {-1.0, 255, 255},
        {-1.5, 255, 254},
        {-257.0, 255, 255},
        {3000000001.0, 1, 1},
        {0x1p40 + 7, 7, 7},
        {4503599627370495.5, 255, 0},
        {4503599627370497.0, 1, 1},
        {0x1p53 + 2, 2, 2},
        {0x1.fffffffffffffp62, 0, 0},
    });
}

TEST(Conversion, ToUnsignedCharGivesZeroBeyond64Bits)
{
    expectConversions<unsigned char>({
        {0x1p63, 0, 0},
        {-0x1p63, 0, 0},
        {-0x1.0000000000001p63, 0, 0},
        {1e300, 0, 0},
        {-1e300, 0, 0},
        {kInfinity, 0, 0},
        {-kInfinity, 0, 0},
        {kNaN, 0, 0},
    });
}

TEST(Conversion, ToShortWrapsModulo65536)
{
    expectConversions<short>({
        {0.0, 0, 0},
        {2.5, 2, 3},
        {-0.5, 0, -1},
        {-2.5, -2, -3},
        {0x1.fffffffffffffp-2, 0, 0},
        {-0x1.fffffffffffffp-2, 0, 0},
        {32767.0, 32767, 32767},
        {32767.5, 32767, -32768},
        {32768.0, -32768, -32768},
        {40000.0, -25536, -25536},
        {65535.0, -1, -1},
        {65536.0, 0, 0},
        {-32768.5, -32768, 32767},
        {-32769.0, 32767, 32767},
        {2147483646.5, -2, -1},
        {2147483647.0, -1, -1},
        {-2147483647.0, 1, 1},
    });
}

TEST(Conversion, ToShortGivesZeroBeyond32Bits)
{
    expectConversions<short>({
        {2147483647.5, -1, 0},
        {2147483648.0, 0, 0},
        {2147483655.0, 0, 0},
        {-2147483648.0, 0, 0},
        {-2147483648.5, 0, 0},
        {-2147483655.0, 0, 0},
        {3e9, 0, 0},
        {0x1p40 + 7, 0, 0},
        {1e300, 0, 0},
        {-1e300, 0, 0},
        {kInfinity, 0, 0},
        {-kInfinity, 0, 0},
        {kNaN, 0, 0},
    });
}

TEST(Conversion, ToUnsignedShortWrapsModulo65536)
{
    expectConversions<unsigned short>({
        {-0.0, 0, 0},
        {0.5, 0, 1},
        {65535.0, 65535, 65535},
        {65535.5, 65535, 0},
        {65536.0, 0, 0},
        {70000.0, 4464, 4464},
        {-0.5, 0, 65535},
        {-1.0, 65535, 65535},
        {-65537.0, 65535, 65535},
        {3e9, 24064, 24064},
        {0x1p40 + 7, 7, 7},
        {4503599627370495.5, 65535, 0},
    });
}

TEST(Conversion, ToUnsignedShortGivesZeroBeyond64Bits)
{
    expectConversions<unsigned short>({
        {0x1p63, 0, 0},
        {-0x1p63, 0, 0},
        {1e300, 0, 0},
        {-1e300, 0, 0},
        {kInfinity, 0, 0},
        {-kInfinity, 0, 0},
        {kNaN, 0, 0},
    });
}

TEST(Conversion, ToIntKeepsWhatFits)
{
    expectConversions<int>({
        {0.0, 0, 0},
        {0.5, 0, 1},
        {-0.5, 0, -1},
        {2.5, 2, 3},
        {-2.5, -2, -3},
        {0x1.fffffffffffffp-2, 0, 0},
        {-0x1.fffffffffffffp-2, 0, 0},
        {2147483646.5, 2147483646, 2147483647},
        {2147483647.0, 2147483647, 2147483647},
        {-2147483647.5, -2147483647, INT_MIN},
        {-2147483648.0, INT_MIN, INT_MIN},
    });
}

TEST(Conversion, ToIntGivesTheLowestIntBeyond32Bits)
{
    expectConversions<int>({
        {2147483647.5, 2147483647, INT_MIN},
        {2147483648.0, INT_MIN, INT_MIN},
        {-2147483648.5, INT_MIN, INT_MIN},
        {-2147483649.0, INT_MIN, INT_MIN},
        {3e9, INT_MIN, INT_MIN},
        {0x1p40 + 7, INT_MIN, INT_MIN},
        {0x1p63, INT_MIN, INT_MIN},
        {1e300, INT_MIN, INT_MIN},
        {-1e300, INT_MIN, INT_MIN},
        {kInfinity, INT_MIN, INT_MIN},
        {-kInfinity, INT_MIN, INT_MIN},
        {kNaN, INT_MIN, INT_MIN},
    });
}

TEST(Conversion, ToUnsignedIntWrapsModuloTwoToThe32)
{
    expectConversions<unsigned int>({
        {-0.0, 0U, 0U},
        {0.5, 0U, 1U},
        {-0.5, 0U, 4294967295U},
        {-1.0, 4294967295U, 4294967295U},
        {2147483648.0, 2147483648U, 2147483648U},
        {3e9, 3000000000U, 3000000000U},
        {4294967295.0, 4294967295U, 4294967295U},
        {4294967295.5, 4294967295U, 0U},
        {4294967296.0, 0U, 0U},
        {-2147483649.0, 2147483647U, 2147483647U},
        {0x1p40 + 7, 7U, 7U},
        {4503599627370495.5, 4294967295U, 0U},
        {4503599627370497.0, 1U, 1U},
        {0x1.fffffffffffffp62, 4294966272U, 4294966272U},
        {-0x1.fffffffffffffp62, 1024U, 1024U},
    });
}

TEST(Conversion, ToUnsignedIntGivesZeroBeyond64Bits)
{
    expectConversions<unsigned int>({
        {0x1p63, 0U, 0U},
        {-0x1p63, 0U, 0U},
        {-0x1.0000000000001p63, 0U, 0U},
        {1e300, 0U, 0U},
        {-1e300, 0U, 0U},
        {kInfinity, 0U, 0U},
        {-kInfinity, 0U, 0U},
        {kNaN, 0U, 0U},
    });
}

TEST(Conversion, ToFloatNarrowsAndTheRoundedFormsGiveWholeNumbers)
{
    expectConversions<float>({
        {0.0, 0.0F, 0.0F},
        {-0.0, -0.0F, -0.0F},
        {0.1, 0.1F, 0.0F},
        {-0.3, -0.3F, -0.0F},
        {0.5, 0.5F, 1.0F},
        {-0.5, -0.5F, -1.0F},
        {2.5, 2.5F, 3.0F},
        {-2.5, -2.5F, -3.0F},
        {0x1.fffffffffffffp-2, 0.5F, 0.0F},
        {16777216.5, 16777216.0F, 16777216.0F},
        {16777217.0, 16777216.0F, 16777216.0F},
        {16777217.5, 16777218.0F, 16777218.0F},
        {16777219.0, 16777220.0F, 16777220.0F},
        {1e-50, 0.0F, 0.0F},
        {-1e-50, -0.0F, -0.0F},
        {0x1p-150, 0.0F, 0.0F},
        {0x1.8p-149, 0x1p-148F, 0.0F},
    });
}

TEST(Conversion, ToFloatOverflowsToInfinity)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    expectConversions<float>({
        {0x1.fffffep127, FLT_MAX, FLT_MAX},
        {0x1.fffffefffffffp127, FLT_MAX, FLT_MAX},
        {0x1.ffffffp127, infinity, infinity},
        {-0x1.ffffffp127, -infinity, -infinity},
        {1e39, infinity, infinity},
        {-DBL_MAX, -infinity, -infinity},
        {kInfinity, infinity, infinity},
        {-kInfinity, -infinity, -infinity},
        {kNaN, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::quiet_NaN()},
    });
}

TEST(Conversion, ToDoubleKeepsAndTheRoundedFormsGiveWholeNumbers)
{
    expectConversions<double>({
        {0.0, 0.0, 0.0},
        {-0.0, -0.0, -0.0},
        {0.1, 0.1, 0.0},
        {-0.3, -0.3, -0.0},
        {0.5, 0.5, 1.0},
        {-0.5, -0.5, -1.0},
        {2.5, 2.5, 3.0},
        {-2.5, -2.5, -3.0},
        {0x1.fffffffffffffp-2, 0x1.fffffffffffffp-2, 0.0},
        {-0x1.fffffffffffffp-2, -0x1.fffffffffffffp-2, -0.0},
        {0x1p-1074, 0x1p-1074, 0.0},
        {4503599627370494.5, 4503599627370494.5, 4503599627370495.0},
        {4503599627370495.5, 4503599627370495.5, 4503599627370496.0},
        {4503599627370497.0, 4503599627370497.0, 4503599627370497.0},
        {0x1p63, 0x1p63, 0x1p63},
        {DBL_MAX, DBL_MAX, DBL_MAX},
        {kInfinity, kInfinity, kInfinity},
        {-kInfinity, -kInfinity, -kInfinity},
        {kNaN, kNaN, kNaN},
    });
}

TEST(Conversion, HalfwayTruncatesWithoutABorderAndRoundsWithOne)
{
    WrappedVolume<unsigned char> scene(rowVolume<unsigned char>({10, 11}));
    EXPECT_EQ(scene.image.getValueVoxel(0.5, 0, 0, 0, LINEAR), 10);
    EXPECT_EQ(scene.image.getValueVoxel(0.5, 0, 0, 0, LINEAR, CONSTANT, 0), 11);
    EXPECT_EQ(scene.image.getValueReal(0.5, 0, 0, 0, LINEAR), 11);
    EXPECT_EQ(scene.image.getValueReal(0.5, 0, 0, 0), 11);
}

TEST(Conversion, ACubicOvershootBelowZeroWrapsInTheRoundedForms)
{
    WrappedVolume<unsigned char> scene(rowVolume<unsigned char>({0, 0, 0, 10}));
    ASSERT_EQ(scene.image.getDoubleValueReal(1.75, 0, 0, 0, CUBIC), -0.703125);
    EXPECT_EQ(scene.image.getValueVoxel(1.75, 0, 0, 0, CUBIC), 0);
    EXPECT_EQ(scene.image.getValueVoxel(1.75, 0, 0, 0, CUBIC, CONSTANT, 0), 255);
    EXPECT_EQ(scene.image.getValueReal(1.75, 0, 0, 0, CUBIC), 255);
}

TEST(Conversion, ACubicOvershootAboveTheLargestIntGivesTheLowest)
{
    WrappedVolume<int> scene(rowVolume<int>({0, 0, INT_MAX, INT_MAX, INT_MAX, INT_MAX}));
    ASSERT_EQ(scene.image.getDoubleValueReal(2.25, 0, 0, 0, CUBIC), INT_MAX * 1.0703125);
    EXPECT_EQ(scene.image.getValueVoxel(2.25, 0, 0, 0, CUBIC), INT_MIN);
    EXPECT_EQ(scene.image.getValueVoxel(2.25, 0, 0, 0, CUBIC, REPLICATION, 0), INT_MIN);
}

TEST(Conversion, TheRoundedFormsRoundFloatAndDoubleVoxelsToo)
{
    WrappedVolume<float> floats(rowVolume<float>({2.75F, -0.25F}));
    EXPECT_TRUE(bitEqual(floats.image.getValueVoxel(0, 0, 0, 0, LINEAR, CONSTANT, 0.0F), 3.0F));
    EXPECT_TRUE(bitEqual(floats.image.getValueReal(1, 0, 0, 0, LINEAR), -0.0F));
    EXPECT_TRUE(bitEqual(floats.image.getValueVoxel(0, 0, 0, 0, LINEAR), 2.75F));
    WrappedVolume<double> doubles(rowVolume<double>({2.75, -0.25}));
    EXPECT_TRUE(bitEqual(doubles.image.getValueReal(0, 0, 0, 0), 3.0));
    EXPECT_TRUE(
        bitEqual(doubles.image.getDoubleValueReal(0, 0, 0, 0, LINEAR, CONSTANT, 0.0), 2.75));
}

// The run-time spelling can not know which interpolator it calls, and both give the same bits.
TEST(Conversion, TheRoundedFormsRoundTheNearestFloatVoxelHoweverItIsSpelt)
{
    WrappedVolume<float> scene(rowVolume<float>({2.75F}));
    EXPECT_EQ(scene.image.getValueVoxel(0, 0, 0, 0, NEAREST_NEIGHBOR), 2.75F);
    EXPECT_EQ(scene.image.getValueVoxel(0, 0, 0, 0, &NEAREST_NEIGHBOR), 2.75F);
    EXPECT_EQ(scene.image.getValueVoxel(0, 0, 0, 0, NEAREST_NEIGHBOR, CONSTANT, 0.0F), 3.0F);
    EXPECT_EQ(scene.image.getValueVoxel(0, 0, 0, 0, &NEAREST_NEIGHBOR, CONSTANT, 0.0F), 3.0F);
    EXPECT_EQ(scene.image.getValueReal(0, 0, 0, 0, NEAREST_NEIGHBOR), 3.0F);
    EXPECT_EQ(scene.image.getValueReal(0, 0, 0, 0, &NEAREST_NEIGHBOR), 3.0F);
}

}  // namespace
}  // namespace volux::test
