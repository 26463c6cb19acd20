// An oblique plane, into memory of the program's own.
#include <volux/core.h>
#include <volux/resample.h>

#include <vector>

using namespace volux::core;
using namespace volux::resample;

int main()
{
    VxImage<unsigned char> volume, view;
    volume.initialize(64, 64, 64, 1);
    volume.fill(200);
    std::vector<unsigned char> pixels(512 * 512);
    view.initializeWithPointer(pixels.data(), 512, 512, 1, 1);
    Planes planes;
    planes.origin = {0.0, 0.0, 0.0};
    planes.across = {0.12, 0.0, 0.03};  // in voxels, from a pixel to the next
    planes.down = {0.0, 0.12, 0.03};
    planes.width = planes.height = 512;
    return reslice(volume, planes, &view) == SUCCESS && pixels.back() == 200 ? 0 : 1;
}
