// Whole-volume operations on random volumes, in every layout, against their plain definitions.
#include "volux/core/VxImage.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "support/ContainerOracle.h"
#include "support/ImageFields.h"
#include "support/PlaneFunctions.h"
#include "support/Random.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

constexpr int kRounds = 400;

template <class T>
class ContainerDifferential : public ::testing::Test {
protected:
    /// Runs check(random) once a round, each with a seed that a failure names.
    template <class Check>
    void repeat(std::uint64_t firstSeed, const Check& check)
    {
        for (int round = 0; round < kRounds && !this->HasFailure(); ++round) {
            const std::uint64_t seed = firstSeed + static_cast<std::uint64_t>(round);
            SCOPED_TRACE("seed " + std::to_string(seed));
            Random random(seed);
            check(random);
        }
    }

    static unsigned int someExtent(Random& random)
    {
        return random.below(3) == 0 ? 1 : random.between(1, 7);
    }

    static Layout someLayout(Random& random, unsigned int channels)
    {
        const MakeLayout makeLayout = kLayouts[random.below(std::size(kLayouts))];
        const unsigned int w = someExtent(random);
        const unsigned int h = someExtent(random);
        return makeLayout(w, h, someExtent(random), channels);
    }

    static Volume<T> anyVolume(Random& random, unsigned int channels)
    {
        return someVolume<T>(someLayout(random, channels), random.bits());
    }
};
TYPED_TEST_SUITE(ContainerDifferential, ElementTypes, ElementTypeNames);

TYPED_TEST(ContainerDifferential, FillsAsTheModelDoes)
{
    this->repeat(1000, [&](Random& random) {
        auto volume = this->anyVolume(random, random.between(1, 4));
        const auto value = someValue<TypeParam>(random.bits());
        const unsigned int channel = random.below(5);
        const bool whole = random.below(2) == 0;
        auto expected = volume;
        VxImage<TypeParam> image;
        wrap(volume, &image);
        if (whole) {
            naiveFill(expected, value);
            ASSERT_EQ(image.fill(value), SUCCESS);
        } else {
            naiveFillChannel(expected, channel, value);
            ASSERT_EQ(image.fill(channel, value),
                      channel < volume.channels ? SUCCESS : ERR_INVALID_CHANNEL);
        }
        ASSERT_TRUE(sameBlock(volume, expected)) << volume.name;
    });
}

TYPED_TEST(ContainerDifferential, CropsAsTheModelDoes)
{
    const auto someRange = [](Random& random, unsigned int extent, unsigned int* first,
                              unsigned int* last) {
        *first = random.below(extent);
        *last = random.below(4) == 0 ? static_cast<unsigned int>(random.bits() | 0x80000000U)
                                     : random.between(*first, extent + 1);
    };
    this->repeat(2000, [&](Random& random) {
        auto volume = this->anyVolume(random, random.between(1, 4));
        const auto before = volume;
        Rect box;
        someRange(random, volume.extents.width, &box.xStart, &box.xEnd);
        someRange(random, volume.extents.height, &box.yStart, &box.yEnd);
        someRange(random, volume.extents.depth, &box.zStart, &box.zEnd);
        VxImage<TypeParam> image;
        VxImage<TypeParam> out;
        wrap(volume, &image);
        ASSERT_EQ(image.crop(box, &out), SUCCESS);
        ASSERT_TRUE(holds(out, naiveCrop(volume, box))) << volume.name;
        ASSERT_TRUE(sameBlock(volume, before));
    });
}

TYPED_TEST(ContainerDifferential, DrawsAsTheModelDoes)
{
    this->repeat(3000, [&](Random& random) {
        const unsigned int channels = random.between(1, 4);
        auto to = this->anyVolume(random, channels);
        auto from = this->anyVolume(random, channels);
        const unsigned int x = random.below(to.extents.width + 1);
        const unsigned int y = random.below(to.extents.height + 1);
        const unsigned int z = random.below(to.extents.depth + 1);
        const bool inside = x < to.extents.width && y < to.extents.height && z < to.extents.depth;
        auto expected = to;
        if (inside)
            naiveDraw(expected, from, x, y, z);
        VxImage<TypeParam> target;
        VxImage<TypeParam> source;
        wrap(to, &target);
        wrap(from, &source);
        ASSERT_EQ(target.draw(source, x, y, z), inside ? SUCCESS : ERR_INVALID_ARGUMENT);
        ASSERT_TRUE(sameBlock(to, expected)) << from.name << " into " << to.name;
    });
}

