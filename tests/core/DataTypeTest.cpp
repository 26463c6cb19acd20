#include "volux/core/DataType.h"

#include <gtest/gtest.h>

#include "support/ElementTypes.h"
#include "volux/core/VxImage.h"

namespace volux::core {
namespace {

template <class T>
class ElementTag : public ::testing::Test {
};
TYPED_TEST_SUITE(ElementTag, test::ElementTypes, test::ElementTypeNames);

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
    EXPECT_EQ(1, static_cast<int>(DataType::DT_SHORT));
    EXPECT_EQ(2, static_cast<int>(DataType::DT_INT));
    EXPECT_EQ(3, static_cast<int>(DataType::DT_UCHAR));
    EXPECT_EQ(4, static_cast<int>(DataType::DT_USHORT));
    EXPECT_EQ(5, static_cast<int>(DataType::DT_UINT));
    EXPECT_EQ(6, static_cast<int>(DataType::DT_FLOAT));
    EXPECT_EQ(7, static_cast<int>(DataType::DT_DOUBLE));
}

TYPED_TEST(ElementTag, IsAnsweredByADefaultImage)
{
    VxImage<TypeParam> image;
    EXPECT_EQ(kTag<TypeParam>, static_cast<int>(image.getDataType()));
}

TYPED_TEST(ElementTag, IsTheSameInEveryState)
{
    VxImage<TypeParam> image;
    ASSERT_EQ(SUCCESS, image.initialize(2, 2, 2, 1));
    EXPECT_EQ(kTag<TypeParam>, static_cast<int>(image.getDataType()));
    image.terminate();
    EXPECT_EQ(kTag<TypeParam>, static_cast<int>(image.getDataType()));
    TypeParam voxel{};
    ASSERT_EQ(SUCCESS, image.initializeWithPointer(&voxel, 1, 1, 1, 1));
    EXPECT_EQ(kTag<TypeParam>, static_cast<int>(image.getDataType()));
}

}  // namespace
}  // namespace volux::core
