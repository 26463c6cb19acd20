// Images of ITK as views and geometries, and back: the same voxels, memory and world points.
#include <gtest/gtest.h>
#include <itkLinearInterpolateImageFunction.h>
#include <itkRGBPixel.h>
#include <itkResampleImageFilter.h>
#include <volux/adapt/itk.h>
#include <volux/resample.h>

#include <limits>
#include <vector>

#include "../Places.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

using adapt::geometryOf;
using adapt::itkImageOf;
using adapt::itkVectorImageOf;
using adapt::newItkImage;
using adapt::viewOf;
using resample::View;

template <class Image>
typename Image::Pointer imageAt(const Place& place, unsigned int channels = 1)
{
    auto image = Image::New();
    itk::ImageRegion<3> region;
    typename Image::DirectionType direction;
    for (unsigned int axis = 0; axis < 3; ++axis) {
        region.SetIndex(axis, place.first[axis]);
        region.SetSize(axis, place.size[axis]);
        for (unsigned int row = 0; row < 3; ++row)
            direction(row, axis) = place.direction[row][axis];
    }
    image->SetRegions(region);
    image->SetSpacing(place.spacing.data());
    image->SetOrigin(place.origin.data());
    image->SetDirection(direction);
    image->SetNumberOfComponentsPerPixel(channels);
    image->Allocate();
    return image;
}

itk::Index<3> indexOf(const Place& place, unsigned int i, unsigned int j, unsigned int k)
{
    return {{place.first[0] + static_cast<int>(i), place.first[1] + static_cast<int>(j),
             place.first[2] + static_cast<int>(k)}};
}

/// Whether ITK counts a position in voxels as inside, whatever the last bits of it are.
bool isInside(const Position& position, const Place& place)
{
    const Point point = {position.x, position.y, position.z};
    for (unsigned int axis = 0; axis < 3; ++axis)
        if (point[axis] < -0.499999 || point[axis] > place.size[axis] - 0.500001)
            return false;
    return true;
}

/// Sets the pixels by ITK's own access: channel c of the n-th voxel is someValue(4 * n + c).
template <class Image, class Element>
void fill(Image& image, const Place& place, unsigned int channels)
{
    std::uint64_t n = 0;
    forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
        auto pixel = image.GetPixel(indexOf(place, i, j, k));
        for (unsigned int c = 0; c < channels; ++c)
            pixel[c] = someValue<Element>(4 * n + c);
        image.SetPixel(indexOf(place, i, j, k), pixel);
        ++n;
    });
}

template <class T>
class Itk : public ::testing::Test {
};
TYPED_TEST_SUITE(Itk, ElementTypes, ElementTypeNames);

TYPED_TEST(Itk, AViewReadsAndWritesThePixelsOfEveryIndex)
{
    forSomePlaces([](const Place& place, Random& random) {
        const auto image = imageAt<itk::Image<TypeParam, 3>>(place);
        const View<TypeParam> view = viewOf(image);
        const itk::Image<TypeParam, 3>* readOnly = image;
        const View<const TypeParam> read = viewOf(readOnly);
        EXPECT_EQ(view.data, image->GetBufferPointer());
        EXPECT_EQ(view.spacing, geometryOf(image).spacing);
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            const auto pixel = someValue<TypeParam>(random.bits());
            const auto written = someValue<TypeParam>(random.bits());
            image->SetPixel(indexOf(place, i, j, k), pixel);
            EXPECT_EQ(element(read, i, j, k), pixel);
            element(view, i, j, k) = written;
            EXPECT_EQ(image->GetPixel(indexOf(place, i, j, k)), written);
        });
    });
}

TYPED_TEST(Itk, AnImageOfAViewHasItsMemoryAndItsPlace)
{
    forSomePlaces([](const Place& place, Random&) {
        const auto image = imageAt<itk::Image<TypeParam, 3>>(place);
        const Geometry geometry = geometryOf(image);
        const auto back = itkImageOf(viewOf(image), geometry);
        EXPECT_EQ(back->GetBufferPointer(), image->GetBufferPointer());
        EXPECT_EQ(back->GetBufferedRegion().GetSize(), image->GetBufferedRegion().GetSize());
        EXPECT_EQ(back->GetSpacing(), image->GetSpacing());
        EXPECT_EQ(back->GetDirection(), image->GetDirection());
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            const Point world = worldOf(geometry, i, j, k);
            expectSamePoint(world,
                            back->template TransformIndexToPhysicalPoint<double>({{i, j, k}}));
            EXPECT_EQ(&back->GetPixel({{i, j, k}}), &image->GetPixel(indexOf(place, i, j, k)));
        });
    });
}

