// Which voxel a kernel reads first, found by asking: in an image without voxels every position is
// outside, so a border of our own sees them all.
#pragma once

#include <optional>

#include "volux/core.h"

namespace documents {

/// Remembers the x of the first neighbour that it is asked for.
struct Recorder : volux::core::Border {
    std::optional<int> x;

    template <class T>
    T fetch(const volux::core::VxImage<T>&, int neighbourX, int, int, unsigned int, T value,
            unsigned int, unsigned int, unsigned int)
    {
        if (!x)
            x = neighbourX;
        return value;
    }

protected:
    border_t<Border, Empty>& get() override
    {
        static border_t<Recorder, Border> table;
        return table;
    }
};

/// The x of the first neighbour at a position along x, or nothing if the kernel reads none.
template <class Kernel>
std::optional<int> firstNeighbour(double position)
{
    const volux::core::VxImage<float> empty;
    Recorder recorder;
    empty.getValueVoxel(position, 0, 0, 0, Kernel(), &recorder, 0.0F);
    return recorder.x;
}

}  // namespace documents
