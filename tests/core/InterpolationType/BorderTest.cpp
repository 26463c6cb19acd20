#include "volux/core/InterpolationBorderType.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <typeinfo>

#include "support/BitExact.h"
#include "support/OwnPolicies.h"
#include "support/ThrowSite.h"
#include "support/ThrowTexts.h"
#include "support/TypedSuites.h"
#include "support/WrappedVolume.h"

namespace volux::test {
namespace {

template <class T>
class BorderPolicies : public ::testing::Test {
};
TYPED_TEST_SUITE(BorderPolicies, ElementTypes, ElementTypeNames);

template <class T>
T replicated(const VxImage<T>& image, int x, int y, int z, unsigned int c = 0)
{
    return Replication().fetch(image, x, y, z, c, T{99}, image.getWidth(), image.getHeight(),
                               image.getDepth());
}

TYPED_TEST(BorderPolicies, ConstantGivesTheValueOfTheCall)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({3, 2, 2}));
    const TypeParam seven{7};
    EXPECT_EQ(Constant().fetch(scene.image, -1, 0, 0, 0U, seven, 3U, 2U, 2U), seven);
    EXPECT_EQ(Constant().fetch(scene.image, 3, 9, 9, 0U, seven, 3U, 2U, 2U), seven);
}

TYPED_TEST(BorderPolicies, ConstantReadsNeitherTheImageNorThePosition)
{
    const VxImage<TypeParam> empty;
    const TypeParam value = std::numeric_limits<TypeParam>::max();
    EXPECT_EQ(Constant().fetch(empty, INT_MIN, INT_MAX, 0, UINT_MAX, value, 0U, UINT_MAX, 0U),
              value);
}

struct ClampCase {
    int index;
    int voxel;
    const char* rule;
};

constexpr ClampCase kClampToFour[] = {
    {INT_MIN, 0, "the lowest index"},
    {-5, 0, "below the volume"},
    {-1, 0, "just below"},
    {0, 0, "the first voxel stays"},
    {2, 2, "an inside voxel stays"},
    {3, 3, "the last voxel stays"},
    {4, 3, "just above"},
    {7, 3, "three above"},
    {INT_MAX, 3, "the highest index"},
};

TYPED_TEST(BorderPolicies, ReplicationClampsXToTheEdge)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({4, 2, 2}));
    for (const ClampCase& entry : kClampToFour)
        EXPECT_EQ(replicated(scene.image, entry.index, 1, 1), scene.volume.at(entry.voxel, 1, 1, 0))
            << entry.rule;
}

TYPED_TEST(BorderPolicies, ReplicationClampsYToTheEdge)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({2, 4, 2}));
    for (const ClampCase& entry : kClampToFour)
        EXPECT_EQ(replicated(scene.image, 1, entry.index, 1), scene.volume.at(1, entry.voxel, 1, 0))
            << entry.rule;
}

TYPED_TEST(BorderPolicies, ReplicationClampsZToTheEdge)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({2, 2, 4}));
    for (const ClampCase& entry : kClampToFour)
        EXPECT_EQ(replicated(scene.image, 1, 1, entry.index), scene.volume.at(1, 1, entry.voxel, 0))
            << entry.rule;
}

TYPED_TEST(BorderPolicies, ReplicationReadsThroughTheStrides)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>(planar(3, 2, 2, 2)));
    EXPECT_EQ(replicated(scene.image, 9, -1, 5, 1), TypeParam(12 + 6 + 2 + 1));
}

TYPED_TEST(BorderPolicies, ReplicationLeavesTheChannelAsItIs)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({3, 3, 1}, 2));
    // Interleaved, the element behind the last channel of a voxel is the next voxel's first.
    EXPECT_EQ(replicated(scene.image, -1, 1, 0, 2), scene.volume.at(1, 1, 0, 0));
    EXPECT_EQ(replicated(scene.image, -1, 1, 0, 3), scene.volume.at(1, 1, 0, 1));
}

TYPED_TEST(BorderPolicies, ReplicationTakesTheChannelAsASignedNumber)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({3, 3, 1}, 2));
    EXPECT_EQ(replicated(scene.image, -1, 1, 0, 4294967295U), scene.volume.at(2, 0, 0, 1));
}

TYPED_TEST(BorderPolicies, ReplicationClampsToTheExtentsOfTheCall)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({4, 4, 4}));
    const TypeParam voxel = Replication().fetch(scene.image, 3, 3, 3, 0U, TypeParam{0}, 2U, 3U, 1U);
    EXPECT_EQ(voxel, scene.volume.at(1, 2, 0, 0));
}