TYPED_TEST(Itk, ANewImageHasThePlaceThatWasAskedFor)
{
    forSomePlaces([](const Place& place, Random&) {
        const auto image = imageAt<itk::Image<TypeParam, 3>>(place);
        const auto made = newItkImage<TypeParam>(geometryOf(image));
        EXPECT_NE(made->GetBufferPointer(), nullptr);
        const auto last = indexOf(place, place.size[0] - 1, place.size[1] - 1, place.size[2] - 1);
        const Point world =
            worldOf(geometryOf(made), place.size[0] - 1, place.size[1] - 1, place.size[2] - 1);
        expectSamePoint(world, image->template TransformIndexToPhysicalPoint<double>(last));
        EXPECT_EQ(viewOf(made).data, made->GetBufferPointer());
    });
}

TEST(ItkPlaces, AGeometryLeadsToTheWorldPointsOfItk)
{
    forSomePlaces([](const Place& place, Random&) {
        const auto image = imageAt<itk::Image<short, 3>>(place);
        const Geometry geometry = geometryOf(image);
        EXPECT_EQ(geometry.width, place.size[0]);
        EXPECT_EQ(geometry.height, place.size[1]);
        EXPECT_EQ(geometry.depth, place.size[2]);
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            const auto index = indexOf(place, i, j, k);
            expectSamePoint(worldOf(geometry, i, j, k),
                            image->TransformIndexToPhysicalPoint<double>(index));
        });
    });
}

TEST(ItkPlaces, ARegionHasTheGeometryOfItsFirstVoxel)
{
    forSomePlaces([](const Place& place, Random& random) {
        const auto image = imageAt<itk::Image<short, 3>>(place);
        itk::ImageRegion<3> region = image->GetBufferedRegion();
        const unsigned int skipped = random.below(place.size[1]);
        region.SetIndex(1, place.first[1] + static_cast<int>(skipped));
        region.SetSize(1, place.size[1] - skipped);
        const Geometry part = geometryOf(image, region);
        EXPECT_EQ(part.height, place.size[1] - skipped);
        expectSamePoint(worldOf(part, 0, 0, 0),
                        image->TransformIndexToPhysicalPoint<double>(region.GetIndex()));
    });
}

TEST(ItkResample, BringsAnImageOntoAnotherAsItksLinearFilterDoes)
{
    using Image = itk::Image<double, 3>;
    int compared = 0;
    forSomePlaces([&](const Place& place, Random& random) {
        const auto source = imageAt<Image>(place);
        const auto output = imageAt<Image>(placeAcross(place, random, random.below(2) == 0));
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            source->SetPixel(indexOf(place, i, j, k), number(random, 100.0));
        });
        const auto filter = itk::ResampleImageFilter<Image, Image>::New();
        filter->SetInput(source);
        filter->SetReferenceImage(output);
        filter->UseReferenceImageOn();
        filter->Update();

        const resample::Grid grid = resample::gridBetween(geometryOf(output), geometryOf(source));
        ASSERT_EQ(resample::resample(viewOf(source), grid, viewOf(output)), core::SUCCESS);
        const View<double> expected = viewOf(filter->GetOutput());
        forEachVoxel({grid.width, grid.height, grid.depth}, [&](unsigned int i, unsigned int j,
                                                                unsigned int k) {
            if (!isInside(grid.map(i, j, k), place))
                return;
            ++compared;
            EXPECT_NEAR(element(viewOf(output), i, j, k), element(expected, i, j, k), 1e-9);
        });
    });
    EXPECT_GT(compared, 500);
}

TEST(ItkChannels, PixelsOfSeveralElementsAndVectorImagesHaveChannels)
{
    forSomePlaces([](const Place& place, Random&) {
        const auto colours = imageAt<itk::Image<itk::RGBPixel<unsigned char>, 3>>(place);
        const auto vectors = imageAt<itk::VectorImage<float, 3>>(place, 4);
        fill<decltype(*colours), unsigned char>(*colours, place, 3);
        fill<decltype(*vectors), float>(*vectors, place, 4);
        const View<unsigned char> colour = viewOf(colours);
        const View<float> vector = viewOf(vectors);
        EXPECT_EQ(colour.channels, 3U);
        EXPECT_EQ(vector.channels, 4U);
        std::uint64_t n = 0;
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            for (unsigned int c = 0; c < 3; ++c)
                EXPECT_EQ(element(colour, i, j, k, c), someValue<unsigned char>(4 * n + c));
            for (unsigned int c = 0; c < 4; ++c)
                EXPECT_EQ(element(vector, i, j, k, c), someValue<float>(4 * n + c));
            ++n;
        });
    });
}

