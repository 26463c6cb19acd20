// Displacement fields beside ITK's own transform and filter: equal in the interior but for
// rounding, and at the rim, where both fields of view end in the same place.
#include <gtest/gtest.h>
#include <itkDisplacementFieldTransform.h>
#include <itkLinearInterpolateImageFunction.h>
#include <itkResampleImageFilter.h>
#include <volux/adapt/itk.h>
#include <volux/resample.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "../Places.h"

namespace volux::test {
namespace {

constexpr double kOutside = -1e6;  // unlike any voxel

using Source = itk::Image<double, 3>;

template <class Image>
typename Image::Pointer imageAt(const Place& place)
{
    auto image = Image::New();
    itk::ImageRegion<3> region;
    typename Image::DirectionType direction;
    for (unsigned int axis = 0; axis < 3; ++axis) {
        region.SetSize(axis, place.size[axis]);
        for (unsigned int row = 0; row < 3; ++row)
            direction(row, axis) = place.direction[row][axis];
    }
    image->SetRegions(region);
    image->SetSpacing(place.spacing.data());
    image->SetOrigin(place.origin.data());
    image->SetDirection(direction);
    image->Allocate();
    return image;
}

// With its middle in the same place, but from index 0 and of another size.
Place resized(Place place, Random& random, unsigned int size)
{
    for (unsigned int axis = 0; axis < 3; ++axis) {
        const unsigned int before = place.size[axis];
        place.size[axis] = size + random.below(4);
        const double moved = place.first[axis] + 0.5 * before - 0.5 * place.size[axis];
        place.first[axis] = 0;
        for (unsigned int row = 0; row < 3; ++row)
            place.origin[row] += place.direction[row][axis] * place.spacing[axis] * moved;
    }
    return place;
}

// Whether a position in voxels is so near the end of a field of view that rounding decides.
bool isAtRim(const Position& p, const std::array<unsigned int, 3>& size, double rounding)
{
    const Point point = {p.x, p.y, p.z};
    for (unsigned int axis = 0; axis < 3; ++axis)
        if (std::abs(point[axis] + 0.5) < rounding ||
            std::abs(point[axis] - (size[axis] - 0.5)) < rounding)
            return true;
    return false;
}

// A field of V, of whose type ITK's positions are, too.
template <class V>
class WarpsOfItk : public ::testing::Test {
protected:
    using Vectors = itk::Image<itk::Vector<V, 3>, 3>;

    void draw(unsigned int seed)
    {
        Seeded random(seed);
        const Place middle = somePlace(random, false);
        source = imageAt<Source>(resized(middle, random, 12));
        field = imageAt<Vectors>(resized(placeAcross(middle, random, true), random, 5));
        const Place around = resized(placeAcross(middle, random, false), random, 14);
        output = adapt::geometryOf(imageAt<Source>(around).GetPointer());
        const auto sourceVoxels = adapt::viewOf(source.GetPointer());
        forEachVoxel({sourceVoxels.width, sourceVoxels.height, sourceVoxels.depth},
                     [&](auto i, auto j, auto k) {
                         element(sourceVoxels, i, j, k) = number(random, 100.0);
                     });
        const auto nodes = adapt::viewOf(field.GetPointer());
        forEachVoxel({nodes.width, nodes.height, nodes.depth}, [&](auto i, auto j, auto k) {
            for (unsigned int c = 0; c < 3; ++c)
                element(nodes, i, j, k, c) = static_cast<V>(number(random, 3.0));
        });
    }

    typename Source::Pointer byItk() const
    {
        using Filter = itk::ResampleImageFilter<Source, Source, double, V>;
        auto transform = itk::DisplacementFieldTransform<V, 3>::New();
        transform->SetDisplacementField(field);
        auto filter = Filter::New();
        typename Source::DirectionType direction;
        for (unsigned int row = 0; row < 3; ++row)
            for (unsigned int column = 0; column < 3; ++column)
                direction(row, column) = output.direction[row][column];
        filter->SetInput(source);
        filter->SetTransform(transform);
        filter->SetSize({{output.width, output.height, output.depth}});
        const double spacing[] = {output.spacing.x, output.spacing.y, output.spacing.z};
        const double origin[] = {output.origin.x, output.origin.y, output.origin.z};
        filter->SetOutputSpacing(spacing);
        filter->SetOutputOrigin(origin);
        filter->SetOutputDirection(direction);
        filter->SetDefaultPixelValue(kOutside);
        filter->Update();
        return filter->GetOutput();
    }

