// CImg: positions are float, and so are the sums of short and float voxels.
#include "CImgSampler.h"

int main(int argc, char** argv)
{
    volux::bench::addLibrary<volux::bench::CImgSampler>("CImg");
    return volux::bench::serve(argc, argv);
}
