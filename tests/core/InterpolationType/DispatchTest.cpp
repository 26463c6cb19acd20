#include "volux/core/InterpolationType.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <typeinfo>

#include "support/BitExact.h"
#include "support/OwnPolicies.h"
#include "support/ThrowSite.h"
#include "support/ThrowTexts.h"
#include "support/TypedSuites.h"
#include "support/WrappedVolume.h"

namespace volux::test {
namespace {

using oracle::Position;

template <class Policy>
class InterpolatorTables : public ::testing::Test {
};
using Kernels = ::testing::Types<NearestNeighbor, Linear, Cubic>;
struct KernelNames {
    template <class Policy>
    static std::string GetName(int)
    {
        return std::is_same_v<Policy, Linear>  ? "Linear"
               : std::is_same_v<Policy, Cubic> ? "Cubic"
                                               : "NearestNeighbor";
    }
};
TYPED_TEST_SUITE(InterpolatorTables, Kernels, KernelNames);

TYPED_TEST(InterpolatorTables, AreTheSameEachTimeAndForEachObject)
{
    Open<TypeParam> policy;
    Open<TypeParam> other;
    EXPECT_EQ(&policy.get(), &policy.get());
    EXPECT_EQ(&policy.get(), &other.get());
}

TYPED_TEST(InterpolatorTables, BelongToTheirPolicy)
{
    Open<TypeParam> policy;
    const InterpolatorTable& table = policy.get();
    EXPECT_EQ(typeid(table), (typeid(Interpolator::interpolator_t<TypeParam, Interpolator>)));
}

TYPED_TEST(InterpolatorTables, HandBackTheLeftHandObjectFromAnAssignment)
{
    TypeParam policy;
    TypeParam other(policy);
    EXPECT_EQ(&(policy = other), &policy);
    Interpolator& base = policy;
    EXPECT_EQ(&(base = other), &base);
}

TYPED_TEST(InterpolatorTables, AreDestroyedWithTheirPolicyThroughItsBase)
{
    EXPECT_TRUE((isDestroyedThrough<TypeParam, Interpolator>()));
}

// Inside, at an edge, at a tie, and outside on every axis.
const Position kPositions[] = {
    {1.0, 1.0, 1.0}, {0.3, 1.7, 0.9}, {1.5, 0.5, 1.5}, {-0.6, 2.4, 1.0}, {2.9, -1.0, 5.5}};

// A call through the table gives the same bits as the kernel does.
template <class Policy, class T, class B>
void expectForwarded(B border)
{
    WrappedVolume<T> scene(countingVolume<T>({3, 3, 3}));
    Open<Policy> policy;
    for (const Position& p : kPositions) {
        const double byTable =
            policy.get().invoke(policy, scene.image, p.x, p.y, p.z, 0U, border, T{9});
        const auto byKernel =
            Policy().template operator()<T, B>(scene.image, p.x, p.y, p.z, 0U, border, T{9});
        EXPECT_TRUE(bitEqual(byTable, static_cast<double>(byKernel))) << p.x;
    }
}

template <class Policy, class T>
void expectForwardedForEachBorder()
{
    expectForwarded<Policy, T, Replication>(Replication());
    expectForwarded<Policy, T, Constant>(Constant());
    expectForwarded<Policy, T, Border*>(&REPLICATION);
    expectForwarded<Policy, T, Border*>(&CONSTANT);
}

template <class T>
class Dispatch : public ::testing::Test {
};
TYPED_TEST_SUITE(Dispatch, ElementTypes, ElementTypeNames);

TYPED_TEST(Dispatch, ReachesTheNearestNeighborKernel)
{
    expectForwardedForEachBorder<NearestNeighbor, TypeParam>();
}

TYPED_TEST(Dispatch, ReachesTheLinearKernel)
{
    expectForwardedForEachBorder<Linear, TypeParam>();
}

TYPED_TEST(Dispatch, ReachesTheCubicKernel)
{
    expectForwardedForEachBorder<Cubic, TypeParam>();
}

TYPED_TEST(Dispatch, ConvertsTheNearestVoxelExactly)
{
    using Limits = std::numeric_limits<TypeParam>;
    WrappedVolume<TypeParam> scene(rowVolume<TypeParam>({Limits::lowest(), Limits::max()}));
    for (int x = 0; x < 2; ++x) {
        const double expected = static_cast<double>(scene.volume.at(x, 0, 0, 0));
        EXPECT_TRUE(
            bitEqual(scene.image.getDoubleValueReal(x, 0.0, 0.0, 0, &NEAREST_NEIGHBOR), expected));
    }
}

TYPED_TEST(Dispatch, ThrowsFromEachSlotOfTheBaseTable)
{
    const VxImage<TypeParam> image;
    const TypeParam zero{0};
    BareInterpolator policy;
    InterpolatorTable table;
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { table.invoke(policy, image, 0.0, 0.0, 0.0, 0U, Replication(), zero); },
        kMisuseByValue));
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { table.invoke(policy, image, 0.0, 0.0, 0.0, 0U, Constant(), zero); }, kMisuseByValue));
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { table.invoke(policy, image, 0.0, 0.0, 0.0, 0U, &CONSTANT, zero); },
        kMisuseByPointer));
}

