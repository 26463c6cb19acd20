// Images of VTK as views and geometries, and back: the same voxels, memory and world points.
#include <gtest/gtest.h>
#include <volux/adapt/vtk.h>
#include <volux/resample.h>
#include <vtkSOADataArrayTemplate.h>
#include <vtkShortArray.h>

#include <type_traits>
#include <vector>

#include "../Places.h"
#include "support/TypedSuites.h"

namespace volux::test {
namespace {

using adapt::geometryOf;
using adapt::newVtkImage;
using adapt::viewOf;
using adapt::vtkImageOf;
using resample::View;
using Image = vtkSmartPointer<vtkImageData>;

Image emptyImageAt(const Place& place)
{
    auto image = Image::New();
    int extent[6];
    for (unsigned int axis = 0; axis < 3; ++axis) {
        extent[2 * axis] = place.first[axis];
        extent[2 * axis + 1] = place.first[axis] + static_cast<int>(place.size[axis]) - 1;
    }
    image->SetExtent(extent);
    image->SetSpacing(place.spacing.data());
    image->SetOrigin(place.origin.data());
    image->SetDirectionMatrix(place.direction[0].data());
    return image;
}

template <class T>
Image imageAt(const Place& place, int channels = 1)
{
    auto image = emptyImageAt(place);
    image->AllocateScalars(vtkTypeTraits<T>::VTK_TYPE_ID, channels);
    return image;
}

/// A voxel of the extent, counted from its first one.
struct Index {
    int x, y, z;
    Index(const Place& place, unsigned int i, unsigned int j, unsigned int k)
        : x(place.first[0] + static_cast<int>(i)),
          y(place.first[1] + static_cast<int>(j)),
          z(place.first[2] + static_cast<int>(k))
    {
    }
};

Point worldByVtk(vtkImageData& image, const Index& index)
{
    Point world{};
    image.TransformIndexToPhysicalPoint(index.x, index.y, index.z, world.data());
    return world;
}

template <class T>
class Vtk : public ::testing::Test {
};
TYPED_TEST_SUITE(Vtk, ElementTypes, ElementTypeNames);

TYPED_TEST(Vtk, AViewReadsAndWritesEveryComponentOfEveryVoxel)
{
    forSomePlaces([](const Place& place, Random& random) {
        const int channels = static_cast<int>(random.between(1, 4));
        const auto image = imageAt<TypeParam>(place, channels);
        const auto view = viewOf<TypeParam>(image);
        EXPECT_EQ(view.data, image->GetScalarPointer());
        EXPECT_EQ(view.spacing, geometryOf(image).spacing);
        ASSERT_EQ(view.channels, static_cast<unsigned int>(channels));
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            const Index at(place, i, j, k);
            for (int c = 0; c < channels; ++c) {
                auto& read = element(view, i, j, k, static_cast<unsigned int>(c));
                const auto set = someValue<TypeParam>(random.bits());
                const auto written = someValue<TypeParam>(random.bits());
                image->SetScalarComponentFromDouble(at.x, at.y, at.z, c, static_cast<double>(set));
                EXPECT_EQ(read, set);
                read = written;
                EXPECT_EQ(image->GetScalarComponentAsDouble(at.x, at.y, at.z, c),
                          static_cast<double>(written));
            }
        });
    });
}

TYPED_TEST(Vtk, AnImageOfAViewHasItsMemoryAndItsPlace)
{
    forSomePlaces([](const Place& place, Random& random) {
        const auto image = imageAt<TypeParam>(place, static_cast<int>(random.between(1, 4)));
        const View<TypeParam> view = viewOf<TypeParam>(image);
        const Geometry geometry = geometryOf(image);
        const auto back = vtkImageOf(view, geometry);
        EXPECT_EQ(back->GetScalarPointer(), image->GetScalarPointer());
        EXPECT_EQ(back->GetScalarType(), image->GetScalarType());
        EXPECT_EQ(back->GetNumberOfScalarComponents(), image->GetNumberOfScalarComponents());
        EXPECT_EQ(back->GetNumberOfPoints(), image->GetNumberOfPoints());
        EXPECT_EQ(viewOf<TypeParam>(back).strideZ, view.strideZ);
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            const Index at(place, i, j, k);
            const int x = static_cast<int>(i), y = static_cast<int>(j), z = static_cast<int>(k);
            Point world{};
            back->TransformIndexToPhysicalPoint(x, y, z, world.data());
            expectSamePoint(world, worldByVtk(*image, at));
            EXPECT_EQ(back->GetScalarPointer(x, y, z), image->GetScalarPointer(at.x, at.y, at.z));
        });
    });
}

