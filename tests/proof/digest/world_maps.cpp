// The numbers of maps, grids and planes in the world, of as many geometries as the command line
// says, as digest_sampler writes its results. A third of the geometries are such as files have; the
// others are sheared, left-handed, far from 1, or place no image at all.
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "Grids.h"
#include "Rounds.h"
#include "Stream.h"
#include "volux/resample/Geometry.h"

namespace volux::digest {
namespace {

using core::VoxelSize;
using digest::append;
using resample::Geometry;
using World = resample::Position;

void append(Stream& stream, const World& p)
{
    append(stream, std::vector<double>{p.x, p.y, p.z});
}

void append(Stream& stream, const VoxelSize& spacing)
{
    append(stream, std::vector<double>{spacing.x, spacing.y, spacing.z});
}

void append(Stream& stream, const AffineMap& map)
{
    for (const auto& row : map.rows)
        append(stream, std::vector<double>(row, row + 4));
}

template <class Extents>  // of a grid or of a geometry
void appendExtents(Stream& stream, const Extents& e)
{
    append(stream, std::vector<double>{static_cast<double>(e.width), static_cast<double>(e.height),
                                       static_cast<double>(e.depth)});
}

void append(Stream& stream, const Geometry& geometry)
{
    appendExtents(stream, geometry);
    append(stream, geometry.spacing);
    append(stream, geometry.origin);
    for (const auto& row : geometry.direction)
        append(stream, std::vector<double>(row, row + 3));
    append(stream, geometry.refusal() == nullptr ? 1.0 : 0.0);
}

void append(Stream& stream, const Grid& grid)
{
    appendExtents(stream, grid);
    append(stream, grid.spacing);
    append(stream, grid.map);
    append(stream, grid.map.isInvertible() ? 1.0 : 0.0);
}

void append(Stream& stream, const resample::PlacedGrid& placed)
{
    append(stream, placed.grid);
    append(stream, placed.geometry);
}

void append(Stream& stream, const Planes& planes)
{
    append(stream, gridOfPlanes(planes));
    append(stream, planes.step);
}

World vectorOf(Generator& random, double size)
{
    const World v = anyDirection(random);
    return {v.x * size, v.y * size, v.z * size};
}

VoxelSize someSpacing(Generator& random)
{
    constexpr std::array<double, 8> spacings{1.0, 0.957, 1.5, 0.3, 49.0, 0.1, 1.0 / 3.0, 2.5};
    const double x = random.anyOf(spacings);
    const double y = random.anyOf(spacings);
    return VoxelSize(x, y, random.anyOf(spacings));
}

// The axes in any order, of either sign, or turned by the angle of the sides 3, 4 and 5 about one.
void setAlongAxes(double (&direction)[3][3], Generator& random)
{
    const std::size_t turn = random.below(3);
    const bool isTurned = random.below(2) == 0;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            direction[row][column] = (row + turn) % 3 == column ? 1.0 : 0.0;
    for (std::size_t row = 0; row < 3; ++row)
        if (random.below(2) == 0)
            for (double& number : direction[row])
                number = -number;
    for (std::size_t column = 0; isTurned && column < 3; ++column) {
        const double a = direction[0][column];  // a row has one number that is not 0
        const double b = direction[1][column];
        direction[0][column] = a != 0.0 ? 0.6 * a : -0.8 * b;
        direction[1][column] = a != 0.0 ? 0.8 * a : 0.6 * b;
    }
}

void setOblique(double (&direction)[3][3], Generator& random, double size)
{
    for (auto& row : direction)
        for (double& number : row)
            number = step(random) * size;
}

// The last axis in the plane of the others, or next to it. Whole numbers: no product is added to.
void setFlat(double (&direction)[3][3], Generator& random)
{
    constexpr std::array<double, 4> distances{0.0, 0x1p-52, 0x1p-47, 0x1p-40};
    for (auto& row : direction) {
        row[0] = wholeCoordinate(random, 1, 5);
        row[1] = wholeCoordinate(random, 1, 5);
        row[2] = row[0] + row[1];
    }
    direction[random.below(3)][2] += random.anyOf(distances);
}

Geometry someGeometry(Generator& random)
{
    constexpr std::array<double, 5> sizes{1.0, 1e-3, 1e100, 1e-160, 1e200};
    Geometry made;
    made.width = 1 + random.below(300);
    made.height = 1 + random.below(3);
    made.depth = 1 + random.below(40);
    made.spacing = someSpacing(random);
    made.origin = vectorOf(random, 200.0);
    const unsigned int kind = random.below(6);
    if (kind < 2) {
        setAlongAxes(made.direction, random);
        return made;
    }
    if (kind == 2)
        setFlat(made.direction, random);
    else
        setOblique(made.direction, random, kind == 3 ? random.anyOf(sizes) : 1.0);
    return made;
}

class Numbers {
public:
    explicit Numbers(Streams& streams) : streams_(streams), random_(9000) {}