TYPED_TEST(Dispatch, ThrowsForAPolicyWithoutATableWhenTheBorderComesByValue)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({2, 2, 2}));
    const VxImage<TypeParam>& image = scene.image;
    const TypeParam zero{0};
    BareInterpolator bare;
    const auto throws = [](const auto& call) { return throwsAndPrintsTwice(call, kMisuseByValue); };
    EXPECT_TRUE(throws([&] { image.getValueVoxel(0, 0, 0, 0, &bare, CONSTANT, zero); }));
    EXPECT_TRUE(throws([&] { image.getValueVoxel(0, 0, 0, 0, &bare, REPLICATION, zero); }));
    EXPECT_TRUE(throws([&] { image.getValueReal(0, 0, 0, 0, &bare, CONSTANT, zero); }));
    EXPECT_TRUE(throws([&] { image.getValueReal(0, 0, 0, 0, &bare, REPLICATION, zero); }));
    EXPECT_TRUE(throws([&] { image.getDoubleValueReal(0, 0, 0, 0, &bare, CONSTANT, zero); }));
    EXPECT_TRUE(throws([&] { image.getDoubleValueReal(0, 0, 0, 0, &bare, REPLICATION, zero); }));
}

TYPED_TEST(Dispatch, ThrowsForAPolicyWithoutATableWhenNoBorderIsGiven)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({2, 2, 2}));
    const VxImage<TypeParam>& image = scene.image;
    BareInterpolator bare;
    const auto throws = [](const auto& call) { return throwsAndPrintsTwice(call, kMisuseByValue); };
    EXPECT_TRUE(throws([&] { image.getValueVoxel(0, 0, 0, 0, &bare); }));
    EXPECT_TRUE(throws([&] { image.getValueReal(0, 0, 0, 0, &bare); }));
    EXPECT_TRUE(throws([&] { image.getDoubleValueReal(0, 0, 0, 0, &bare); }));
}

TYPED_TEST(Dispatch, ThrowsForAPolicyWithoutATableWhenTheBorderIsAPointer)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({2, 2, 2}));
    const VxImage<TypeParam>& image = scene.image;
    const TypeParam zero{0};
    BareInterpolator bare;
    const auto throws = [](const auto& call) {
        return throwsAndPrintsTwice(call, kMisuseByPointer);
    };
    EXPECT_TRUE(throws([&] { image.getValueVoxel(0, 0, 0, 0, &bare, &CONSTANT, zero); }));
    EXPECT_TRUE(throws([&] { image.getValueReal(0, 0, 0, 0, &bare, &REPLICATION, zero); }));
    EXPECT_TRUE(throws([&] { image.getDoubleValueReal(0, 0, 0, 0, &bare, &CONSTANT, zero); }));
}

