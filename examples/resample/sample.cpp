// Reads many positions at once: the values along a line, in physical units.
#include <volux/core.h>
#include <volux/resample.h>

#include <iostream>
#include <vector>

using namespace volux::core;
using namespace volux::resample;

int main()
{
    float voxels[] = {0, 10, 20, 30};
    VxImage<float> image;
    image.initializeWithPointer(voxels, 4, 1, 1, 1);
    image.setVoxelSize(0.5, 1.0, 1.0);
    std::vector<Position> line;
    for (int n = 0; n < 1000; ++n)
        line.push_back({0.0015 * n, 0.0, 0.0});
    std::vector<double> values(line.size());
    if (sample(image, line.data(), line.size(), Units::PHYSICAL, 0, values.data()) != SUCCESS)
        return 1;
    std::cout << "half way it is " << values[500] << '\n';  // prints: half way it is 15
}
