// Pixels that no view has. check_refusals.py compiles each case alone and looks for its sentence;
// case 0 is none of them and must compile.
#include <itkRGBPixel.h>
#include <volux/adapt/itk.h>

namespace adapt = volux::adapt;

[[maybe_unused]] static void call(const volux::resample::Geometry& geometry)
{
    adapt::viewOf(adapt::newItkImage<short>(geometry));
#if CASE == 1  // of unsigned char, short, unsigned short
    adapt::viewOf(itk::Image<char, 3>::New());
#elif CASE == 2  // of unsigned char, short, unsigned short
    adapt::newItkImage<itk::RGBPixel<long>>(geometry);
#endif
}
