// The positions of a block, one in each lane, for the instruction set that Highway is compiling.
#if defined(VOLUX_RESAMPLE_POSITIONS) == defined(HWY_TARGET_TOGGLE)
#ifdef VOLUX_RESAMPLE_POSITIONS
#undef VOLUX_RESAMPLE_POSITIONS
#else
#define VOLUX_RESAMPLE_POSITIONS
#endif

#include <hwy/highway.h>

#include "Lanes-inl.h"
#include "Positions.h"

HWY_BEFORE_NAMESPACE();
namespace volux::resample::detail {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

inline void mapPositionsHere(const AffineMap& map, const Block& from, Block& to)
{
    for (std::size_t n = 0; n < from.count; n += kLanes) {
        const Real x = load(from.x + n);
        const Real y = load(from.y + n);
        const Real z = load(from.z + n);
        const auto coordinate = [&](const double(&row)[4]) HWY_ATTR {
            return along(rowStart(row, y, z), Real(row[0]), x);
        };
        store(coordinate(map.rows[0]), to.x + n);
        store(coordinate(map.rows[1]), to.y + n);
        store(coordinate(map.rows[2]), to.z + n);
    }
}

// NaN is outside. Both ends are exact.
class RealView {
public:
    explicit RealView(const Extents& extents)
        : ends_{extents.x - 0.5, extents.y - 0.5, extents.z - 0.5}
    {
    }

    Mask holds(const Block& block, std::size_t n) const
    {
        return hn::And(hn::And(holds(block.x + n, ends_[0]), holds(block.y + n, ends_[1])),
                       holds(block.z + n, ends_[2]));
    }

private:
    static Mask holds(const double* coordinates, double end)
    {
        const Real coordinate = load(coordinates);
        return hn::And(coordinate >= Real(-0.5), hn::Lt(coordinate.lanes, Real(end).lanes));
    }

    double ends_[3];
};

inline void addInViewHere(const Block& block, const Extents& extents, double* coordinates)
{
    const RealView view(extents);
    for (std::size_t n = 0; n < block.count; n += kLanes) {
        const Real reading = select(view.holds(block, n), load(block.readings + n), Real(0.0));
        store(load(coordinates + n) + reading, coordinates + n);
    }
}

inline bool areInViewHere(const Block& block, const Extents& extents)
{
    const Doubles d;
    const RealView view(extents);
    for (std::size_t n = 0; n < block.count; n += kLanes) {
        const Mask isPadding = hn::Not(hn::FirstN(d, block.count - n));
        if (!allTrue(hn::Or(view.holds(block, n), isPadding))) {
            return false;
        }
    }
    return true;
}

}  // namespace HWY_NAMESPACE
}  // namespace volux::resample::detail
HWY_AFTER_NAMESPACE();

#endif