TYPED_TEST(Vtk, AViewOfTheTypeThatTheScalarsHave)
{
    const auto image = newVtkImage<TypeParam>(Geometry{2, 3, 4}, 5);
    const View<void> view = viewOf(image);
    EXPECT_EQ(view.type, View<TypeParam>::type);
    EXPECT_EQ(view.data, image->GetScalarPointer());
    EXPECT_EQ(view.channels, 5U);
    EXPECT_EQ(view.strideZ, 5 * 2 * 3);
}

TYPED_TEST(Vtk, ANewImageHasThePlaceAndTheChannelsThatWereAskedFor)
{
    forSomePlaces([](const Place& place, Random&) {
        const auto image = emptyImageAt(place);
        const Geometry geometry = geometryOf(image);
        const auto made = newVtkImage<TypeParam>(geometry, 3);
        EXPECT_EQ(viewOf<TypeParam>(made).channels, 3U);
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            expectSamePoint(worldOf(geometryOf(made), i, j, k),
                            worldByVtk(*image, Index(place, i, j, k)));
        });
    });
}

TEST(VtkPlaces, AGeometryLeadsToTheWorldPointsOfVtk)
{
    forSomePlaces([](Place place, Random& random) {
        for (double& spacing : place.spacing)
            spacing = random.below(4) == 0 ? -spacing : spacing;  // VTK takes it for a direction
        const auto image = emptyImageAt(place);
        const Geometry geometry = geometryOf(image);
        EXPECT_EQ(geometry.width, place.size[0]);
        EXPECT_EQ(geometry.height, place.size[1]);
        EXPECT_EQ(geometry.depth, place.size[2]);
        for (const double spacing : {geometry.spacing.x, geometry.spacing.y, geometry.spacing.z})
            EXPECT_GT(spacing, 0.0);
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            expectSamePoint(worldOf(geometry, i, j, k), worldByVtk(*image, Index(place, i, j, k)));
        });
    });
}

/// The trilinear reading at a point of the world, from VTK's own index and voxels.
double readingByVtk(vtkImageData& image, const Point& world, bool& isInside)
{
    int index[3];
    double fraction[3], sum = 0.0;
    isInside = image.ComputeStructuredCoordinates(world.data(), index, fraction) != 0;
    for (int corner = 0; isInside && corner < 8; ++corner) {
        double weight = 1.0;
        int at[3];
        for (int axis = 0; axis < 3; ++axis) {
            const int step = corner >> axis & 1;
            weight *= step == 1 ? fraction[axis] : 1.0 - fraction[axis];
            at[axis] = index[axis] + step;
        }
        if (weight != 0.0)
            sum += weight * image.GetScalarComponentAsDouble(at[0], at[1], at[2], 0);
    }
    return sum;
}

TEST(VtkResample, ReadsWhatVtkHasAtTheSamePointOfTheWorld)
{
    int compared = 0;
    forSomePlaces([&](const Place& place, Random& random) {
        const auto source = imageAt<short>(place);
        const Place across = placeAcross(place, random, random.below(2) == 0);
        const auto output = imageAt<double>(across);
        const View<short> voxels = viewOf<short>(source);
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            element(voxels, i, j, k) = static_cast<short>(number(random, 1000.0));
        });

        const resample::Grid grid = resample::gridBetween(geometryOf(output), geometryOf(source));
        ASSERT_EQ(resample::resample(viewOf(source), grid, viewOf(output)), core::SUCCESS);
        forEachVoxel(across.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            const Index at(across, i, j, k);
            bool isInside = false;
            const double expected = readingByVtk(*source, worldByVtk(*output, at), isInside);
            if (!isInside)
                return;
            ++compared;
            EXPECT_NEAR(output->GetScalarComponentAsDouble(at.x, at.y, at.z, 0), expected, 1e-8);
        });
    });
    EXPECT_GT(compared, 500);
}

