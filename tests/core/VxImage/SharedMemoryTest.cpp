// Images that overlap, or whose own voxels do: there the order of writing decides.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <vector>

#include "support/ContainerOracle.h"
#include "support/PlaneFunctions.h"
#include "support/Random.h"
#include "support/SparseBlock.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

/// All voxels of a row are one element, and slices are apart.
Layout standing(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"standing", {w, h, d}, c, 0, c, c * (h + w), 1};
}

/// Each row and slice begins inside the one before.
Layout overlapping(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"overlapping", {w, h, d}, c, c, w * c - 1, w * c - 1, 1};
}

/// x and y, or x and z, have changed places.
Layout columns(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"columns", {w, h, d}, c, h * c, c, w * h * c, 1};
}
Layout depths(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"depths", {w, h, d}, c, d * h * c, d * c, c, 1};
}

/// As columns, but so close together that they share elements.
Layout closeColumns(unsigned int w, unsigned int h, unsigned int d, unsigned int c)
{
    return {"close columns", {w, h, d}, c, h * c - 1, c, w * h * c, 1};
}

constexpr MakeLayout kOrders[] = {interleaved, planar,    padded,      transposed,
                                  shared,      collapsed, standing,    overlapping,
                                  columns,     depths,    closeColumns};

/// Two volumes in one block, the second so many elements behind the first, or before it.
template <class T>
class OneBlock {
public:
    OneBlock(const Layout& from, const Layout& to, std::ptrdiff_t offset, std::uint64_t seed)
        : fromLayout_(from),
          toLayout_(to),
          from_(kGuard + static_cast<std::size_t>(std::max<std::ptrdiff_t>(-offset, 0))),
          to_(kGuard + static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0))),
          block_(std::max(from_ + from.span(), to_ + to.span()) + kGuard)
    {
        for (std::size_t i = 0; i < block_.size(); ++i)
            block_[i] = someValue<T>(seed * 1000003 + i);
        expected_ = block_;
        wrap(block_.data() + from_, from, &source_);
        wrap(block_.data() + to_, to, &target_);
    }

    /// Expects an element of the second volume to become one of the first, as they are by now.
    void expect(std::size_t to, std::size_t from) { expected_[to_ + to] = expected_[from_ + from]; }

    const VxImage<T>& source() const { return source_; }
    VxImage<T>& target() { return target_; }

    ::testing::AssertionResult asExpected() const
    {
        return sameElements(block_.data(), expected_.data(), block_.size())
               << ", from " << fromLayout_.name << " to " << toLayout_.name << ", " << from_
               << " to " << to_;
    }

private:
    Layout fromLayout_, toLayout_;
    std::size_t from_, to_;
    std::vector<T> block_;
    std::vector<T> expected_;
    VxImage<T> source_;
    VxImage<T> target_;
};

/// Draws the first volume into the second, clipped there.
template <class T>
::testing::AssertionResult drawsInOrder(const Layout& from, const Layout& to, std::ptrdiff_t offset,
                                        std::array<unsigned int, 3> at)
{
    OneBlock<T> block(from, to, offset, 31);
    forEachVoxel(from, [&](unsigned int x, unsigned int y, unsigned int z, unsigned int c) {
        if (at[0] + x < to.extents.width && at[1] + y < to.extents.height &&
            at[2] + z < to.extents.depth)
            block.expect(to.element(at[0] + x, at[1] + y, at[2] + z, c), from.element(x, y, z, c));
    });
    const ErrorType code = block.target().draw(block.source(), at[0], at[1], at[2]);
    if (code != SUCCESS)
        return ::testing::AssertionFailure() << "code " << code;
    return block.asExpected();
}

/// Puts the first volume, a plane, into the second.
template <class T>
::testing::AssertionResult setsInOrder(const PlaneFunctions<T>& f, const Layout& plane,
                                       const Layout& volume, unsigned int index,
                                       std::ptrdiff_t offset)
{
    OneBlock<T> block(plane, volume, offset, 32);
    forEachVoxel(plane, [&](unsigned int i, unsigned int j, unsigned int, unsigned int c) {
        const auto along = [&](Axis axis) {
            return axis == f.across ? index : axis == f.planeX ? i : j;
        };
        block.expect(volume.element(along(Axis::X), along(Axis::Y), along(Axis::Z), c),
                     plane.element(i, j, 0, c));
    });
    const ErrorType code = f.set(index, block.source(), &block.target());
    if (code != SUCCESS)
        return ::testing::AssertionFailure() << "code " << code;
    return block.asExpected() << ' ' << f.name;
}

