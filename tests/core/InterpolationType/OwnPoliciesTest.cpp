#include "volux/core/InterpolationType.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <typeinfo>

#include "support/BitExact.h"
#include "support/OwnPolicies.h"
#include "support/TypedSuites.h"
#include "support/WrappedVolume.h"

namespace volux::test {
namespace {

template <class T>
class OwnPolicies : public ::testing::Test {
protected:
    OwnPolicies() : scene(countingVolume<T>({3, 4, 5}, 2))
    {
        scene.image.setVoxelSize(2.0, 0.5, 4.0);
        interpolator.result = 7.0;
        border.answer = [](const Index&) { return 6.0; };
    }

    // The one call that the interpolator has seen since the last time.
    RecordingInterpolator::Call onlyCall()
    {
        EXPECT_EQ(interpolator.gets, 1);
        EXPECT_EQ(interpolator.calls.size(), 1U);
        const RecordingInterpolator::Call call = interpolator.calls.at(0);
        interpolator.calls.clear();
        interpolator.gets = 0;
        EXPECT_EQ(call.image, &scene.image);
        EXPECT_EQ(*call.type, typeid(T));
        EXPECT_EQ(call.channel, 1U);
        return call;
    }

    void expectPosition(const RecordingInterpolator::Call& call, double x, double y, double z)
    {
        EXPECT_TRUE(bitEqual(call.x, x));
        EXPECT_TRUE(bitEqual(call.y, y));
        EXPECT_TRUE(bitEqual(call.z, z));
    }

    // A call with a border has seen position (x, y, z), this kind of border, and the value 9.
    template <class B>
    void expectBordered(double x, double y, double z, const Border* runTimeBorder)
    {
        const RecordingInterpolator::Call call = onlyCall();
        expectPosition(call, x, y, z);
        EXPECT_EQ(*call.borderKind, typeid(B));
        EXPECT_EQ(call.border, runTimeBorder);
        EXPECT_EQ(call.value, 9.0);
    }

    // A call without a border has seen Constant and 0.
    void expectBorderless(double x, double y, double z)
    {
        const RecordingInterpolator::Call call = onlyCall();
        expectPosition(call, x, y, z);
        EXPECT_EQ(*call.borderKind, typeid(Constant));
        EXPECT_TRUE(bitEqual(call.value, 0.0));
    }

