// One program with both adapters: an image of ITK becomes one of VTK, in the same memory and place.
#include <gtest/gtest.h>
#include <volux/adapt/itk.h>
#include <volux/adapt/vtk.h>

#include "../Places.h"

namespace volux::test {
namespace {

TEST(VtkFromItk, HasTheVoxelsAndTheWorldPointsOfItk)
{
    forSomePlaces([](const Place& place, Random&) {
        const auto image = itk::Image<float, 3>::New();
        image->SetRegions(itk::Size<3>{{place.size[0], place.size[1], place.size[2]}});
        image->Allocate();
        image->SetOrigin(place.origin.data());
        image->SetSpacing(place.spacing.data());
        const vnl_matrix_fixed<double, 3, 3> direction(place.direction[0].data());
        image->SetDirection(itk::Matrix<double, 3, 3>(direction));
        const auto same = adapt::vtkImageOf(adapt::viewOf(image), adapt::geometryOf(image));
        EXPECT_EQ(adapt::viewOf<const float>(same).data, image->GetBufferPointer());
        forEachVoxel(place.size, [&](unsigned int i, unsigned int j, unsigned int k) {
            const int index[] = {static_cast<int>(i), static_cast<int>(j), static_cast<int>(k)};
            Point world{};
            same->TransformIndexToPhysicalPoint(index, world.data());
            expectSamePoint(world, image->TransformIndexToPhysicalPoint<double>({{i, j, k}}));
        });
    });
}

}  // namespace
}  // namespace volux::test
