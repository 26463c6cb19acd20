// A result made slice by slice, of a source that is never whole in memory but where it is read.
#include <volux/core.h>
#include <volux/resample.h>

#include <algorithm>
#include <iostream>

using namespace volux;
using namespace volux::core;

int main()
{
    VxImage<short> onDisk;  // stands for a file
    onDisk.initialize(30, 30, 30, 1);
    const resample::Grid grid = resample::gridOfSize(onDisk.getImageSize(), VoxelSize(1, 1, 1), 60,
                                                     60, 60, resample::Align::EDGES);
    resample::ResampleRegion region;
    region.sourceWidth = region.sourceHeight = region.sourceDepth = 30;
    unsigned int most = 0;
    for (unsigned int z = 0; z < grid.depth; ++z) {
        VxImage<short> brick, slice;
        Rect box;
        region.output = Rect(0, 59, 0, 59, z, z);
        if (region.support(grid, &box, Cubic()) != SUCCESS || onDisk.crop(box, &brick) != SUCCESS)
            return 1;
        region.brickX = box.xStart, region.brickY = box.yStart, region.brickZ = box.zStart;
        if (resample::resample(brick, grid, region, &slice, Cubic()) != SUCCESS)
            return 1;
        most = std::max(most, brick.getDepth());
    }
    std::cout << "at most " << most << " slices at once\n";  // prints: at most 4 slices at once
}
