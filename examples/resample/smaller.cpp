// Makes a volume smaller without aliasing: each voxel is the mean of those that it replaces.
#include <volux/core.h>
#include <volux/resample.h>

#include <iostream>

using namespace volux::core;
using namespace volux::resample;

int main()
{
    VxImage<short> scan, thumbnail;
    scan.initialize(64, 64, 64, 1);
    for (int n = 0; n < 64 * 64 * 64; n += 2)  // stripes of one voxel
        scan.getBufferPointer()[n] = 100;
    Options options;
    options.subsamples = kAntialiased;
    if (resize(scan, 16, 16, 16, Align::EDGES, &thumbnail, options) != SUCCESS)
        return 1;
    std::cout << thumbnail(3, 5, 7, 0) << " everywhere\n";  // prints: 50 everywhere
}
