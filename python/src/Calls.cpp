#include "Calls.h"

#include <nanobind/stl/array.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/tuple.h>

#include <algorithm>
#include <optional>
#include <tuple>

#include "Maps.h"

namespace volux::python {
namespace {

using namespace nanobind::literals;

/// A displacement field, which the array keeps alive.
struct FieldWarp {
    FieldWarp(Source array, const Rows& toField, const Rows& toVoxels) : vectors(std::move(array))
    {
        warp.field = viewOf(vectors);
        warp.toField = mapOf(toField);
        warp.toVoxels = mapOf(toVoxels);
    }

    void apply(const Points& points, const MovedPoints& results) const
    {
        for (std::size_t n = 0; n < points.shape(0); ++n) {
            const resample::Position to = warp({points(n, 0), points(n, 1), points(n, 2)});
            std::copy_n(&to.x, 3, &results(n, 0));
        }
    }

    Source vectors;
    resample::Warp warp;
};

/// Extents of the whole source and of the whole grid, and where the output and the brick begin.
using Region = std::tuple<Extents, Extents, Extents, Extents>;

core::Rect boxOf(const Extents& start, const Extents& extents)
{
    return {start[0], start[0] + extents[0] - 1, start[1], start[1] + extents[1] - 1,
            start[2], start[2] + extents[2] - 1};
}

resample::ResampleRegion regionOf(const Extents& source, const core::Rect& output,
                                  const Extents& brick)
{
    return {source[0], source[1], source[2], output, brick[0], brick[1], brick[2]};
}

resample::Grid gridOf(const Rows& map, const Extents& extents)
{
    return {extents[0], extents[1], extents[2], {1, 1, 1}, mapOf(map)};
}

template <class View>
Extents extentsOf(const View& view)
{
    return {view.width, view.height, view.depth};
}

void fill(const Source& source, const Destination& destination, const Rows& map,
          const Reading& reading, const FieldWarp* warp, const std::optional<Region>& region)
{
    const resample::View<const void> from = viewOf(source);
    const resample::View<void> to = viewOf(destination);
    WatchedCall::perform(reading, [&](const resample::Options& options) {
        if (region) {
            const auto& [sourceExtents, gridExtents, output, brick] = *region;
            const resample::Grid grid = gridOf(map, gridExtents);
            const resample::ResampleRegion part =
                regionOf(sourceExtents, boxOf(output, extentsOf(to)), brick);
            return warp != nullptr ? resample::resample(from, grid, warp->warp, part, to, options)
                                   : resample::resample(from, grid, part, to, options);
        }
        const resample::Grid grid = gridOf(map, extentsOf(to));
        return warp != nullptr ? resample::resample(from, grid, warp->warp, to, options)
                               : resample::resample(from, grid, to, options);
    });
}

resample::Position column(const resample::AffineMap& map, int c)
{
    return {map.rows[0][c], map.rows[1][c], map.rows[2][c]};
}

void reslice(const Source& source, const Destination& destination, const Rows& map,
             const Reading& reading, unsigned int slab, int projection)
{
    const resample::View<void> to = viewOf(destination);
    const resample::AffineMap rows = mapOf(map);
    const resample::Planes planes = {column(rows, 3), column(rows, 0), column(rows, 1),
                                     column(rows, 2), to.width,        to.height,
                                     to.depth,        {1, 1, 1}};
    const auto kind = static_cast<resample::Projection>(projection);
    WatchedCall::perform(reading, [&, from = viewOf(source)](const resample::Options& options) {
        return resample::reslice(from, planes, to, options, {slab, kind});
    });
}

std::tuple<Extents, Extents> support(const Extents& source, const Extents& extentsOfGrid,
                                     const Rows& map, const Extents& start, const Extents& extents,
                                     const Reading& reading, const FieldWarp* warp)
{
    const resample::ResampleRegion region =
        regionOf(source, boxOf(start, extents), Extents{0, 0, 0});
    const resample::Grid grid = gridOf(map, extentsOfGrid);
    core::Rect box;
    raiseUnlessSuccess(warp != nullptr ? region.support(grid, warp->warp, &box, reading.options)
                                       : region.support(grid, &box, reading.options));
    return {
        Extents{box.xStart, box.yStart, box.zStart},
        Extents{box.xEnd - box.xStart + 1, box.yEnd - box.yStart + 1, box.zEnd - box.zStart + 1}};
}

/// Calls `function` with the results as numbers of their type.
template <class Function>
void withResults(const Destination& results, const Function& function)
{
    switch (typeOf(results.dtype())) {
        case core::DT_UCHAR:
            return function(static_cast<unsigned char*>(results.data()));
        case core::DT_SHORT:
            return function(static_cast<short*>(results.data()));
        case core::DT_USHORT:
            return function(static_cast<unsigned short*>(results.data()));
        case core::DT_INT:
            return function(static_cast<int*>(results.data()));
        case core::DT_UINT:
            return function(static_cast<unsigned int*>(results.data()));
        case core::DT_FLOAT:
            return function(static_cast<float*>(results.data()));
        case core::DT_DOUBLE:
            return function(static_cast<double*>(results.data()));
    }
}

void sample(const Source& source, const Points& points, const std::optional<Rows>& map, int channel,
            const Destination& results, const Reading& reading)
{
    const resample::View<const void> from = viewOf(source);
    const resample::Positions positions = positionsOf(points);
    withResults(results, [&](auto* numbers) {
        WatchedCall::perform(reading, [&](const resample::Options& options) {
            return map ? resample::sample(from, mapOf(*map), positions, points.shape(0), channel,
                                          numbers, options)
                       : resample::sample(from, positions, points.shape(0), resample::Units::VOXELS,
                                          channel, numbers, options);
        });
    });
}

using Gradients = nb::ndarray<double, nb::shape<-1, -1, 4>, nb::c_contig, nb::device::cpu>;

void sampleGradient(const Source& source, const Points& points, const std::optional<Rows>& map,
                    int channel, const Gradients& results, const Reading& reading)
{
    const resample::View<const void> from = viewOf(source);
    const resample::Positions positions = positionsOf(points);
    auto* const numbers = reinterpret_cast<resample::ReadingAndGradient*>(results.data());
    WatchedCall::perform(reading, [&](const resample::Options& options) {
        return map ? resample::sampleGradient(from, mapOf(*map), positions, points.shape(0),
                                              channel, numbers, options)
                   : resample::sampleGradient(from, positions, points.shape(0),
                                              resample::Units::VOXELS, channel, numbers, options);
    });
}

}  // namespace

void addCalls(nb::module_& module)
{
    nb::class_<FieldWarp>(module, "Warp", nb::is_final())
        .def(nb::init<Source, const Rows&, const Rows&>(), "vectors"_a.noconvert(), "to_field"_a,
             "to_voxels"_a)
        .def("apply", &FieldWarp::apply, "points"_a, "results"_a);
    module.def("fill", fill, "source"_a.noconvert(), "destination"_a.noconvert(), "map"_a,
               "reading"_a, nb::kw_only(), "warp"_a = nb::none(), "region"_a = nb::none());
    module.def("reslice", reslice, "source"_a.noconvert(), "destination"_a.noconvert(), "map"_a,
               "reading"_a, nb::kw_only(), "slab"_a, "projection"_a);
    module.def("support", support, "source"_a, "grid"_a, "map"_a, "start"_a, "extents"_a,
               "reading"_a, nb::kw_only(), "warp"_a = nb::none());
    module.def("sample", sample, "source"_a.noconvert(), "points"_a.noconvert(), "map"_a.none(),
               "channel"_a, "results"_a.noconvert(), "reading"_a);
    module.def("sample_gradient", sampleGradient, "source"_a.noconvert(), "points"_a.noconvert(),
               "map"_a.none(), "channel"_a, "results"_a.noconvert(), "reading"_a);
}

}  // namespace volux::python