TEST(ItkChannels, AVectorImageOfAViewHasItsMemoryAndItsChannels)
{
    std::vector<float> memory(2 * 3 * 4 * 5);
    for (std::size_t n = 0; n < memory.size(); ++n)
        memory[n] = static_cast<float>(n);
    Geometry geometry;
    geometry.width = 3, geometry.height = 4, geometry.depth = 5;
    const auto image = itkVectorImageOf(View<float>(memory.data(), 3, 4, 5, 2), geometry);
    EXPECT_EQ(image->GetVectorLength(), 2U);
    EXPECT_EQ(image->GetBufferPointer(), memory.data());
    EXPECT_EQ(image->GetPixel({{2, 3, 4}})[1], 2 * 3 * 4 * 5 - 1);
    EXPECT_EQ(viewOf(image).strideX, 2);
}

TEST(ItkMemory, ItBelongsToItsOwnerStill)
{
    std::vector<short> memory = {1, 2, 3, 4, 5, 6};
    Geometry geometry;
    geometry.width = 3, geometry.height = 2, geometry.depth = 1;
    itkImageOf(View<short>(memory.data(), 3, 2, 1), geometry)->SetPixel({{2, 1, 0}}, 60);
    EXPECT_EQ(memory, (std::vector<short>{1, 2, 3, 4, 5, 60}));
}

TEST(ItkMemory, AViewToBeReadOnlyGivesAConstImage)
{
    const short memory[] = {1, 2, 3};
    Geometry geometry;
    geometry.width = 3, geometry.height = geometry.depth = 1;
    const View<const short> view(memory, 3, 1, 1);
    const itk::Image<short, 3>::ConstPointer image = itkImageOf(view, geometry);
    const itk::VectorImage<short, 3>::ConstPointer vectors = itkVectorImageOf(view, geometry);
    EXPECT_EQ(image->GetBufferPointer(), memory);
    EXPECT_EQ(vectors->GetBufferPointer(), memory);
    static_assert(!std::is_convertible_v<decltype(itkImageOf(view, geometry)),
                                         itk::Image<short, 3>::Pointer>);
}

TEST(ItkRefusals, NullImagesAndImagesWithoutVoxels)
{
    using Image = itk::Image<short, 3>;
    const auto empty = Image::New();
    const auto notAllocated = Image::New();
    notAllocated->SetRegions(itk::Size<3>{{3, 3, 3}});
    const auto outgrown = Image::New();
    outgrown->SetRegions(itk::Size<3>{{3, 3, 2}});
    outgrown->Allocate();
    outgrown->SetRegions(itk::Size<3>{{3, 3, 3}});
    for (const auto& image : {empty, notAllocated, outgrown})
        EXPECT_THAT_CALL_IS_REFUSED(viewOf(image), "no voxels in memory");
    EXPECT_THAT_CALL_IS_REFUSED(viewOf(static_cast<Image*>(nullptr)), "null pointer");
    EXPECT_THAT_CALL_IS_REFUSED(geometryOf(nullptr), "null pointer");
}

TEST(ItkRefusals, ViewsThatItkCanNotDescribe)
{
    std::vector<short> memory(64);
    Geometry geometry;
    geometry.width = geometry.height = geometry.depth = 2;
    const View<short> good(memory.data(), 2, 2, 2);
    EXPECT_EQ(refusal([&] { itkImageOf(good, geometry); }), "");
    for (auto stride : {&View<short>::strideX, &View<short>::strideY, &View<short>::strideZ}) {
        View<short> gaps = good;
        gaps.*stride += 1;
        EXPECT_THAT_CALL_IS_REFUSED(itkImageOf(gaps, geometry), "not contiguous");
    }
    EXPECT_THAT_CALL_IS_REFUSED(itkImageOf(View<short>(memory.data(), 2, 2, 2, 2), geometry),
                                "itkVectorImageOf");
    EXPECT_THAT_CALL_IS_REFUSED(itkImageOf(View<short>(memory.data(), 2, 2, 3), geometry),
                                "differ in size");
    EXPECT_THAT_CALL_IS_REFUSED(itkImageOf(View<short>(nullptr, 2, 2, 2), geometry), "no voxels");
}

TEST(ItkRefusals, AStrideAlongOneVoxelDoesNotMatter)
{
    std::vector<short> memory(4);
    Geometry geometry;
    geometry.width = geometry.depth = 1, geometry.height = 4;
    View<short> line(memory.data(), 1, 4, 1);
    line.strideX = 77, line.strideZ = -5, line.strideC = 9;
    EXPECT_EQ(itkImageOf(line, geometry)->GetBufferPointer(), memory.data());
}

}  // namespace
}  // namespace volux::test