TYPED_TEST(ContainerDifferential, TakesPlanesAsTheModelDoes)
{
    this->repeat(4000, [&](Random& random) {
        auto volume = this->anyVolume(random, random.between(1, 4));
        const auto before = volume;
        VxImage<TypeParam> image;
        wrap(volume, &image);
        VxImage<TypeParam> plane;  // reused, so that blocks are kept and replaced
        for (const auto& f : AllPlaneFunctions<TypeParam>{}) {
            const unsigned int index = random.below(extent(volume, f.across));
            ASSERT_EQ(f.get(index, image, &plane), SUCCESS);
            ASSERT_TRUE(holds(plane, naiveGetPlane(f, volume, index)))
                << f.name << " of " << volume.name;
        }
        ASSERT_TRUE(sameBlock(volume, before));
    });
}

TYPED_TEST(ContainerDifferential, PutsPlanesBackAsTheModelDoes)
{
    this->repeat(5000, [&](Random& random) {
        const unsigned int channels = random.between(1, 4);
        auto volume = this->anyVolume(random, channels);
        VxImage<TypeParam> image;
        wrap(volume, &image);
        for (const auto& f : AllPlaneFunctions<TypeParam>{}) {
            const unsigned int index = random.below(extent(volume, f.across));
            const MakeLayout makeLayout = kLayouts[random.below(std::size(kLayouts))];
            auto source =
                someVolume<TypeParam>(makeLayout(f.planeWidth(volume), f.planeHeight(volume),
                                                 random.between(1, 3), channels),
                                      random.bits());
            VxImage<TypeParam> plane;
            wrap(source, &plane);
            auto expected = volume;
            naiveSetPlane(f, expected, source, index);
            ASSERT_EQ(f.set(index, plane, &image), SUCCESS);
            ASSERT_TRUE(sameBlock(volume, expected))
                << f.name << " from " << source.name << " into " << volume.name;
        }
    });
}

TYPED_TEST(ContainerDifferential, ReadsAndWritesVoxelsAsTheModelDoes)
{
    this->repeat(6000, [&](Random& random) {
        auto volume = this->anyVolume(random, random.between(1, 4));
        auto expected = volume;
        const Layout& l = volume;
        VxImage<TypeParam> image;
        wrap(volume, &image);
        for (int i = 0; i < 20; ++i) {
            const unsigned int x = random.below(l.extents.width + 1),
                               y = random.below(l.extents.height + 1);
            const unsigned int z = random.below(l.extents.depth + 1),
                               c = random.below(l.channels + 1);
            const int at[] = {static_cast<int>(x), static_cast<int>(y), static_cast<int>(z),
                              static_cast<int>(c)};
            const bool inside = x < l.extents.width && y < l.extents.height &&
                                z < l.extents.depth && c < l.channels;
            const TypeParam stored = inside ? expected.at(x, y, z, c) : TypeParam{};
            ASSERT_TRUE(bitEqual(image.getValueVoxel(at[0], at[1], at[2], at[3]), stored));
            const auto value = someValue<TypeParam>(random.bits());
            ASSERT_EQ(image.setValueVoxel(at[0], at[1], at[2], at[3], value),
                      inside ? SUCCESS : ERR_INVALID_ARGUMENT);
            if (inside)
                expected.at(x, y, z, c) = value;
        }
        ASSERT_TRUE(sameBlock(volume, expected)) << l.name;
    });
}

/// A model of an image that is resized again and again: its capacity and what its block holds.
TYPED_TEST(ContainerDifferential, ResizesAsTheModelDoes)
{
    this->repeat(7000, [&](Random& random) {
        VxImage<TypeParam> image;
        std::vector<TypeParam> block;
        for (int i = 0; i < 12; ++i) {
            const unsigned int w = this->someExtent(random), h = this->someExtent(random);
            const unsigned int d = this->someExtent(random), c = random.between(1, 3);
            const std::size_t count = std::size_t{w} * h * d * c;
            if (count > block.size())
                block.assign(count, TypeParam{});
            ASSERT_EQ(image.setImageSize(w, h, d, c), SUCCESS);
            ASSERT_TRUE(sameElements(image.getBufferPointer(), block.data(), block.size()));
            const std::size_t written = random.below(static_cast<unsigned int>(block.size()));
            block[written] = someValue<TypeParam>(random.bits());
            image.getBufferPointer()[written] = block[written];
            ImageFields<TypeParam> expected;
            expected.setInterleaved(w, h, d, c);
            expected.buffer = image.getBufferPointer();
            expected.bufferBytes = block.size() * sizeof(TypeParam);
            ASSERT_EQ(fieldsOf(image), expected);
        }
    });
}