    void add()
    {
        const Geometry source = someGeometry(random_);
        const Geometry output = random_.below(4) == 0 ? likeIt(source) : someGeometry(random_);
        append(streams_["toWorld"], source.toWorld());
        append(streams_["toVoxels"], source.toVoxels());
        append(streams_["positions of maps"], source.toWorld()(source.width, source.height, 7));
        append(streams_["gridBetween"], gridBetween(output, source));
        append(streams_["planesBetween"], planesBetween(output, source, 1 + random_.below(4)));
        addGrids(source);
        addPlanes(source);
    }

private:
    // Other voxels in the same directions.
    Geometry likeIt(const Geometry& source)
    {
        Geometry made = source;
        made.spacing = someSpacing(random_);
        made.origin = vectorOf(random_, 50.0);
        return made;
    }

    unsigned int extent() { return 1 + random_.below(random_.below(4) == 0 ? 2 : 500); }

    void addGrids(const Geometry& source)
    {
        using resample::Align;
        const Align align = random_.below(2) == 0 ? Align::EDGES : Align::CENTRES;
        const unsigned int width = extent();
        const unsigned int height = extent();
        append(streams_["gridOfSize"], gridOfSize(source, width, height, extent(), align));
        append(streams_["gridOfSpacing"], gridOfSpacing(source, someSpacing(random_), align));
        const unsigned int x = random_.below(300);
        const unsigned int z = random_.below(40);
        append(streams_["gridOfCrop"],
               gridOfCrop(source, core::Rect(x, x + random_.below(9), 0, 1, z, z + 3)));
        const Planes planes = somePlanes(random_, {200, 200, 40});
        append(streams_["gridOfPlanes"], gridOfPlanes(source, planes, 1 + random_.below(4)));
        Grid grid;
        grid.map = obliqueMap(random_, {200, 200, 40});
        append(streams_["geometryOf"], geometryOf(source, grid));
    }

    void addPlanes(const Geometry& source)
    {
        constexpr std::array<double, 4> sizes{1.0, 100.0, 1e-200, 1e200};
        const double size = random_.anyOf(sizes);
        const unsigned int width = extent();
        const unsigned int height = extent();
        const VoxelSize spacing = someSpacing(random_);
        const World a = vectorOf(random_, 100.0);
        const World b = vectorOf(random_, size);
        const World c = vectorOf(random_, size);
        const Geometry plane = planeAt(a, b, c, width, height, spacing);
        append(streams_["planeAt"], plane);
        append(streams_["planeThrough"], planeThrough(a, b, c, width, height, spacing));
        append(streams_["stackAlong"], stackAlong(plane, vectorOf(random_, 1.0), 0.7, height));
        append(streams_["stackAlong"], stackAlong(source, b, spacing.z, height));
        std::vector<World> curve;
        for (unsigned int n = random_.below(7); n > 0; --n)
            curve.push_back(random_.below(20) == 0 && !curve.empty() ? curve.back()
                                                                     : vectorOf(random_, size));
        for (const Geometry& along : planesAlong(curve, c, width, height, spacing))
            append(streams_["planesAlong"], along);
    }

    Streams& streams_;
    Generator random_;
};

bool answer(unsigned int geometries)
{
    Streams streams;
    Numbers numbers(streams);
    for (unsigned int n = 0; n < geometries; ++n)
        numbers.add();
    write(streams);
    return std::fflush(stdout) == 0;
}

}  // namespace
}  // namespace volux::digest

int main(int count, char** arguments)
{
    return volux::digest::digestRounds(count, arguments, "world_maps GEOMETRIES",
                                       volux::digest::answer);
}