template <class T>
class SharedMemory : public ::testing::Test {
protected:
    const PlaneFunctions<T> zx = AllPlaneFunctions<T>{}.table[2];
};
TYPED_TEST_SUITE(SharedMemory, ElementTypes, ElementTypeNames);

TYPED_TEST(SharedMemory, RowsThatFeedThemselvesAreCopiedForward)
{
    for (const unsigned int width : {1U, 2U, 15U, 16U, 17U, 40U})
        for (std::ptrdiff_t offset = -42; offset <= 42; ++offset)
            ASSERT_TRUE(drawsInOrder<TypeParam>(interleaved(width, 1, 1, 1),
                                                interleaved(width, 1, 1, 1), offset, {0, 0, 0}))
                << width;
}

TYPED_TEST(SharedMemory, BoxesOfEveryLayoutAreCopiedInOrder)
{
    for (const MakeLayout from : kOrders)
        for (const MakeLayout to : kOrders)
            for (const std::ptrdiff_t offset : {-100, -17, -1, 0, 1, 16, 2000})
                for (const unsigned int channels : {1U, 2U})
                    ASSERT_TRUE(drawsInOrder<TypeParam>(from(17, 3, 2, channels),
                                                        to(18, 4, 2, channels), offset, {1, 1, 0}));
}

TYPED_TEST(SharedMemory, AnImageDrawnOntoItselfIsReadAsItIsWritten)
{
    for (const MakeLayout makeLayout : kOrders) {
        for (const std::array<unsigned int, 3>& at :
             {std::array<unsigned int, 3>{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {3, 2, 0}}) {
            Volume<TypeParam> volume = someVolume<TypeParam>(makeLayout(20, 5, 3, 1), 6);
            Volume<TypeParam> expected = volume;
            naiveDraw(expected, expected, at[0], at[1], at[2]);
            VxImage<TypeParam> image;
            wrap(volume, &image);
            ASSERT_EQ(image.draw(image, at[0], at[1], at[2]), SUCCESS);
            ASSERT_TRUE(sameBlock(volume, expected)) << volume.name << ' ' << at[0];
        }
    }
}

// 16 is the side of a block that is transposed at once.
constexpr unsigned int kSides[] = {1, 8, 15, 16, 17, 32, 35};

TYPED_TEST(SharedMemory, ZxPlanesOfEverySizeAreTransposed)
{
    for (const MakeLayout makeLayout :
         {interleaved, planar, padded, transposed, shared, columns, standing})
        for (const unsigned int w : kSides)
            for (const unsigned int d : kSides) {
                Volume<TypeParam> volume = someVolume<TypeParam>(makeLayout(w, 2, d, 1), w + d);
                VxImage<TypeParam> image;
                wrap(volume, &image);
                VxImage<TypeParam> plane;
                ASSERT_EQ(getZxPlane(1, image, &plane), SUCCESS);
                ASSERT_TRUE(holds(plane, naiveGetPlane(this->zx, volume, 1)))
                    << volume.name << ' ' << w << ' ' << d;
            }
}

TYPED_TEST(SharedMemory, ZxPlanesArePutBackInEverySize)
{
    for (const MakeLayout makeLayout : kOrders)
        for (const unsigned int w : kSides)
            for (const unsigned int d : kSides)
                for (const MakeLayout planeLayout : {interleaved, padded, overlapping, standing})
                    ASSERT_TRUE(setsInOrder(this->zx, planeLayout(d, w, 1, 1),
                                            makeLayout(w, 2, d, 1), 1, 4000))
                        << w << ' ' << d;
}

TYPED_TEST(SharedMemory, ZxPlanesInTheMemoryOfTheVolumeArePutBackInOrder)
{
    for (const unsigned int side : {16U, 17U})
        for (const unsigned int height : {1U, 10U}) {
            const Layout plane = interleaved(side, side, 1, 1);
            const Layout volume = interleaved(side, height, side, 1);
            const auto last = static_cast<std::ptrdiff_t>(std::max(plane.span(), volume.span()));
            for (std::ptrdiff_t offset = -last - 2; offset <= last + 2; ++offset)
                ASSERT_TRUE(setsInOrder(this->zx, plane, volume, 0, offset)) << side;
        }
}

TYPED_TEST(SharedMemory, ZxPlanesIntoTheBlockThatTheVolumeWrapsAreTakenInOrder)
{
    constexpr std::size_t kRoom = 4000;
    const Layout volume = interleaved(17, 2, 18, 1);
    const Layout slice = interleaved(18, 17, 1, 1);
    for (std::size_t first = 0; first < slice.span() + 20; ++first) {
        VxImage<TypeParam> plane;
        ASSERT_EQ(plane.initialize(kRoom, 1, 1, 1), SUCCESS);
        TypeParam* const block = plane.getBufferPointer();
        std::vector<TypeParam> expected(kRoom);
        for (std::size_t i = 0; i < kRoom; ++i)
            block[i] = expected[i] = someValue<TypeParam>(i);
        VxImage<TypeParam> image;
        ASSERT_EQ(image.initializeWithPointer(block + first, 17, 2, 18, 1), SUCCESS);
        for (unsigned int z = 0; z < 18; ++z)  // the plane's x is the outer loop here
            for (unsigned int x = 0; x < 17; ++x)
                expected[slice.element(z, x, 0, 0)] = expected[first + volume.element(x, 1, z, 0)];
        ASSERT_EQ(getZxPlane(1, image, &plane), SUCCESS);
        ASSERT_TRUE(sameElements(block, expected.data(), kRoom)) << first;
    }
}

TYPED_TEST(SharedMemory, RandomVolumesAreCopiedInOrder)
{
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        Random random(seed);
        const unsigned int channels = random.between(1, 3);
        const auto someExtent = [&] {
            return random.below(3) == 0 ? random.between(14, 36) : random.between(1, 4);
        };
        const auto someStride = [&](unsigned int dense) {
            const unsigned int kind = random.below(4);
            return kind == 0 ? random.below(5) : kind == 1 ? random.below(60) : dense;
        };
        const auto someLayout = [&] {
            const unsigned int w = someExtent(), h = someExtent(), d = someExtent();
            Layout l = kOrders[random.below(std::size(kOrders))](w, h, d, channels);
            l.strideX = someStride(l.strideX);
            l.strideY = someStride(l.strideY);
            l.strideZ = someStride(l.strideZ);
            l.strideC = someStride(l.strideC);
            return l;
        };
        const Layout to = someLayout();
        const Layout from = someLayout();
        const auto offset = static_cast<std::ptrdiff_t>(random.below(2000)) - 1000;
        ASSERT_TRUE(drawsInOrder<TypeParam>(
            from, to, offset,
            {random.below(to.extents.width), random.below(to.extents.height),
             random.below(to.extents.depth)}))
            << seed;
        for (const auto& f : AllPlaneFunctions<TypeParam>{}) {
            const auto makeLayout = kOrders[random.below(std::size(kOrders))];
            const Layout plane = makeLayout(f.planeWidth(to), f.planeHeight(to), 1, channels);
            ASSERT_TRUE(setsInOrder(f, plane, to, random.below(extent(to, f.across)), offset))
                << seed;
        }
    }
}

