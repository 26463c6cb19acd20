// Cuts an oblique plane into memory that the program owns.
#include <volux/core.h>
#include <volux/resample.h>

#include <iostream>
#include <vector>

using namespace volux::core;
using namespace volux::resample;

int main()
{
    VxImage<unsigned char> volume, view;
    volume.initialize(64, 64, 64, 1);
    for (int n = 0; n < 64 * 64 * 64; ++n)
        volume.getBufferPointer()[n] = static_cast<unsigned char>(n % 64);  // grows along x
    std::vector<unsigned char> pixels(512 * 512);
    view.initializeWithPointer(pixels.data(), 512, 512, 1, 1);
    Planes planes;
    planes.across = {0.12, 0.0, 0.03};  // in voxels, from a pixel to the next
    planes.down = {0.0, 0.12, 0.03};
    planes.width = planes.height = 512;
    if (reslice(volume, planes, &view) != SUCCESS)
        return 1;
    std::cout << "at column 400: " << +pixels[400] << '\n';  // prints: at column 400: 48
}
