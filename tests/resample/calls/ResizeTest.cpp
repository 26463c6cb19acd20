#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "resample/Expected.h"
#include "volux/resample/Resample.h"

namespace volux::test {
namespace {

using resample::Align;

// Voxels without -0.0, which is no weighted sum of itself and zeros.
template <class T>
Volume<T> finiteVolume(Random& random, const Extents& extents)
{
    Volume<T> volume = blankVolume<T>(extents, 2);
    for (T& element : volume.block)
        element = someValue<T>(random.bits());
    return volume;
}

template <class T>
class Resize : public ::testing::Test {
protected:
    Resize() : random(61), scene(finiteVolume<T>(random, {7, 6, 5})) {}

    Seeded random;
    WrappedVolume<T> scene;
};
TYPED_TEST_SUITE(Resize, ElementTypes, ElementTypeNames);

TYPED_TEST(Resize, ToTheSameSizeCopiesEveryByte)
{
    for (Interpolator* const interpolator : kInterpolators)
        for (Border* const border : kBorders)
            for (const Align align : {Align::EDGES, Align::CENTRES}) {
                VxImage<TypeParam> bySize;
                VxImage<TypeParam> bySpacing;
                const Options options(interpolator, border);
                ASSERT_EQ(resize(this->scene.image, 7, 6, 5, align, &bySize, options), SUCCESS);
                ASSERT_EQ(resize(this->scene.image, VoxelSize(1, 1, 1), align, &bySpacing, options),
                          SUCCESS);
                for (std::size_t n = 0; n < this->scene.volume.block.size(); ++n) {
                    const TypeParam voxel = this->scene.volume.block[n];
                    ASSERT_TRUE(bitEqual(bySize.getBufferPointer()[n], voxel))
                        << n << ", " << described(options);
                    ASSERT_TRUE(bitEqual(bySpacing.getBufferPointer()[n], voxel))
                        << n << ", " << described(options);
                }
            }
}

TYPED_TEST(Resize, GivesVoluxCoresBitsToSizesAndSpacings)
{
    for (int n = 0; n < 20; ++n) {
        const Align align = this->random.below(2) == 0 ? Align::EDGES : Align::CENTRES;
        Options options(kInterpolators[this->random.below(3)]);
        const unsigned int width = this->random.between(1, 20);
        const ImageSize size = this->scene.image.getImageSize();
        const Grid grid = resample::gridOfSize(size, VoxelSize(1, 1, 1), width, 4, 11, align);
        VxImage<TypeParam> result;
        ASSERT_EQ(resize(this->scene.image, width, 4, 11, align, &result, options), SUCCESS);
        EXPECT_EQ(result.getVoxelSize(), grid.spacing);
        options.edgeExtends = true;  // as that of every resized volume
        expectEverySample(this->scene.image, grid.map, result, options);
    }
}

// Whole steps of 1/4 voxel: every position, weight and sum is exact, so that a mirrored volume
// gives the mirrored result to the last bit.
TEST(ResizeFlipped, GivesTheFlippedResult)
{
    Seeded random(62);
    for (const Align align : {Align::EDGES, Align::CENTRES}) {
        const unsigned int width = align == Align::EDGES ? 16 : 13;
        Volume<short> volume = blankVolume<short>({4, 1, 1});
        for (short& element : volume.block)
            element = static_cast<short>(random.below(2000));
        Volume<short> mirrored = volume;
        std::reverse(mirrored.block.begin(), mirrored.block.end());
        const WrappedVolume<short> scene(volume);
        const WrappedVolume<short> flipped(mirrored);
        for (const int kernel : {1, 2}) {
            VxImage<short> result;
            VxImage<short> other;
            const Options options(kInterpolators[static_cast<std::size_t>(kernel)]);
            ASSERT_EQ(resize(scene.image, width, 1, 1, align, &result, options), SUCCESS);
            ASSERT_EQ(resize(flipped.image, width, 1, 1, align, &other, options), SUCCESS);
            for (unsigned int x = 0; x < width; ++x)
                EXPECT_EQ(result(static_cast<int>(x), 0, 0, 0),
                          other(static_cast<int>(width - 1 - x), 0, 0, 0));
        }
    }
}

TEST(ResizeOneSlice, ByCentresCopiesItWithReplicationAndPutsItInTheMiddleWithConstant)
{
    const WrappedVolume<short> scene(countingVolume<short>({3, 2, 1}));
    VxImage<short> copies;
    VxImage<short> middle;
    ASSERT_EQ(resize(scene.image, 3, 2, 5, Align::CENTRES, &copies), SUCCESS);
    ASSERT_EQ(
        resize(scene.image, 3, 2, 5, Align::CENTRES, &middle, Options(Linear(), Constant(), -4)),
        SUCCESS);
    EXPECT_EQ(copies.getVoxelSize(), VoxelSize(1, 1, 1));
    for (int z = 0; z < 5; ++z)
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 3; ++x) {
                const short voxel = scene.image(x, y, 0, 0);
                EXPECT_EQ(copies(x, y, z, 0), voxel) << x << ' ' << y << ' ' << z;
                EXPECT_EQ(middle(x, y, z, 0), z == 2 ? voxel : -4) << x << ' ' << y << ' ' << z;
            }
}

TEST(Resize, WritesThroughAnyLayoutAndNothingBeside)
{
    const WrappedVolume<short> scene(countingVolume<short>({4, 4, 4}, 2));
    std::vector<short> block(2000, -5);
    VxImage<short> wrapped;
    wrapped.initializeWithPointer(block.data() + 7, 5, 6, 3, 2);
    wrapped.setImageStride(20, 150, 700, 3);
    const Options options = Cubic();
    VxImage<short> fresh;
    ASSERT_EQ(resize(scene.image, 5, 6, 3, Align::EDGES, &wrapped, options), SUCCESS);
    ASSERT_EQ(resize(scene.image, 5, 6, 3, Align::EDGES, &fresh, options), SUCCESS);
    for (int z = 0; z < 3; ++z)
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 5; ++x)
                for (int c = 0; c < 2; ++c) {
                    ASSERT_EQ(wrapped(x, y, z, c), fresh(x, y, z, c));
                    wrapped(x, y, z, c) = -5;
                }
    for (const short element : block)
        ASSERT_EQ(element, -5);
}

}  // namespace
}  // namespace volux::test