    WrappedVolume<T> scene;
    RecordingInterpolator interpolator;
    RecordingBorder border;
};
TYPED_TEST_SUITE(OwnPolicies, ElementTypes, ElementTypeNames);

TYPED_TEST(OwnPolicies, AnInterpolatorIsAskedOnceByVoxelReads)
{
    const VxImage<TypeParam>& image = this->scene.image;
    const TypeParam nine{9};
    EXPECT_EQ(image.getValueVoxel(0.5, -0.0, 1e300, 1, &this->interpolator), TypeParam{7});
    this->expectBorderless(0.5, -0.0, 1e300);
    EXPECT_EQ(image.getValueVoxel(1, 2, 3, 1, &this->interpolator, CONSTANT, nine), TypeParam{7});
    this->template expectBordered<Constant>(1, 2, 3, nullptr);
    EXPECT_EQ(image.getValueVoxel(1, 2, 3, 1, &this->interpolator, REPLICATION, nine),
              TypeParam{7});
    this->template expectBordered<Replication>(1, 2, 3, nullptr);
    EXPECT_EQ(image.getValueVoxel(1, 2, 3, 1, &this->interpolator, &this->border, nine),
              TypeParam{7});
    this->template expectBordered<Border*>(1, 2, 3, &this->border);
}

TYPED_TEST(OwnPolicies, AnInterpolatorIsAskedOnceByPhysicalReadsAtTheVoxelPosition)
{
    const VxImage<TypeParam>& image = this->scene.image;
    const TypeParam nine{9};
    EXPECT_EQ(image.getValueReal(1, 2, 3, 1, &this->interpolator), TypeParam{7});
    this->expectBorderless(0.5, 4.0, 0.75);
    EXPECT_EQ(image.getValueReal(1, 2, 3, 1, &this->interpolator, CONSTANT, nine), TypeParam{7});
    this->template expectBordered<Constant>(0.5, 4.0, 0.75, nullptr);
    EXPECT_EQ(image.getValueReal(1, 2, 3, 1, &this->interpolator, REPLICATION, nine), TypeParam{7});
    this->template expectBordered<Replication>(0.5, 4.0, 0.75, nullptr);
    EXPECT_EQ(image.getValueReal(1, 2, 3, 1, &this->interpolator, &this->border, nine),
              TypeParam{7});
    this->template expectBordered<Border*>(0.5, 4.0, 0.75, &this->border);
}

TYPED_TEST(OwnPolicies, AnInterpolatorIsAskedOnceByDoubleReadsAtTheVoxelPosition)
{
    const VxImage<TypeParam>& image = this->scene.image;
    const TypeParam nine{9};
    this->interpolator.result = 7.25;
    EXPECT_EQ(image.getDoubleValueReal(1, 2, 3, 1, &this->interpolator), 7.25);
    this->expectBorderless(0.5, 4.0, 0.75);
    EXPECT_EQ(image.getDoubleValueReal(1, 2, 3, 1, &this->interpolator, CONSTANT, nine), 7.25);
    this->template expectBordered<Constant>(0.5, 4.0, 0.75, nullptr);
    EXPECT_EQ(image.getDoubleValueReal(1, 2, 3, 1, &this->interpolator, REPLICATION, nine), 7.25);
    this->template expectBordered<Replication>(0.5, 4.0, 0.75, nullptr);
    EXPECT_EQ(image.getDoubleValueReal(1, 2, 3, 1, &this->interpolator, &this->border, nine), 7.25);
    this->template expectBordered<Border*>(0.5, 4.0, 0.75, &this->border);
}

TYPED_TEST(OwnPolicies, TheBorderIsNotAskedByTheDispatch)
{
    this->scene.image.getValueVoxel(-9, 0, 0, 0, &this->interpolator, &this->border, TypeParam{0});
    EXPECT_EQ(this->border.gets, 0);
    EXPECT_TRUE(this->border.calls.empty());
}

TYPED_TEST(OwnPolicies, AnInterpolatorSeesTheBitsOfTheChannel)
{
    this->scene.image.getValueVoxel(0, 0, 0, -1, &this->interpolator);
    this->scene.image.getValueReal(0, 0, 0, INT_MIN, &this->interpolator, CONSTANT, TypeParam{0});
    ASSERT_EQ(this->interpolator.calls.size(), 2U);
    EXPECT_EQ(this->interpolator.calls[0].channel, 4294967295U);
    EXPECT_EQ(this->interpolator.calls[1].channel, 2147483648U);
}

TYPED_TEST(OwnPolicies, ABorderSeesTheBitsOfTheChannel)
{
    const VxImage<TypeParam>& image = this->scene.image;
    const TypeParam zero{0};
    image.getValueVoxel(-9, 0, 0, -1, NEAREST_NEIGHBOR, &this->border, zero);
    image.getDoubleValueReal(-9, 0, 0, -2, &NEAREST_NEIGHBOR, &this->border, zero);
    ASSERT_EQ(this->border.calls.size(), 2U);
    EXPECT_EQ(this->border.calls[0].channel, 4294967295U);
    EXPECT_EQ(this->border.calls[1].channel, 4294967294U);
}

TYPED_TEST(OwnPolicies, ABorderIsAskedAlikeHoweverTheInterpolatorIsGiven)
{
    const VxImage<TypeParam>& image = this->scene.image;
    const TypeParam nine{9};
    RecordingBorder other = this->border;
    EXPECT_EQ(image.getValueVoxel(2.5, 3.5, -1, 1, CUBIC, &this->border, nine),
              image.getValueVoxel(2.5, 3.5, -1, 1, &CUBIC, &other, nine));
    EXPECT_EQ(image.getValueReal(5, 1.75, -4, 1, LINEAR, &this->border, nine),
              image.getValueReal(5, 1.75, -4, 1, &LINEAR, &other, nine));
    EXPECT_EQ(this->border.gets, other.gets);
    EXPECT_EQ(this->border.indices(), other.indices());
    EXPECT_EQ(this->border.gets, static_cast<int>(this->border.calls.size()));
    EXPECT_EQ(this->border.calls.back().value, 9.0);
    EXPECT_EQ(other.calls.back().value, 9.0);
}

TYPED_TEST(OwnPolicies, ABorderWithTheForwardingTableIsReached)
{
    WrappedVolume<TypeParam> row(rowVolume<TypeParam>({1, 2, 3}));
    PeriodicBorder periodic;
    const TypeParam zero{0};
    EXPECT_EQ(row.image.getValueVoxel(-1, 0, 0, 0, NEAREST_NEIGHBOR, &periodic, zero),
              TypeParam{3});
    EXPECT_EQ(row.image.getValueReal(4, 0, 0, 0, &NEAREST_NEIGHBOR, &periodic, zero), TypeParam{2});
    EXPECT_EQ(row.image.getDoubleValueReal(2.5, 0, 0, 0, LINEAR, &periodic, zero), 2.0);
}

// Gives the distance to a corner of the volume. Uses the table that forwards to operator().
struct CornerDistance : Interpolator {
    InterpolatorTable& get() override
    {
        static Interpolator::interpolator_t<CornerDistance, Interpolator> table;
        return table;
    }

