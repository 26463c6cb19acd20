// ITK: nearest, linear, and the B-spline of order 3, which is another kernel than the tricubic one.
#include "ItkSampler.h"

int main(int argc, char** argv)
{
    volux::bench::addLibrary<volux::bench::ItkSampler>("ITK");
    return volux::bench::serve(argc, argv);
}