/// Volumes whose indices 16 bits can not count, along each axis in turn.
class ContainerBeyond16Bits : public ::testing::Test {
protected:
    using T = unsigned char;

    /// Runs check(volume, image) with an image that wraps the volume.
    template <class Check>
    static void forEachLongVolume(const Check& check)
    {
        constexpr unsigned int kLong = 70000;
        for (const Layout& layout : {interleaved(kLong, 1, 1, 1), interleaved(1, kLong, 1, 1),
                                     interleaved(1, 1, kLong, 1), interleaved(1, 1, 1, kLong)}) {
            auto volume = someVolume<T>(layout, 8000);
            VxImage<T> image;
            wrap(volume, &image);
            check(volume, image);
        }
    }
};

TEST_F(ContainerBeyond16Bits, FillsEveryVoxel)
{
    forEachLongVolume([](Volume<T>& volume, VxImage<T>& image) {
        auto expected = volume;
        naiveFill(expected, T{77});
        ASSERT_EQ(image.fill(77), SUCCESS);
        EXPECT_TRUE(sameBlock(volume, expected));
    });
}

TEST_F(ContainerBeyond16Bits, FillsTheLastChannel)
{
    forEachLongVolume([](Volume<T>& volume, VxImage<T>& image) {
        auto expected = volume;
        const unsigned int channel = volume.channels - 1;
        naiveFillChannel(expected, channel, T{77});
        ASSERT_EQ(image.fill(channel, 77), SUCCESS);
        EXPECT_TRUE(sameBlock(volume, expected));
    });
}

TEST_F(ContainerBeyond16Bits, CropsTheFarEnd)
{
    forEachLongVolume([](Volume<T>& volume, VxImage<T>& image) {
        const Layout& l = volume;
        const Rect end(l.extents.width / 2, l.extents.width, l.extents.height / 2, l.extents.height,
                       l.extents.depth / 2, l.extents.depth);
        for (const Rect& box :
             {end, Rect(0, l.extents.width, 0, l.extents.height, 0, l.extents.depth)}) {
            VxImage<T> out;
            ASSERT_EQ(image.crop(box, &out), SUCCESS);
            EXPECT_TRUE(holds(out, naiveCrop(volume, box)));
        }
    });
}

TEST_F(ContainerBeyond16Bits, DrawsAtTheFarEnd)
{
    forEachLongVolume([](Volume<T>& volume, VxImage<T>& image) {
        const Layout& l = volume;
        auto from = someVolume<T>(interleaved(1, 1, 1, l.channels), 8001);
        VxImage<T> source;
        wrap(from, &source);
        auto expected = volume;
        naiveDraw(expected, from, l.extents.width - 1, l.extents.height - 1, l.extents.depth - 1);
        ASSERT_EQ(
            image.draw(source, l.extents.width - 1, l.extents.height - 1, l.extents.depth - 1),
            SUCCESS);
        EXPECT_TRUE(sameBlock(volume, expected));
    });
}

TEST_F(ContainerBeyond16Bits, TakesTheLastPlaneWhole)
{
    forEachLongVolume([](Volume<T>& volume, VxImage<T>& image) {
        for (const auto& f : AllPlaneFunctions<T>{}) {
            const unsigned int index = extent(volume, f.across) - 1;
            VxImage<T> plane;
            ASSERT_EQ(f.get(index, image, &plane), SUCCESS);
            EXPECT_TRUE(holds(plane, naiveGetPlane(f, volume, index))) << f.name;
        }
    });
}

TEST_F(ContainerBeyond16Bits, PutsTheLastPlaneBackWhole)
{
    forEachLongVolume([](Volume<T>& volume, VxImage<T>& image) {
        const Layout& l = volume;
        for (const auto& f : AllPlaneFunctions<T>{}) {
            const unsigned int index = extent(l, f.across) - 1;
            auto from =
                someVolume<T>(interleaved(f.planeWidth(l), f.planeHeight(l), 1, l.channels), 8002);
            VxImage<T> plane;
            wrap(from, &plane);
            auto expected = volume;
            naiveSetPlane(f, expected, from, index);
            ASSERT_EQ(f.set(index, plane, &image), SUCCESS);
            EXPECT_TRUE(sameBlock(volume, expected)) << f.name;
        }
    });
}

}  // namespace
}  // namespace volux::test
