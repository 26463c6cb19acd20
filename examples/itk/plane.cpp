// Reads a volume by ITK, cuts a plane through its middle that leans by 30 degrees, and writes that
// where it is in the world: a viewer shows it inside the volume. Usage: plane INPUT OUTPUT
#include <itkImageFileReader.h>
#include <itkImageFileWriter.h>
#include <volux/adapt/itk.h>
#include <volux/resample.h>

#include <algorithm>
#include <cmath>
#include <iostream>

using namespace volux;

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const auto source = itk::ReadImage<itk::Image<float, 3>>(argv[1]);
    const resample::Geometry space = adapt::geometryOf(source);
    const resample::AffineMap toWorld = space.toWorld();
    const resample::Position first = toWorld({0, 0, 0});
    const resample::Position last =
        toWorld({space.width - 1.0, space.height - 1.0, space.depth - 1.0});
    const resample::Position middle = {(first.x + last.x) / 2, (first.y + last.y) / 2,
                                       (first.z + last.z) / 2};

    // In ITK's world x leads to the left, y to the back and z to the head.
    const double pixel = std::min({space.spacing.x, space.spacing.y, space.spacing.z});
    const double diagonal = std::hypot(last.x - first.x, last.y - first.y, last.z - first.z);
    const auto half = static_cast<unsigned int>(diagonal / 2 / pixel) + 1;
    const unsigned int extent = 2 * half + 1;
    const resample::Position normal = {0, std::cos(M_PI / 6), std::sin(M_PI / 6)};
    const resample::Geometry plane =
        resample::planeAt(middle, normal, {0, 0, 1}, extent, extent, {pixel, pixel, pixel});

    const auto result = adapt::newItkImage<float>(plane);
    if (resample::resample(adapt::viewOf(source), resample::gridBetween(plane, space),
                           adapt::viewOf(result), core::Linear()) != core::SUCCESS)
        return 1;
    itk::WriteImage(result, argv[2]);
    std::cout << extent << " x " << extent << " pixels of " << pixel << " mm, the middle one "
              << result->GetPixel({half, half, 0}) << '\n';
}
