// Answers the corpus on whole volumes without volux_resample: by one call of volux_core for each
// sample, at the position that the documentation gives, and the value outside where the edge of a
// grid has ended.
#include <vector>

#include "BulkCorpus.h"
#include "Rounds.h"
#include "support/GradientOracle.h"
#include "support/SubsampleMeans.h"

namespace volux::digest {
namespace {

using test::positionOf;

struct SingleCalls {
    template <class T>
    static void resample(const core::VxImage<T>& source, const Grid& grid,
                         core::VxImage<T>& destination, const Options& options)
    {
        forEachVoxel(destination, [&](unsigned int i, unsigned int j, unsigned int k, int c) {
            return test::gridElement(source, positionOf(grid.map, i, j, k), c, options);
        });
    }

    template <class T>
    static void reslice(const core::VxImage<T>& source, const Planes& planes,
                        core::VxImage<T>& destination, const Options& options, const Slab& slab)
    {
        const AffineMap map = mapOf(planes);
        forEachVoxel(destination, [&](unsigned int i, unsigned int j, unsigned int k, int c) {
            return converted<T>(projected(source, {map, i, j, k}, c, options, slab));
        });
    }

    template <class T>
    static void resize(const core::VxImage<T>& source, Align align, core::VxImage<T>& destination,
                       const Options& options)
    {
        Grid grid;
        const auto change = [&](int axis, unsigned int from, unsigned int to) {
            const bool isCentred = align == Align::CENTRES;
            const double s = isCentred ? (from - 1.0) / (to - 1.0) : static_cast<double>(from) / to;
            grid.map.rows[axis][axis] = s;
            grid.map.rows[axis][3] = isCentred ? 0.0 : 0.5 * s - 0.5;  // a half of it is exact
        };
        change(0, source.getWidth(), destination.getWidth());
        change(1, source.getHeight(), destination.getHeight());
        change(2, source.getDepth(), destination.getDepth());
        Options extending = options;
        extending.edgeExtends = true;
        resample(source, grid, destination, extending);
    }

    template <class T, class Result>
    static void sample(const core::VxImage<T>& source,
                       const std::vector<resample::Position>& positions, resample::Units units,
                       Result* results, const Options& options)
    {
        const core::VoxelSize unit = units == resample::Units::PHYSICAL
                                         ? const_cast<core::VxImage<T>&>(source).getVoxelSize()
                                         : core::VoxelSize(1, 1, 1);
        for (const resample::Position& p : positions)
            for (unsigned int c = 0; c < source.getChannels(); ++c) {
                const resample::Position voxel = {p.x / unit.x, p.y / unit.y, p.z / unit.z};
                const int channel = static_cast<int>(c);
                if constexpr (std::is_same_v<T, Result>)
                    *results++ = test::element(source, voxel, channel, options);
                else
                    *results++ = test::reading(source, voxel, channel, options);
            }
    }

    template <class T>
    static std::vector<double> readings(const core::VxImage<T>& source,
                                        const std::vector<resample::Position>& positions,
                                        const Options& options)
    {
        std::vector<double> all;
        for (const resample::Position& p : positions)
            all.push_back(test::reading(source, p, 0, options));
        return all;
    }

    template <class T>
    static std::vector<double> gradients(const core::VxImage<T>& source,
                                         const std::vector<resample::Position>& positions,
                                         const Options& options)
    {
        std::vector<double> all;
        for (const resample::Position& p : positions) {
            const auto r = test::definition::gradient(source, p, 0, options);
            all.insert(all.end(), {r.value, r.x, r.y, r.z});
        }
        return all;
    }

    template <class R, class T>
    static std::vector<double> resample(const ViewedVolume<T>& source, const Grid& grid,
                                        const Arrangement&, const Options& options)
    {
        const core::VxImage<T>& image = source.wrapped.image;
        const resample::Subsamples n = test::subsamplesOf(grid.map, options.subsamples);
        return eachResult(grid, image, [&](const Voxel& voxel, int c) {
            if (n.x * n.y * n.z > 1)
                return converted<R>(
                    test::meanReading(image, grid.map, voxel.i, voxel.j, voxel.k, c, options));
            return stored<R>(image, voxel.position(), c, options, test::gridReading<T>,
                             test::gridElement<T>);
        });
    }

    template <class R, class T>
    static std::vector<double> reslice(const ViewedVolume<T>& source, const Planes& planes,
                                       const Arrangement&, const Options& options, const Slab& slab)
    {
        Grid grid;
        grid.width = planes.width;
        grid.height = planes.height;
        grid.depth = planes.count;
        grid.map = mapOf(planes);
        const core::VxImage<T>& image = source.wrapped.image;
        return eachResult(grid, image, [&](const Voxel& voxel, int c) {
            return converted<R>(projected(image, voxel, c, options, slab));
        });
    }

    template <class R, class T>
    static std::vector<double> sample(const ViewedVolume<T>& source, const Places& places,
                                      const Options& options)
    {
        const core::VxImage<T>& image = source.wrapped.image;
        const test::oracle::Position& unit = source.wrapped.volume.spacing;
        std::vector<double> results;
        for (resample::Position p : places.positions) {
            if (places.toVoxels != nullptr)
                p = positionOf(*places.toVoxels, p.x, p.y, p.z);
            else if (places.units == resample::Units::PHYSICAL)
                p = {p.x / unit.x, p.y / unit.y, p.z / unit.z};
            for (int c = 0; c < static_cast<int>(image.getChannels()); ++c)
                results.push_back(static_cast<double>(
                    stored<R>(image, p, c, options, test::reading<T>, test::element<T>)));
        }
        return results;
    }