TEST(VtkMemory, ItBelongsToItsOwnerStill)
{
    std::vector<short> memory = {1, 2, 3, 4, 5, 6};
    vtkImageOf(View<short>(memory.data(), 3, 2, 1), Geometry{3, 2, 1})
        ->SetScalarComponentFromDouble(2, 1, 0, 0, 60);
    EXPECT_EQ(memory, (std::vector<short>{1, 2, 3, 4, 5, 60}));
}

TEST(VtkMemory, ItsArrayIsTheOneThatVtkLooksFor)
{
    short memory[] = {1, 2, 3};
    const auto image = vtkImageOf(View<short>(memory, 3, 1, 1), Geometry{3, 1, 1});
    EXPECT_NE(vtkShortArray::SafeDownCast(image->GetPointData()->GetScalars()), nullptr);
}

TEST(VtkMemory, AViewToBeReadOnlyReadsTheSameVoxels)
{
    const auto image = newVtkImage<short>(Geometry{3, 1, 1});
    const View<const short> view = viewOf<const short>(image);
    EXPECT_EQ(view.data, image->GetScalarPointer());
}

TEST(VtkRefusals, NullImagesAndImagesWithoutScalars)
{
    EXPECT_THAT_CALL_IS_REFUSED(viewOf<short>(nullptr), "null pointer");
    EXPECT_THAT_CALL_IS_REFUSED(geometryOf(static_cast<vtkImageData*>(nullptr)), "null pointer");
    EXPECT_THAT_CALL_IS_REFUSED(viewOf<short>(Image::New()), "no scalars");
}

TEST(VtkRefusals, ScalarsOfAnotherType)
{
    const Geometry voxel{1, 1, 1};
    EXPECT_THAT_CALL_IS_REFUSED(viewOf<short>(newVtkImage<unsigned short>(voxel)),
                                "a view of short needs interleaved scalars of that type; these are "
                                "unsigned short");
    for (const int type : {VTK_CHAR, VTK_SIGNED_CHAR, VTK_LONG, VTK_UNSIGNED_LONG, VTK_LONG_LONG}) {
        const auto image = newVtkImage<short>(voxel);
        image->AllocateScalars(type, 1);
        EXPECT_THAT_CALL_IS_REFUSED(viewOf<int>(image), "a view of int");
        EXPECT_THAT_CALL_IS_REFUSED(viewOf<unsigned char>(image), "a view of unsigned char");
        EXPECT_THAT_CALL_IS_REFUSED(viewOf(image), "a view of");
    }
}

TEST(VtkRefusals, ScalarsThatAreNotInterleavedOrTooFew)
{
    const auto image = newVtkImage<short>(Geometry{2, 2, 2});
    auto apart = vtkSmartPointer<vtkSOADataArrayTemplate<short>>::New();
    apart->SetNumberOfComponents(2);
    apart->SetNumberOfTuples(8);
    image->GetPointData()->SetScalars(apart);
    EXPECT_THAT_CALL_IS_REFUSED(viewOf<short>(image), "interleaved");
    auto few = vtkSmartPointer<vtkShortArray>::New();
    few->SetNumberOfTuples(7);
    image->GetPointData()->SetScalars(few);
    EXPECT_THAT_CALL_IS_REFUSED(viewOf<short>(image), "one tuple for each voxel");
}

TEST(VtkRefusals, ViewsThatVtkCanNotDescribe)
{
    std::vector<short> memory(64);
    const Geometry geometry{2, 2, 2};
    const View<short> good(memory.data(), 2, 2, 2);
    EXPECT_EQ(refusal([&] { vtkImageOf(good, geometry); }), "");
    for (auto stride : {&View<short>::strideX, &View<short>::strideY, &View<short>::strideZ}) {
        View<short> gaps = good;
        gaps.*stride += 1;
        EXPECT_THAT_CALL_IS_REFUSED(vtkImageOf(gaps, geometry), "not contiguous");
    }
    EXPECT_THAT_CALL_IS_REFUSED(vtkImageOf(View<short>(memory.data(), 2, 2, 3), geometry),
                                "differ in size");
    EXPECT_THAT_CALL_IS_REFUSED(vtkImageOf(View<short>(nullptr, 2, 2, 2), geometry), "no voxels");
    EXPECT_THAT_CALL_IS_REFUSED(newVtkImage<short>(Geometry{1, 1, 1U << 31U}), "in int");
}

}  // namespace
}  // namespace volux::test
