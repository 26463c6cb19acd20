// Bounds of positions that a displacement field leads into a source.
//
// A sample is at s = toVoxels(p + u), which is toVoxels(p) + L u, where L are the steps of
// toVoxels. Without rounding, toVoxels(p) is affine in the voxel of the output, so it is bounded by
// the corners of a box; and the vectors that Linear reads are means of the nodes' vectors, so L u
// is bounded by the nodes that a box touches, however the field folds. What rounds on the way, here
// and in the sample, are fewer than 64 steps whose numbers are no greater than the absolute values
// that add up to s.
#include <algorithm>
#include <cmath>
#include <limits>

#include "Warps.h"
#include "exact/ElementTypes.h"

namespace volux::resample::detail {

namespace {

constexpr double kRounding = 0x1p-46;                          // 128 steps
constexpr double kLeast = std::numeric_limits<double>::min();  // far more than underflow takes
constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Row = double[4];
using Triple = double[3];

constexpr Triple kZero = {0.0, 0.0, 0.0};

// Numbers from `least` to `greatest`; none at first.
struct Interval {
    double least = kInfinity;
    double greatest = -kInfinity;

    // What is not finite says nothing of what is between.
    void add(double number)
    {
        if (std::isfinite(number)) {
            least = std::min(least, number);
            greatest = std::max(greatest, number);
        } else {
            addAll();
        }
    }
    void addAll()
    {
        least = -kInfinity;
        greatest = kInfinity;
    }
};

// The sums of a number from each of two intervals, give or take a margin.
Interval sum(const Interval& a, const Interval& b, double margin)
{
    const Interval sums = {(a.least + b.least) - margin, (a.greatest + b.greatest) + margin};
    const bool areNumbers = !std::isnan(sums.least) && !std::isnan(sums.greatest);
    return areNumbers ? sums : Interval{-kInfinity, kInfinity};
}

// A box of a grid in the space of the vectors.
class PlacedBox {
public:
    PlacedBox(const AffineMap& map, const core::Rect& box)
    {
        for (int n = 0; n < 8; ++n) {
            corners_[n] =
                map((n & 1) != 0 ? box.xEnd : box.xStart, (n & 2) != 0 ? box.yEnd : box.yStart,
                    (n & 4) != 0 ? box.zEnd : box.zStart);
        }
        const Triple ends = {static_cast<double>(box.xEnd), static_cast<double>(box.yEnd),
                             static_cast<double>(box.zEnd)};
        for (int n = 0; n < 3; ++n) {
            sizes_[n] = sizeOf(map.rows[n], ends);
        }
    }

    // One coordinate of where a map leads, after moves by vectors of a size at most.
    Interval through(const AffineMap& map, int axis, const Interval& moves,
                     const Triple& largest) const
    {
        Interval reached;
        for (const Position& corner : corners_) {
            reached.add(coordinate(map(corner), axis));
        }
        const Triple sizes = {sizes_[0] + largest[0], sizes_[1] + largest[1],
                              sizes_[2] + largest[2]};
        return sum(reached, moves, kRounding * sizeOf(map.rows[axis], sizes));
    }

private:
    static double coordinate(const Position& p, int axis)
    {
        return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
    }
    // What the absolute values of numbers in one row of a map add up to, at most.
    static double sizeOf(const Row& row, const Triple& sizes)
    {
        return std::abs(row[3]) + std::abs(row[0]) * sizes[0] + std::abs(row[1]) * sizes[1] +
               std::abs(row[2]) * sizes[2] + kLeast;
    }

    Position corners_[8];
    Triple sizes_;
};

// The nodes that are read along one axis of a field; none if the last is before the first.
struct Nodes {
    std::int64_t first;
    std::int64_t last;
    bool areAll;  // no position is out of view

    Nodes(const Interval& places, unsigned int extent)
    {
        const double end = extent - 0.5;
        areAll = places.least >= -0.5 && places.greatest < end;
        const bool areNone = places.greatest < -0.5 || places.least >= end;
        first = static_cast<std::int64_t>(std::floor(std::clamp(places.least, 0.0, end)));
        last = static_cast<std::int64_t>(std::floor(std::clamp(places.greatest, -0.5, end - 1.0)));
        last = areNone ? first - 1 : last + 1;
    }
};

// How vectors move a position of the source, and how large they are.
class Moves {
public:
    explicit Moves(const AffineMap& toVoxels) : map_(toVoxels) {}

    void add(const Triple& u)
    {
        for (int n = 0; n < 3; ++n) {
            const double(&row)[4] = map_.rows[n];
            along_[n].add((row[0] * u[0] + row[1] * u[1]) + row[2] * u[2]);
            largest_[n] = std::max(largest_[n], std::abs(u[n]));
        }
    }
    void addAny()
    {
        for (Interval& along : along_) {
            along.addAll();
        }
    }

    Interval of(const PlacedBox& box, int axis) const
    {
        return box.through(map_, axis, along_[axis], largest_);
    }

private:
    const AffineMap& map_;
    Interval along_[3];
    Triple largest_ = {0.0, 0.0, 0.0};
};

// The vectors of some nodes. Those that are not finite lead to no position that is, so that
// `nothing` may be all that they read.
template <class T>
void addNodes(const UntypedImage& field, const Nodes& xs, const Nodes& ys, const Nodes& zs,
              bool isNothing, Moves& moves)
{
    for (std::int64_t z = zs.first; z <= zs.last; ++z) {
        for (std::int64_t y = ys.first; y <= ys.last; ++y) {
            for (std::int64_t x = xs.first; x <= xs.last; ++x) {
                const Triple u = {elementAt<T>(field.at(x, y, z, 0)),
                                  elementAt<T>(field.at(x, y, z, 1)),
                                  elementAt<T>(field.at(x, y, z, 2))};
                if (std::isfinite(u[0]) && std::isfinite(u[1]) && std::isfinite(u[2])) {
                    moves.add(u);
                } else if (!isNothing) {
                    moves.addAny();
                }
            }
        }
    }
}

Moves movesOf(const PlacedBox& box, const Displacement& displacement, bool isNothing)
{
    const UntypedImage& field = displacement.field.image;
    const auto nodes = [&](int axis, unsigned int extent) {
        return Nodes(box.through(displacement.toField, axis, {0.0, 0.0}, kZero), extent);
    };
    const Nodes xs = nodes(0, field.width);
    const Nodes ys = nodes(1, field.height);
    const Nodes zs = nodes(2, field.depth);
    Moves moves(displacement.toVoxels);
    if (!xs.areAll || !ys.areAll || !zs.areAll) {
        moves.add(kZero);
    }
    exact::withElementType(field.type, [&](auto element) {
        addNodes<typename decltype(element)::Type>(field, xs, ys, zs, isNothing, moves);
    });
    return moves;
}

}  // namespace

Reach reachOf(const AffineMap& map, const core::Rect& box,
              const std::optional<Displacement>& displacement, const Reading& reading)
{
    if (!displacement) {
        return reachOf(map, box);
    }
    const PlacedBox placed(map, box);
    // An index that is not finite is outside, where only an edge that goes on has voxels.
    const bool isNothing = reading.edgeEnds || reading.outside.isConstant;
    const Moves moves = movesOf(placed, *displacement, isNothing);
    const Interval x = moves.of(placed, 0);
    const Interval y = moves.of(placed, 1);
    const Interval z = moves.of(placed, 2);
    return {{x.least, y.least, z.least}, {x.greatest, y.greatest, z.greatest}};
}

}  // namespace volux::resample::detail
