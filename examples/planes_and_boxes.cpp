// A box cut out of a volume and put back elsewhere, and the three planes through it.

#include <cstdio>

#include "volux/core.h"

using namespace volux::core;

namespace {

/// The value of a voxel is its position.
int mark(int x, int y, int z)
{
    return 100 * x + 10 * y + z;
}

void markAll(VxImage<int>& volume)
{
    for (int z = 0; z < static_cast<int>(volume.getDepth()); ++z)
        for (int y = 0; y < static_cast<int>(volume.getHeight()); ++y)
            for (int x = 0; x < static_cast<int>(volume.getWidth()); ++x)
                volume(x, y, z, 0) = mark(x, y, z);
}

/// Crops a box whose far corner is outside, which clips the box, and draws it at the origin.
bool moveBox(VxImage<int>& volume)
{
    VxImage<int> box;
    if (volume.crop(Rect(3, 9, 2, 3, 1, 2), &box) != SUCCESS ||
        volume.draw(box, 0, 0, 0) != SUCCESS)
        return false;
    std::printf("box of %u x %u x %u\n", box.getWidth(), box.getHeight(), box.getDepth());
    return box.getWidth() == 3 && box.getVoxelSize() == volume.getVoxelSize() &&
           volume(0, 0, 0, 0) == mark(3, 2, 1) && volume(2, 1, 1, 0) == mark(5, 3, 2) &&
           volume(3, 0, 0, 0) == mark(3, 0, 0);
}

/// Planes are images of depth 1; the yz plane has y across, the zx plane has z across.
bool takePlanes(VxImage<int>& volume)
{
    VxImage<int> xy, yz, zx;
    if (getXyPlane(3, volume, &xy) != SUCCESS || getYzPlane(5, volume, &yz) != SUCCESS ||
        getZxPlane(2, volume, &zx) != SUCCESS)
        return false;
    const bool right = xy(4, 1, 0, 0) == mark(4, 1, 3) && yz(3, 2, 0, 0) == mark(5, 3, 2) &&
                       zx(1, 4, 0, 0) == mark(4, 2, 1);
    yz.fill(-1);
    return right && setYzPlane(0, yz, &volume) == SUCCESS && volume(0, 3, 3, 0) == -1 &&
           volume(1, 3, 3, 0) == mark(1, 3, 3) && getXyPlane(4, volume, &xy) == ERR_INVALID_Z;
}

}  // namespace

int main()
{
    VxImage<int> volume;
    if (volume.initialize(6, 5, 4, 1) != SUCCESS || volume.setVoxelSize(0.5, 0.5, 2.0) != SUCCESS)
        return 1;
    markAll(volume);
    const bool moved = moveBox(volume);
    return moved && takePlanes(volume) ? 0 : 1;
}
