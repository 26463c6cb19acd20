// VTK: one position per call of vtkImageInterpolator.
#include "VtkSampler.h"

int main(int argc, char** argv)
{
    volux::bench::addLibrary<volux::bench::VtkSampler>("VTK");
    return volux::bench::serve(argc, argv);
}