TYPED_TEST(SharedMemory, LongRunsAreFilledToTheirEndAndNoFurther)
{
    constexpr unsigned int kBlock = 16384 / sizeof(TypeParam);  // as much is filled by itself
    for (const unsigned int width : {kBlock - 1, kBlock, kBlock + 1, 2 * kBlock, 3 * kBlock + 5}) {
        Volume<TypeParam> volume = someVolume<TypeParam>(interleaved(width, 1, 1, 1), 9);
        Volume<TypeParam> expected = volume;
        naiveFill(expected, someValue<TypeParam>(4));
        VxImage<TypeParam> image;
        wrap(volume, &image);
        ASSERT_EQ(image.fill(someValue<TypeParam>(4)), SUCCESS);
        ASSERT_TRUE(sameBlock(volume, expected)) << width;
    }
}

TYPED_TEST(SharedMemory, PlanesOfSeveralChannelsKeepThemTogether)
{
    for (const MakeLayout makeLayout : kLayouts) {
        for (const unsigned int channels : {2U, 3U, 16U}) {
            Volume<TypeParam> volume = someVolume<TypeParam>(makeLayout(18, 3, 17, channels), 12);
            VxImage<TypeParam> image;
            wrap(volume, &image);
            for (const auto& f : AllPlaneFunctions<TypeParam>{}) {
                VxImage<TypeParam> plane;
                ASSERT_EQ(f.get(2, image, &plane), SUCCESS);
                ASSERT_TRUE(holds(plane, naiveGetPlane(f, volume, 2))) << volume.name;
            }
        }
    }
}

/// Two voxels along one axis, or two channels, that are as far apart as a stride can say.
class FarApart : public ::testing::TestWithParam<unsigned int> {
protected:
    static constexpr unsigned int kLargest = 0xFFFFFFFFU;