    template <class T, class B>
    double operator()(const VxImage<T>&, double x, double y, double z, unsigned int c, B, T value)
    {
        return x + y + z + c + static_cast<double>(value);
    }
};

TYPED_TEST(OwnPolicies, AnInterpolatorWithTheForwardingTableIsReached)
{
    const VxImage<TypeParam>& image = this->scene.image;
    const TypeParam nine{9};
    CornerDistance distance;
    EXPECT_EQ(image.getDoubleValueReal(1, 2, 3, 1, &distance), 6.25);
    EXPECT_EQ(image.getDoubleValueReal(1, 2, 3, 1, &distance, CONSTANT, nine), 15.25);
    EXPECT_EQ(image.getDoubleValueReal(1, 2, 3, 1, &distance, REPLICATION, nine), 15.25);
    EXPECT_EQ(image.getDoubleValueReal(1, 2, 3, 1, &distance, &this->border, nine), 15.25);
    EXPECT_EQ(image.getValueVoxel(1, 2, 3, 1, &distance, &this->border, nine), TypeParam{16});
}

// The value of the call, as the element type: the table must convert it.
struct ValueItself : Interpolator {
    InterpolatorTable& get() override
    {
        static Interpolator::interpolator_t<ValueItself, Interpolator> table;
        return table;
    }

    template <class T, class B>
    T operator()(const VxImage<T>&, double, double, double, unsigned int, B, T value)
    {
        return value;
    }
};

TEST(OwnPolicy, AnElementGivenByAnInterpolatorBecomesADoubleExactly)
{
    VxImage<unsigned int> image;
    ValueItself itself;
    EXPECT_EQ(image.getDoubleValueReal(0, 0, 0, 0, &itself, CONSTANT, 4000000000U), 4000000000.0);
}

// A policy built on the library's kernels: half of each.
struct HalfLinearHalfCubic : Interpolator {
    InterpolatorTable& get() override
    {
        static Interpolator::interpolator_t<HalfLinearHalfCubic, Interpolator> table;
        return table;
    }

