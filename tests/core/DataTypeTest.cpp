#include "volux/core/DataType.h"

#include <gtest/gtest.h>

#include "support/Names.h"
#include "support/TypedSuites.h"
#include "volux/core/VxImage.h"

namespace volux::test {
namespace {

template <class T>
class ElementTag : public ::testing::Test {
};
TYPED_TEST_SUITE(ElementTag, ElementTypes, ElementTypeNames);

template <class T>
constexpr int kTag = 0;
template <>
constexpr int kTag<short> = 1;
template <>
constexpr int kTag<int> = 2;
template <>
constexpr int kTag<unsigned char> = 3;
template <>
constexpr int kTag<unsigned short> = 4;
template <>
constexpr int kTag<unsigned int> = 5;
template <>
constexpr int kTag<float> = 6;
template <>
constexpr int kTag<double> = 7;

TEST(DataType, HasItsFixedNumbers)
{
    EXPECT_EQ(static_cast<int>(DataType::DT_SHORT), 1);
    EXPECT_EQ(static_cast<int>(DataType::DT_INT), 2);
    EXPECT_EQ(static_cast<int>(DataType::DT_UCHAR), 3);
    EXPECT_EQ(static_cast<int>(DataType::DT_USHORT), 4);
    EXPECT_EQ(static_cast<int>(DataType::DT_UINT), 5);
    EXPECT_EQ(static_cast<int>(DataType::DT_FLOAT), 6);
    EXPECT_EQ(static_cast<int>(DataType::DT_DOUBLE), 7);
}

TYPED_TEST(ElementTag, IsAnsweredByADefaultImage)
{
    VxImage<TypeParam> image;
    EXPECT_EQ(static_cast<int>(image.getDataType()), kTag<TypeParam>);
}

TYPED_TEST(ElementTag, IsTheSameInEveryState)
{
    VxImage<TypeParam> image;
    ASSERT_EQ(image.initialize(2, 2, 2, 1), SUCCESS);
    EXPECT_EQ(static_cast<int>(image.getDataType()), kTag<TypeParam>);
    image.terminate();
    EXPECT_EQ(static_cast<int>(image.getDataType()), kTag<TypeParam>);
    TypeParam voxel{};
    ASSERT_EQ(image.initializeWithPointer(&voxel, 1, 1, 1, 1), SUCCESS);
    EXPECT_EQ(static_cast<int>(image.getDataType()), kTag<TypeParam>);
}

}  // namespace
}  // namespace volux::test