TYPED_TEST(BorderPolicies, ReplicationInAnExtentOfZeroReadsOneBeforeTheFirst)
{
    WrappedVolume<TypeParam> scene(countingVolume<TypeParam>({4, 4, 1}));
    const TypeParam voxel = Replication().fetch(scene.image, 2, 1, 0, 0U, TypeParam{0}, 0U, 4U, 1U);
    EXPECT_EQ(voxel, scene.volume.at(3, 0, 0, 0));
}

// Through the table, as a kernel does with a Border*.
template <class T>
T fetchByTable(Open<Constant>& border, const VxImage<T>& image, int x, T value)
{
    return border.get().fetch(border, image, x, 0, 0, 0U, value, image.getWidth(), 1U, 1U);
}

TYPED_TEST(BorderPolicies, TheTableOfConstantForwardsToIt)
{
    WrappedVolume<TypeParam> scene(rowVolume<TypeParam>({1, 2, 3}));
    Open<Constant> border;
    EXPECT_EQ(fetchByTable<TypeParam>(border, scene.image, -2, 7), TypeParam{7});
}

TYPED_TEST(BorderPolicies, TheTableOfReplicationForwardsToIt)
{
    WrappedVolume<TypeParam> scene(rowVolume<TypeParam>({1, 2, 3}));
    Open<Replication> border;
    BorderTable& table = border.get();
    EXPECT_EQ(table.fetch(border, scene.image, 8, 0, 0, 0U, TypeParam{7}, 3U, 1U, 1U),
              TypeParam{3});
}

TYPED_TEST(BorderPolicies, TheBaseTableThrows)
{
    const VxImage<TypeParam> image;
    BareBorder border;
    BorderTable table;
    EXPECT_TRUE(throwsAndPrintsTwice(
        [&] { table.fetch(border, image, 0, 0, 0, 0U, TypeParam{0}, 0U, 0U, 0U); }, kBorderMisuse));
}

TYPED_TEST(BorderPolicies, ABorderWithoutATableOfItsOwnThrowsAtTheFirstOutsideRead)
{
    WrappedVolume<TypeParam> scene(rowVolume<TypeParam>({1, 2, 3}));
    BareBorder border;
    const auto sampleAt = [&](double x) {
        return NearestNeighbor().template operator()<TypeParam, Border*>(scene.image, x, 0.0, 0.0,
                                                                         0U, &border, TypeParam{0});
    };
    EXPECT_EQ(sampleAt(1.0), TypeParam{2});
    EXPECT_TRUE(throwsAndPrintsTwice([&] { sampleAt(3.0); }, kBorderMisuse));
}

TEST(BorderPolicy, ConstantKeepsTheSignOfZeroAndNaN)
{
    const VxImage<double> image;
    EXPECT_TRUE(bitEqual(Constant().fetch(image, 0, 0, 0, 0U, -0.0, 0U, 0U, 0U), -0.0));
    EXPECT_TRUE(std::isnan(Constant().fetch(image, 0, 0, 0, 0U, std::nan(""), 0U, 0U, 0U)));
}

TEST(BorderPolicy, GetGivesTheSameTableEachTimeAndForEachObject)
{
    Open<Constant> constant;
    Open<Constant> otherConstant;
    Open<Replication> replication;
    Open<Replication> otherReplication;
    EXPECT_EQ(&constant.get(), &constant.get());
    EXPECT_EQ(&constant.get(), &otherConstant.get());
    EXPECT_EQ(&replication.get(), &replication.get());
    EXPECT_EQ(&replication.get(), &otherReplication.get());
    EXPECT_NE(&constant.get(), &replication.get());
}

TEST(BorderPolicy, ATableBelongsToItsPolicy)
{
    Open<Constant> constant;
    Open<Replication> replication;
    const BorderTable& ofConstant = constant.get();
    const BorderTable& ofReplication = replication.get();
    EXPECT_EQ(typeid(ofConstant), (typeid(Border::border_t<Constant, Border>)));
    EXPECT_EQ(typeid(ofReplication), (typeid(Border::border_t<Replication, Border>)));
}

TEST(BorderPolicy, AssignmentGivesTheLeftHandObject)
{
    Constant constant;
    Replication replication;
    BareBorder border;
    EXPECT_EQ(&(constant = CONSTANT), &constant);
    EXPECT_EQ(&(replication = REPLICATION), &replication);
    EXPECT_EQ(&(static_cast<Border&>(border) = constant), &border);
}

TEST(BorderPolicy, ACopyWorksLikeItsSource)
{
    WrappedVolume<short> scene(rowVolume<short>({1, 2, 3}));
    Replication source;
    Replication copy(source);
    EXPECT_EQ(copy.fetch<short>(scene.image, 5, 0, 0, 0U, 0, 3U, 1U, 1U), 3);
}

TEST(BorderPolicy, APolicyIsDestroyedThroughItsBase)
{
    EXPECT_TRUE((isDestroyedThrough<Replication, Border>()));
}

}  // namespace
}  // namespace volux::test
