// Scalars that no view has. check_refusals.py compiles each case alone and looks for its sentence;
// case 0 is none of them and must compile.
#include <volux/adapt/vtk.h>

namespace adapt = volux::adapt;

[[maybe_unused]] static void call(vtkImageData* image, const volux::resample::Geometry& geometry)
{
    adapt::vtkImageOf(adapt::viewOf<short>(image), geometry);
#if CASE == 1  // of unsigned char, short, unsigned short
    adapt::viewOf<long>(image);
#elif CASE == 2  // of unsigned char, short, unsigned short
    adapt::newVtkImage<char>(geometry);
#elif CASE == 3  // pass a View<T> of voxels that it may write
    adapt::vtkImageOf(adapt::viewOf<const short>(image), geometry);
#endif
}
