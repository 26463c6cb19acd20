// Computes a head in slices of 3 mm, and leaves three planes of it as pictures, with pixels of half
// a millimetre. Usage: example_head [FOLDER]
#include <volux/core.h>
#include <volux/resample.h>

#include <cmath>
#include <fstream>
#include <iostream>
#include <string>

using namespace volux::core;
using namespace volux::resample;

// 1 on the surface of the ellipsoid around 0.
double radius(const Position& at, const Position& axes)
{
    return std::hypot(at.x / axes.x, at.y / axes.y, at.z / axes.z);
}

// As MR shows tissues, at a place in mm: x to the left, y to the back, z to the top of the head.
unsigned char greyAt(const Position& at)
{
    const double depth = radius({at.x, at.y, at.z}, {70, 88, 78});
    const Position side = {std::abs(at.x) - 11, at.y - 6, at.z - 4};
    const double folds = std::sin(at.x / 4 + 2 * std::sin(at.z / 9)) *
                         std::sin(at.y / 5 + 2 * std::cos(at.x / 11)) *
                         std::sin(at.z / 5 + 2 * std::cos(at.y / 12));
    if (depth > 0.88)
        return depth > 1 ? 3 : depth > 0.96 ? 190 : 25;  // air, skin, bone
    if (radius(side, {6, 11, 27}) < 1 || depth > 0.82 + 0.05 * folds)
        return 45;                                  // fluid, within the brain and around it
    return depth > 0.7 + 0.16 * folds ? 120 : 175;  // grey and white matter
}

bool save(const std::string& path, VxImage<unsigned char>& picture)
{
    const std::streamsize width = picture.getWidth(), height = picture.getHeight();
    std::ofstream file(path, std::ios::binary);
    file << "P5 " << width << ' ' << height << " 255\n";
    file.write(reinterpret_cast<const char*>(picture.getBufferPointer()), width * height);
    return file.flush().good();
}

int main(int argc, char** argv)
{
    const std::string folder = argc > 1 ? argv[1] : ".";
    const Geometry space = {160, 200, 60, {1, 1, 3}, {-79.5, -99.5, -88.5}};
    VxImage<unsigned char> head;
    head.initialize(space.width, space.height, space.depth, 1);
    for (unsigned int n = 0; n < space.width * space.height * space.depth; ++n)
        head.getBufferPointer()[n] =
            greyAt(space.toWorld()({1.0 * (n % 160), 1.0 * (n / 160 % 200), 1.0 * (n / 32000)}));

    struct Cut {
        std::string name;
        Position normal, up;  // the normal points away from whoever looks
    };
    for (const Cut& cut :
         {Cut{"axial", {0, 0, 1}, {0, -1, 0}}, Cut{"coronal", {0, 1, 0}, {0, 0, 1}},
          Cut{"sagittal", {-1, 0, 0}, {0, 0, 1}}}) {
        const Geometry plane = planeAt({0, 0, 0}, cut.normal, cut.up, 400, 400, {0.5, 0.5, 0.5});
        VxImage<unsigned char> picture;
        if (resample(head, gridBetween(plane, space), &picture, Cubic()) != SUCCESS ||
            !save(folder + "/" + cut.name + ".pgm", picture))
            return 1;
        std::cout << cut.name << ": " << +picture(200, 100, 0, 0) << '\n';
    }  // prints: sagittal: 175
}
