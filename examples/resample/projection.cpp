// Projects the maximum through a volume, with one slab as thick as its whole depth.
#include <volux/core.h>
#include <volux/resample.h>

#include <iostream>

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
    std::cout << projection(5, 6, 0, 0) << ", beside it " << projection(6, 6, 0, 0)
              << '\n';  // prints: 700, beside it 0
}