    template <class T, class V>
    static void resample(const core::VxImage<T>& source, const Grid& grid, const Moves<V>& moves,
                         core::VxImage<T>& destination, const Options& options)
    {
        forEachVoxel(destination, [&](unsigned int i, unsigned int j, unsigned int k, int c) {
            const resample::Position led = lead(moves, positionOf(grid.map, i, j, k));
            return test::gridElement(source, led, c, options);
        });
    }

    template <class V>
    static resample::Position lead(const Moves<V>& moves, const resample::Position& p)
    {
        const resample::Position f = positionOf(moves.toField, p.x, p.y, p.z);
        const auto u = [&](int c) { return test::gridReading(moves.field, f, c, Options()); };
        return positionOf(moves.toVoxels, p.x + u(0), p.y + u(1), p.z + u(2));
    }

private:
    // One voxel of a grid.
    struct Voxel {
        const AffineMap& map;
        unsigned int i;
        unsigned int j;
        unsigned int k;

        resample::Position position() const { return positionOf(map, i, j, k); }
    };

    template <class T>
    static double projected(const core::VxImage<T>& source, const Voxel& voxel, int c,
                            const Options& options, const Slab& slab)
    {
        const bool isMean = slab.projection == resample::Projection::MEAN && slab.planes > 1;
        if (isMean && options.interpolator == &resample::LABELS)
            return elected(source, voxel, c, options, slab.planes);
        double result = 0.0;
        for (unsigned int n = 0; n < slab.planes; ++n) {
            const unsigned int plane = voxel.k * slab.planes + n;
            const double sample =
                test::meanReading(source, voxel.map, voxel.i, voxel.j, plane, c, options);
            result = n == 0 ? sample : project(slab.projection, result, sample);
        }
        return isMean ? result / slab.planes : result;
    }

    // The vote of the sub-samples of all planes of a slab.
    template <class T>
    static double elected(const core::VxImage<T>& source, const Voxel& voxel, int c,
                          const Options& options, unsigned int planes)
    {
        const resample::Subsamples n = test::subsamplesOf(voxel.map, options.subsamples);
        const AffineMap finer = test::finerMapOf(voxel.map, n);
        std::vector<double> samples;
        for (unsigned int z = voxel.k * planes * n.z; z < (voxel.k + 1) * planes * n.z; ++z)
            for (unsigned int y = voxel.j * n.y; y < (voxel.j + 1) * n.y; ++y)
                for (unsigned int x = voxel.i * n.x; x < (voxel.i + 1) * n.x; ++x)
                    samples.push_back(
                        test::gridReading(source, positionOf(finer, x, y, z), c, options));
        AffineMap centres = voxel.map;
        for (auto& row : centres.rows) {
            const volatile double moved = row[2] * ((planes - 1.0) / 2.0);
            row[3] = row[3] + moved;
            row[2] = row[2] * planes;
        }
        Options nearest = options;
        nearest.interpolator = test::kInterpolators[0];
        const resample::Position centre = positionOf(centres, voxel.i, voxel.j, voxel.k);
        return test::electedOf(samples, test::gridReading(source, centre, c, nearest));
    }

    // What a destination of type R keeps: the element, if that is the source's type, else the
    // reading.
    template <class R, class T, class Read, class Element>
    static R stored(const core::VxImage<T>& image, const resample::Position& p, int c,
                    const Options& options, const Read& read, const Element& element)
    {
        if constexpr (std::is_same_v<R, T>)
            return element(image, p, c, options);
        else
            return static_cast<R>(read(image, p, c, options));
    }

    template <class T, class Value>
    static std::vector<double> eachResult(const Grid& grid, const core::VxImage<T>& source,
                                          const Value& value)
    {
        std::vector<double> results;
        for (unsigned int k = 0; k < grid.depth; ++k)
            for (unsigned int j = 0; j < grid.height; ++j)
                for (unsigned int i = 0; i < grid.width; ++i)
                    for (int c = 0; c < static_cast<int>(source.getChannels()); ++c)
                        results.push_back(static_cast<double>(value({grid.map, i, j, k}, c)));
        return results;
    }

    template <class T, class Value>
    static void forEachVoxel(core::VxImage<T>& image, const Value& value)
    {
        for (unsigned int k = 0; k < image.getDepth(); ++k)
            for (unsigned int j = 0; j < image.getHeight(); ++j)
                for (unsigned int i = 0; i < image.getWidth(); ++i)
                    for (unsigned int c = 0; c < image.getChannels(); ++c)
                        image(static_cast<int>(i), static_cast<int>(j), static_cast<int>(k),
                              static_cast<int>(c)) = value(i, j, k, static_cast<int>(c));
    }

    static AffineMap mapOf(const Planes& planes)
    {
        AffineMap map;
        const resample::Position* const columns[] = {&planes.across, &planes.down, &planes.step,
                                                     &planes.origin};
        for (int column = 0; column < 4; ++column) {
            map.rows[0][column] = columns[column]->x;
            map.rows[1][column] = columns[column]->y;
            map.rows[2][column] = columns[column]->z;
        }
        return map;
    }

    static double project(resample::Projection projection, double before, double sample)
    {
        if (projection == resample::Projection::MEAN)
            return before + sample;
        const bool isGreater = projection == resample::Projection::MAXIMUM;
        return (isGreater ? sample > before : sample < before) ? sample : before;
    }

    template <class T>
    static T converted(double value)
    {
        if constexpr (std::is_floating_point_v<T>)
            return static_cast<T>(value);
        else
            return test::saturated<T>(value);
    }
};

}  // namespace
}  // namespace volux::digest

int main(int count, char** arguments)
{
    const volux::digest::SingleCalls calls;
    return volux::digest::digestRounds(
        count, arguments, "single_calls ROUNDS",
        [&](unsigned int rounds) { return volux::digest::digestBulk(rounds, calls); });
}