TYPED_TEST(Dispatch, LetsTheExceptionOfABorderWithoutATablePass)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({2, 2, 2}));
    const VxImage<TypeParam>& image = scene.image;
    const TypeParam zero{0};
    BareBorder bare;
    const auto throws = [](const auto& call) { return throwsAndPrintsTwice(call, kBorderMisuse); };
    EXPECT_TRUE(throws([&] { image.getValueVoxel(9, 0, 0, 0, NEAREST_NEIGHBOR, &bare, zero); }));
    EXPECT_TRUE(throws([&] { image.getValueReal(1, 1, 1, 0, LINEAR, &bare, zero); }));
    EXPECT_TRUE(throws([&] { image.getDoubleValueReal(0, 0, 0, 0, CUBIC, &bare, zero); }));
    EXPECT_TRUE(throws([&] { image.getValueVoxel(9, 0, 0, 0, &NEAREST_NEIGHBOR, &bare, zero); }));
    EXPECT_TRUE(throws([&] { image.getValueReal(1, 1, 1, 0, &LINEAR, &bare, zero); }));
    EXPECT_TRUE(throws([&] { image.getDoubleValueReal(0, 0, 0, 0, &CUBIC, &bare, zero); }));
}

TYPED_TEST(Dispatch, NeedsNoTableOfTheBorderForAnInsidePosition)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({4, 4, 4}));
    const VxImage<TypeParam>& image = scene.image;
    const TypeParam zero{0};
    BareBorder bare;
    EXPECT_EQ(image.getValueVoxel(1, 0, 0, 0, &NEAREST_NEIGHBOR, &bare, zero), TypeParam{2});
    EXPECT_EQ(image.getValueVoxel(2, 0, 0, 0, &LINEAR, &bare, zero), TypeParam{3});
    EXPECT_EQ(image.getValueVoxel(1, 1, 1, 0, &CUBIC, &bare, zero), TypeParam{22});
}

TYPED_TEST(Dispatch, NeedsNoBorderAtAllForAnInsidePosition)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({4, 4, 4}));
    const VxImage<TypeParam>& image = scene.image;
    const TypeParam zero{0};
    Border* const none = nullptr;
    EXPECT_EQ(image.getValueVoxel(1, 0, 0, 0, &NEAREST_NEIGHBOR, none, zero), TypeParam{2});
    EXPECT_EQ(image.getValueVoxel(2, 0, 0, 0, &LINEAR, none, zero), TypeParam{3});
    EXPECT_EQ(image.getValueVoxel(2, 0, 0, 0, LINEAR, none, zero), TypeParam{3});
    EXPECT_EQ(image.getValueVoxel(1, 1, 1, 0, &CUBIC, none, zero), TypeParam{22});
}

TEST(StaticPolicies, AreObjectsOfTheConcreteClasses)
{
    EXPECT_EQ(typeid(NEAREST_NEIGHBOR), typeid(NearestNeighbor));
    EXPECT_EQ(typeid(LINEAR), typeid(Linear));
    EXPECT_EQ(typeid(CUBIC), typeid(Cubic));
    EXPECT_EQ(typeid(CONSTANT), typeid(Constant));
    EXPECT_EQ(typeid(REPLICATION), typeid(Replication));
}

TEST(RunTimePolicies, GiveTheDoubleOfTheKernelWithARunTimeBorder)
{
    WrappedVolume<unsigned short> scene(countingVolume<unsigned short>({3, 3, 3}));
    const double byPointers = scene.image.getDoubleValueReal(
        -0.3, 1.7, 2.6, 0, &LINEAR, &REPLICATION, static_cast<unsigned short>(0));
    const double byKernel = Linear().operator()<unsigned short, Border*>(scene.image, -0.3, 1.7,
                                                                         2.6, 0U, &REPLICATION, 0);
    EXPECT_TRUE(bitEqual(byPointers, byKernel));
}

TEST(RunTimePolicies, ReadLargeUnsignedVoxelsWithoutASign)
{
    WrappedVolume<unsigned int> scene(rowVolume<unsigned int>({4000000000U}));
    Interpolator* nearest = &NEAREST_NEIGHBOR;
    EXPECT_EQ(scene.image.getDoubleValueReal(0.0, 0.0, 0.0, 0, nearest), 4000000000.0);
    EXPECT_EQ(scene.image.getDoubleValueReal(0.0, 0.0, 0.0, 0, &LINEAR), 4000000000.0);
    EXPECT_EQ(scene.image.getDoubleValueReal(0.0, 0.0, 0.0, 0, &CUBIC), 4000000000.0);
    EXPECT_EQ(scene.image.getValueVoxel(0.0, 0.0, 0.0, 0, nearest), 4000000000U);
    EXPECT_EQ(scene.image.getValueReal(0.0, 0.0, 0.0, 0, nearest), 4000000000U);
}

}  // namespace
}  // namespace volux::test