    void SetUp() override
    {
        if (!block.exists())
            GTEST_SKIP() << "no 4 GiB of address space";
        const auto extent = [](unsigned int axis) { return GetParam() == axis ? 2U : 1U; };
        const auto stride = [](unsigned int axis) { return GetParam() == axis ? kLargest : 0U; };
        ASSERT_EQ(
            image.initializeWithPointer(block.bytes(), extent(0), extent(1), extent(2), extent(3)),
            SUCCESS);
        image.setImageStride(stride(1), stride(2), stride(3), stride(0));
        ASSERT_EQ(dense.initialize(extent(0), extent(1), extent(2), extent(3)), SUCCESS);
        dense.getBufferPointer()[0] = 3;
        dense.getBufferPointer()[1] = 4;
    }

    const SparseBlock block;
    VxImage<unsigned char> image;
    VxImage<unsigned char> dense;
};

INSTANTIATE_TEST_SUITE_P(AlongEachAxis, FarApart, ::testing::Values(0U, 1U, 2U, 3U));

TEST_P(FarApart, VoxelsAreFilled)
{
    ASSERT_EQ(image.fill(7), SUCCESS);
    EXPECT_EQ(block.bytes()[0], 7);
    EXPECT_EQ(block.bytes()[kLargest], 7);
}

TEST_P(FarApart, TheLastChannelIsFilled)
{
    ASSERT_EQ(image.fill(image.getChannels() - 1, 8), SUCCESS);
    EXPECT_EQ(block.bytes()[0], GetParam() == 3 ? 0 : 8);
    EXPECT_EQ(block.bytes()[kLargest], 8);
}

TEST_P(FarApart, VoxelsAreDrawnAndCropped)
{
    ASSERT_EQ(image.draw(dense, 0, 0, 0), SUCCESS);
    EXPECT_EQ(block.bytes()[0], 3);
    EXPECT_EQ(block.bytes()[kLargest], 4);
    VxImage<unsigned char> out;
    ASSERT_EQ(image.crop({0, 1, 0, 1, 0, 1}, &out), SUCCESS);
    EXPECT_EQ(out.getBufferPointer()[0], 3);
    EXPECT_EQ(out.getBufferPointer()[1], 4);
}

TEST_P(FarApart, PlanesAreTakenAndPutBack)
{
    ASSERT_EQ(image.draw(dense, 0, 0, 0), SUCCESS);
    for (const PlaneFunctions<unsigned char>& f : AllPlaneFunctions<unsigned char>{}.table) {
        const unsigned int last = static_cast<unsigned int>(f.across) == GetParam() ? 1 : 0;
        VxImage<unsigned char> plane;
        ASSERT_EQ(f.get(last, image, &plane), SUCCESS) << f.name;
        unsigned char* const taken = plane.getBufferPointer();
        const std::size_t end = plane.getWidth() * plane.getHeight() * plane.getChannels() - 1;
        EXPECT_EQ(taken[end], 4) << f.name;
        taken[end] = 9;
        ASSERT_EQ(f.set(last, plane, &image), SUCCESS) << f.name;
        EXPECT_EQ(block.bytes()[kLargest], 9) << f.name;
        block.bytes()[kLargest] = 4;
    }
}

TEST(FarApartRows, OfAZxPlaneAreTransposed)
{
    constexpr int kSide = 17;
    constexpr unsigned int kStride = 0x80001000U;
    const SparseBlock block(std::size_t{kStride} * kSide);
    if (!block.exists())
        GTEST_SKIP() << "no 34 GiB of address space";
    VxImage<unsigned char> image;
    ASSERT_EQ(image.initializeWithPointer(block.bytes(), kSide, 1, kSide, 1), SUCCESS);
    image.setImageStride(0, kStride, 1, 1);
    VxImage<unsigned char> plane;
    ASSERT_EQ(plane.initialize(kSide, kSide, 1, 1), SUCCESS);
    const auto value = [](int x, int z) { return static_cast<unsigned char>(x + kSide * z % 251); };
    for (int z = 0; z < kSide; ++z)
        for (int x = 0; x < kSide; ++x)
            plane(z, x, 0, 0) = value(x, z);
    ASSERT_EQ(setZxPlane(0, plane, &image), SUCCESS);
    EXPECT_EQ(block.bytes()[std::size_t{kStride} * 16 + 16], value(16, 16));
    VxImage<unsigned char> taken;
    ASSERT_EQ(getZxPlane(0, image, &taken), SUCCESS);
    EXPECT_TRUE(std::equal(plane.getBufferPointer(), plane.getBufferPointer() + kSide * kSide,
                           taken.getBufferPointer()));
}

}  // namespace
}  // namespace volux::test
