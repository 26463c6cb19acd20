#include "Maps.h"

#include <nanobind/stl/array.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace volux::python {
namespace {

using namespace nanobind::literals;
using Triple = std::array<double, 3>;
using PlaneExtents = std::array<unsigned int, 2>;
using TypedRows = nb::typed<nb::object, NewRows>;

resample::Position positionOf(const Triple& triple)
{
    return {triple[0], triple[1], triple[2]};
}

core::VoxelSize spacingOf(const Triple& triple)
{
    return {triple[0], triple[1], triple[2]};
}

resample::Align alignOf(int align)
{
    return align == 0 ? resample::Align::EDGES : resample::Align::CENTRES;
}

std::tuple<TypedRows, TypedRows> sizeGrid(const Rows& affine, const Extents& extents,
                                          const Extents& wanted, int align)
{
    const resample::PlacedGrid placed = resample::gridOfSize(geometryOf(affine, extents), wanted[0],
                                                             wanted[1], wanted[2], alignOf(align));
    return {rowsOf(placed.grid.map), rowsOf(placed.geometry.toWorld())};
}

std::tuple<Extents, TypedRows, TypedRows> spacingGrid(const Rows& affine, const Extents& extents,
                                                      const Triple& wanted, int align)
{
    const resample::PlacedGrid placed =
        resample::gridOfSpacing(geometryOf(affine, extents), spacingOf(wanted), alignOf(align));
    const resample::Grid& grid = placed.grid;
    return {Extents{grid.width, grid.height, grid.depth}, rowsOf(grid.map),
            rowsOf(placed.geometry.toWorld())};
}

TypedRows between(const Rows& output, const Rows& source)
{
    return rowsOf(resample::gridBetween(geometryOf(output), geometryOf(source)).map);
}

TypedRows planesBetween(const Rows& output, const Rows& source, unsigned int slab)
{
    return rowsOf(resample::gridOfPlanes(
                      resample::planesBetween(geometryOf(output), geometryOf(source), slab))
                      .map);
}

TypedRows inverse(const Rows& affine)
{
    return rowsOf(geometryOf(affine).toVoxels());
}

TypedRows composed(const Rows& outer, const Rows& inner)
{
    return rowsOf(resample::composed(mapOf(outer), mapOf(inner)));
}

void apply(const Rows& rows, const Points& points, const MovedPoints& results)
{
    const resample::AffineMap map = mapOf(rows);
    for (std::size_t n = 0; n < points.shape(0); ++n) {
        const resample::Position to = map({points(n, 0), points(n, 1), points(n, 2)});
        std::copy_n(&to.x, 3, &results(n, 0));
    }
}

Triple spacingsOf(const Rows& affine)
{
    const core::VoxelSize spacing = geometryOf(affine).spacing;
    return {spacing.x, spacing.y, spacing.z};
}

std::optional<std::string> refusal(const Rows& affine)
{
    const char* const words = geometryOf(affine).refusal();
    return words == nullptr ? std::nullopt : std::optional<std::string>(words);
}

TypedRows planeAt(const Triple& centre, const Triple& normal, const Triple& up,
                  const PlaneExtents& extents, const Triple& spacing)
{
    return rowsOf(resample::planeAt(positionOf(centre), positionOf(normal), positionOf(up),
                                    extents[0], extents[1], spacingOf(spacing))
                      .toWorld());
}

TypedRows planeThrough(const Triple& first, const Triple& along, const Triple& below,
                       const PlaneExtents& extents, const Triple& spacing)
{
    return rowsOf(resample::planeThrough(positionOf(first), positionOf(along), positionOf(below),
                                         extents[0], extents[1], spacingOf(spacing))
                      .toWorld());
}

TypedRows stackAlong(const Rows& plane, const Triple& direction, double distance)
{
    return rowsOf(
        resample::stackAlong(geometryOf(plane), positionOf(direction), distance, 1).toWorld());
}

std::vector<TypedRows> planesAlong(const std::vector<Triple>& points, const Triple& up,
                                   const PlaneExtents& extents, const Triple& spacing)
{
    std::vector<resample::Position> curve(points.size());
    std::transform(points.begin(), points.end(), curve.begin(), positionOf);
    std::vector<TypedRows> planes;
    for (const resample::Geometry& plane :
         resample::planesAlong(curve, positionOf(up), extents[0], extents[1], spacingOf(spacing))) {
        planes.push_back(rowsOf(plane.toWorld()));
    }
    return planes;
}

}  // namespace

resample::AffineMap mapOf(const Rows& rows)
{
    resample::AffineMap map;
    std::copy_n(rows.data(), rows.size(), &map.rows[0][0]);
    return map;
}

TypedRows rowsOf(const resample::AffineMap& map)
{
    resample::AffineMap copy = map;
    return TypedRows(NewRows(copy.rows).cast(nb::rv_policy::copy));
}

resample::Geometry geometryOf(const Rows& rows, const Extents& extents)
{
    const resample::AffineMap map = mapOf(rows);
    resample::Geometry unscaled;
    for (int r = 0; r < 3; ++r) {
        std::copy_n(map.rows[r], 3, unscaled.direction[r]);
    }
    unscaled.origin = {map.rows[0][3], map.rows[1][3], map.rows[2][3]};
    return resample::geometryOf(unscaled, {extents[0], extents[1], extents[2], {1, 1, 1}, {}});
}

void addGeometry(nb::module_& module)
{
    module.def("size_grid", sizeGrid, "affine"_a, "extents"_a, "wanted"_a, "align"_a);
    module.def("spacing_grid", spacingGrid, "affine"_a, "extents"_a, "wanted"_a, "align"_a);
    module.def("between", between, "output"_a, "source"_a);
    module.def("planes_between", planesBetween, "output"_a, "source"_a, "slab"_a);
    module.def("inverse", inverse, "affine"_a);
    module.def("composed", composed, "outer"_a, "inner"_a);
    module.def("apply", apply, "map"_a, "points"_a, "results"_a);
    module.def("spacing_of", spacingsOf, "affine"_a);
    module.def("refusal", refusal, "affine"_a);
    module.def("plane_at", planeAt, "centre"_a, "normal"_a, "up"_a, "extents"_a, "spacing"_a);
    module.def("plane_through", planeThrough, "first"_a, "along"_a, "below"_a, "extents"_a,
               "spacing"_a);
    module.def("stack_along", stackAlong, "affine"_a, "direction"_a, "distance"_a);
    module.def("planes_along", planesAlong, "points"_a, "up"_a, "extents"_a, "spacing"_a);
}

}  // namespace volux::python
