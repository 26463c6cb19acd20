// A maximum projection through the whole depth of a volume, one slab thick as all of it.
#include <volux/core.h>
#include <volux/resample.h>

using namespace volux::core;
using namespace volux::resample;

int main()
{
    VxImage<short> volume, projection;
    volume.initialize(32, 32, 32, 1);
    volume(5, 6, 17, 0) = 700;
    Planes planes;
    planes.width = planes.height = 32;
    const Slab slab = {32, Projection::MAXIMUM};
    if (reslice(volume, planes, &projection, NearestNeighbor(), slab) != SUCCESS)
        return 1;
    return projection(5, 6, 0, 0) == 700 && projection(6, 6, 0, 0) == 0 ? 0 : 1;
}
