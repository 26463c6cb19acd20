// One volume brought to the voxels of another, by where both lie in the world.
#include <volux/core.h>
#include <volux/resample.h>

#include <iostream>

using namespace volux;
using namespace volux::core;

int main()
{
    VxImage<short> ct, onPet;
    ct.initialize(40, 40, 20, 1);
    ct.fill(100);
    resample::Geometry ctSpace, petSpace;
    ctSpace.spacing = VoxelSize(1.0, 1.0, 2.5);
    ctSpace.origin = {-20.0, -20.0, -25.0};
    petSpace.width = petSpace.height = petSpace.depth = 16;
    petSpace.spacing = VoxelSize(4.0, 4.0, 4.0);
    petSpace.origin = {-30.0, -30.0, -30.0};
    const resample::Options options(Linear(), Constant(), -1000.0);  // air around the patient
    if (resample::resample(ct, resample::gridBetween(petSpace, ctSpace), &onPet, options) !=
        SUCCESS)
        return 1;
    std::cout << onPet(8, 8, 8, 0) << ", around it " << onPet(0, 0, 0, 0)
              << '\n';  // prints: 100, around it -1000
}