    template <class T, class B>
    double operator()(const VxImage<T>& image, double x, double y, double z, unsigned int c,
                      B border, T value)
    {
        return 0.5 * LINEAR(image, x, y, z, c, border, value) +
               0.5 * CUBIC(image, x, y, z, c, border, value);
    }
};

TEST(OwnPolicy, AnInterpolatorCanCallTheKernels)
{
    WrappedVolume<short> scene(rowVolume<short>({0, 0, 100, 100, 100, 100}));
    HalfLinearHalfCubic blend;
    const double expected = (100.0 + 107.03125) / 2;
    EXPECT_EQ(scene.image.getDoubleValueReal(2.25, 0, 0, 0, &blend, REPLICATION, 0), expected);
    EXPECT_EQ(scene.image.getDoubleValueReal(2.25, 0, 0, 0, &blend, &REPLICATION, 0), expected);
}

TEST(OwnPolicy, WhatAnInterpolatorThrowsPassesUnchanged)
{
    struct Failing : Interpolator {
        InterpolatorTable& get() override { throw std::domain_error("no table today"); }
    };
    WrappedVolume<short> scene(rowVolume<short>({1, 2, 3}));
    const VxImage<short>& image = scene.image;
    Failing failing;
    EXPECT_THROW(image.getValueVoxel(0, 0, 0, 0, &failing), std::domain_error);
    EXPECT_THROW(image.getValueVoxel(0, 0, 0, 0, &failing, CONSTANT, 0), std::domain_error);
    EXPECT_THROW(image.getValueReal(0, 0, 0, 0, &failing), std::domain_error);
    EXPECT_THROW(image.getValueReal(0, 0, 0, 0, &failing, &CONSTANT, 0), std::domain_error);
    EXPECT_THROW(image.getDoubleValueReal(0, 0, 0, 0, &failing), std::domain_error);
    EXPECT_THROW(image.getDoubleValueReal(0, 0, 0, 0, &failing, CONSTANT, 0), std::domain_error);
}

TEST(OwnPolicy, WhatABorderThrowsPassesUnchanged)
{
    WrappedVolume<short> scene(rowVolume<short>({1, 2, 3}));
    const VxImage<short>& image = scene.image;
    RecordingBorder failing;
    failing.answer = [](const Index&) -> double { throw 42; };
    EXPECT_THROW(image.getValueVoxel(5, 0, 0, 0, NEAREST_NEIGHBOR, &failing, 0), int);
    EXPECT_THROW(image.getValueReal(0, 0, 0, 0, LINEAR, &failing, 0), int);
    EXPECT_THROW(image.getDoubleValueReal(0, 0, 0, 0, CUBIC, &failing, 0), int);
    EXPECT_THROW(image.getValueVoxel(5, 0, 0, 0, &NEAREST_NEIGHBOR, &failing, 0), int);
    EXPECT_THROW(image.getValueReal(0, 0, 0, 0, &LINEAR, &failing, 0), int);
    EXPECT_THROW(image.getDoubleValueReal(0, 0, 0, 0, &CUBIC, &failing, 0), int);
}

// Clamps to the voxels that are not on the edge.
template <class LibraryBorder>
struct OneInside : LibraryBorder {
    BorderTable& get() override
    {
        static Border::border_t<OneInside, Border> table;
        return table;
    }

    template <class T>
    T fetch(const VxImage<T>& image, int x, int, int, unsigned int c, T, unsigned int width,
            unsigned int, unsigned int)
    {
        return image(x < 0 ? 1 : static_cast<int>(width) - 2, 0, 0, static_cast<int>(c));
    }
};

template <class LibraryBorder>
class DerivedBorder : public ::testing::Test {
};

using LibraryBorders = ::testing::Types<Constant, Replication>;
struct BorderNames {
    template <class Border>
    static std::string GetName(int)
    {
        return std::is_same_v<Border, Constant> ? "Constant" : "Replication";
    }
};
TYPED_TEST_SUITE(DerivedBorder, LibraryBorders, BorderNames);

TYPED_TEST(DerivedBorder, IsAskedForItsOwnTableByEachKernel)
{
    WrappedVolume<short> scene(rowVolume<short>({1, 2, 3, 4}));
    OneInside<TypeParam> border;
    const auto left = [&](auto kernel) {
        return scene.image.getValueVoxel(-4, 0, 0, 0, kernel, &border, 0);
    };
    const auto right = [&](auto kernel) {
        return scene.image.getValueVoxel(9, 0, 0, 0, kernel, &border, 0);
    };
    EXPECT_EQ(left(NEAREST_NEIGHBOR), 2);
    EXPECT_EQ(right(NEAREST_NEIGHBOR), 3);
    EXPECT_EQ(left(LINEAR), 2);
    EXPECT_EQ(right(LINEAR), 3);
    EXPECT_EQ(left(CUBIC), 2);
    EXPECT_EQ(right(CUBIC), 3);
}

}  // namespace
}  // namespace volux::test
