// The three pairs of plane functions under one table, so that a rule is tested on all of them.
#pragma once

#include <ostream>
#include <string>

#include "ContainerOracle.h"
#include "volux/core/Planes.h"

namespace volux::test {

enum class Axis { X, Y, Z };

inline unsigned int extent(const Layout& l, Axis axis)
{
    return axis == Axis::X ? l.extents.width : axis == Axis::Y ? l.extents.height : l.extents.depth;
}

/// A plane is normal to `across`; its own x axis runs along `planeX`, its y axis along `planeY`.
template <class T>
struct PlaneFunctions {
    const char* name;
    Axis across, planeX, planeY;
    ErrorType (*get)(unsigned int, const VxImage<T>&, VxImage<T>*);
    ErrorType (*set)(unsigned int, const VxImage<T>&, VxImage<T>*);

    /// The volume's voxel that is voxel (i, j) of plane `index`.
    template <class AnyVolume>
    auto& voxel(AnyVolume& volume, unsigned int index, unsigned int i, unsigned int j,
                unsigned int c) const
    {
        const auto along = [&](Axis axis) {
            return axis == across ? index : axis == planeX ? i : j;
        };
        return volume.at(along(Axis::X), along(Axis::Y), along(Axis::Z), c);
    }

    unsigned int planeWidth(const Layout& volume) const { return extent(volume, planeX); }
    unsigned int planeHeight(const Layout& volume) const { return extent(volume, planeY); }
};

template <class T>
struct AllPlaneFunctions {
    PlaneFunctions<T> table[3] = {
        {"xy", Axis::Z, Axis::X, Axis::Y, getXyPlane<T>, setXyPlane<T>},
        {"yz", Axis::X, Axis::Y, Axis::Z, getYzPlane<T>, setYzPlane<T>},
        {"zx", Axis::Y, Axis::Z, Axis::X, getZxPlane<T>, setZxPlane<T>},
    };
    const PlaneFunctions<T>* begin() const { return table; }
    const PlaneFunctions<T>* end() const { return table + 3; }
};

/// The code that names an axis.
inline ErrorType invalid(Axis axis)
{
    return axis == Axis::X ? ERR_INVALID_X : axis == Axis::Y ? ERR_INVALID_Y : ERR_INVALID_Z;
}

template <class T>
Volume<T> naiveGetPlane(const PlaneFunctions<T>& plane, const Volume<T>& volume, unsigned int index)
{
    auto result =
        blankVolume<T>({plane.planeWidth(volume), plane.planeHeight(volume), 1}, volume.channels);
    forEachVoxel(result, [&](unsigned int i, unsigned int j, unsigned int, unsigned int c) {
        result.at(i, j, 0, c) = plane.voxel(volume, index, i, j, c);
    });
    return result;
}

/// Plane y outermost, then plane x, then the channel.
template <class T>
void naiveSetPlane(const PlaneFunctions<T>& plane, Volume<T>& volume, const Volume<T>& source,
                   unsigned int index)
{
    Layout slice = source;
    slice.extents.depth = 1;
    forEachVoxel(slice, [&](unsigned int i, unsigned int j, unsigned int, unsigned int c) {
        plane.voxel(volume, index, i, j, c) = source.at(i, j, 0, c);
    });
}

}  // namespace volux::test
