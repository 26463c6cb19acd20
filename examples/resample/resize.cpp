// Brings thick slices to voxels of equal edges.
#include <volux/core.h>
#include <volux/resample.h>

#include <iostream>

using namespace volux::core;
using namespace volux::resample;

int main()
{
    VxImage<short> slices, isotropic;
    slices.initialize(64, 48, 10, 1);
    slices.setVoxelSize(0.5, 0.5, 2.0);
    Options options = Cubic();
    options.progress = [](double done) {
        std::clog << 100.0 * done << " %\n";
        return true;  // false would cancel
    };
    if (resize(slices, VoxelSize(0.5, 0.5, 0.5), Align::EDGES, &isotropic, options) != SUCCESS)
        return 1;
    std::cout << isotropic.getDepth() << " slices\n";  // prints: 40 slices
}