    // Compares all voxels but those that rounding may take across the end of a field of view.
    void compare(double rounding)
    {
        const auto sourceView = adapt::viewOf(source.GetPointer());
        const auto vectors = adapt::viewOf(field.GetPointer());
        const auto [grid, warp] =
            resample::warpBetween(output, adapt::geometryOf(field.GetPointer()),
                                  adapt::geometryOf(source.GetPointer()), vectors);
        core::VxImage<double> result;
        ASSERT_EQ(
            resample::resample(sourceView, grid, warp, &result,
                               resample::Options(core::Linear(), core::Replication(), kOutside)),
            core::SUCCESS);
        const auto expected = byItk();
        forEachVoxel({output.width, output.height, output.depth}, [&](auto i, auto j, auto k) {
            const Position p = grid.map(i, j, k);
            if (isAtRim(warp.toField(p), {vectors.width, vectors.height, vectors.depth},
                        rounding) ||
                isAtRim(warp(p), {sourceView.width, sourceView.height, sourceView.depth}, rounding))
                return;
            const double here =
                result(static_cast<int>(i), static_cast<int>(j), static_cast<int>(k), 0);
            ASSERT_NEAR(here, expected->GetPixel({{i, j, k}}), 1e3 * rounding)
                << "voxel " << i << ' ' << j << ' ' << k;
            ++(here == kOutside ? outside : inside);
        });
    }

    typename Source::Pointer source;
    typename Vectors::Pointer field;
    Geometry output;
    unsigned int inside = 0;
    unsigned int outside = 0;
};
using Fractions = ::testing::Types<double, float>;
TYPED_TEST_SUITE(WarpsOfItk, Fractions);

TYPED_TEST(WarpsOfItk, AreEqualUpToRounding)
{
    const bool isDouble = std::is_same_v<TypeParam, double>;
    for (unsigned int seed = 1; seed <= 30; ++seed) {
        this->draw(seed);
        this->compare(isDouble ? 1e-10 : 3e-3);
    }
    EXPECT_GT(this->inside, 3000U);
    EXPECT_GT(this->outside, 3000U);
}

// All on whole voxels: what a difference in rounding decides elsewhere is exact here.
TEST(WarpsOfItkAtTheRim, EndTheFieldsOfViewInTheSamePlace)
{
    // Every number is a sum of few powers of two, so that neither library rounds.
    Place line{{1, 1, 1}, {0, 0, 0}, {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, {0, 0, 0}, {4, 3, 3}};
    const auto source = imageAt<Source>(line);
    source->FillBuffer(7.0);
    using Vectors = itk::Image<itk::Vector<double, 3>, 3>;
    line.size = {2, 3, 3};  // from -0.5 to before 1.5
    const auto field = imageAt<Vectors>(line);
    itk::Vector<double, 3> along;
    along[0] = 2.0;
    along[1] = along[2] = 0.0;
    field->FillBuffer(along);
    auto transform = itk::DisplacementFieldTransform<double, 3>::New();
    transform->SetDisplacementField(field);
    Geometry output = {33, 1, 1, core::VoxelSize(0.25, 1, 1), {-2, 1, 1}};
    auto filter = itk::ResampleImageFilter<Source, Source>::New();
    filter->SetInput(source);
    filter->SetTransform(transform);
    filter->SetSize({{33, 1, 1}});
    const double spacing[] = {0.25, 1, 1};
    const double origin[] = {-2, 1, 1};
    filter->SetOutputSpacing(spacing);
    filter->SetOutputOrigin(origin);
    filter->SetDefaultPixelValue(kOutside);
    filter->Update();
    const auto [grid, warp] = resample::warpBetween(output, adapt::geometryOf(field.GetPointer()),
                                                    adapt::geometryOf(source.GetPointer()),
                                                    adapt::viewOf(field.GetPointer()));
    core::VxImage<double> result;
    ASSERT_EQ(resample::resample(adapt::viewOf(source.GetPointer()), grid, warp, &result,
                                 resample::Options(core::Linear(), core::Replication(), kOutside)),
              core::SUCCESS);
    for (int i = 0; i < 33; ++i) {
        const double x = -2 + 0.25 * i;
        const double led = x >= -0.5 && x < 1.5 ? x + 2 : x;
        const double expected = led >= -0.5 && led < 3.5 ? 7.0 : kOutside;
        EXPECT_EQ(result(i, 0, 0, 0), expected) << x;
        EXPECT_EQ(filter->GetOutput()->GetPixel({{i, 0, 0}}), expected) << x;
    }
}

}  // namespace
}  // namespace volux::test
