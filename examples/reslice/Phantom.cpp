#include "Phantom.h"

#include <array>
#include <cmath>

#include "Interrupt.h"

namespace reslice {
namespace {

enum Tissue { AIR, FAT, BONE, FLUID, GREY_MATTER, WHITE_MATTER, MUSCLE, TISSUES };

constexpr std::array<short, TISSUES> kMrIntensity = {3, 190, 25, 45, 120, 175, 90};
constexpr std::array<short, TISSUES> kHounsfield = {-1000, -80, 1100, 8, 38, 28, 55};

/// 1 on the surface of the ellipsoid around `centre`.
double radius(const Point& at, const Point& centre, const Point& axes)
{
    return std::hypot((at.x - centre.x) / axes.x, (at.y - centre.y) / axes.y,
                      (at.z - centre.z) / axes.z);
}

Tissue brainAt(const Point& at, double depth)
{
    const bool fissure = std::abs(at.x) < 1.5 && depth > 0.68 && at.z > -5.0;
    const bool ventricle = radius({std::abs(at.x), at.y, at.z}, {11, -2, 10}, {6, 27, 11}) < 1.0;
    if (fissure || ventricle)
        return FLUID;
    const double folds = std::sin(at.x / 4.0 + 2.0 * std::sin(at.z / 9.0)) *
                         std::sin(at.y / 5.0 + 2.0 * std::cos(at.x / 11.0)) *
                         std::sin(at.z / 5.0 + 2.0 * std::cos(at.y / 12.0));
    if (depth > 0.85 + 0.05 * folds)
        return FLUID;
    return depth > 0.72 + 0.16 * folds ? GREY_MATTER : WHITE_MATTER;
}

Tissue faceAt(const Point& at)
{
    const bool spine = std::hypot(at.x / 14.0, (at.y + 30.0) / 14.0) < 1.0;
    const bool neck = at.z < -20.0 && std::hypot(at.x / 46.0, (at.y + 18.0) / 54.0) < 1.0;
    const bool nose = radius(at, {0, 82, -30}, {11, 14, 20}) < 1.0;
    if (neck)
        return spine ? BONE : MUSCLE;
    return nose ? FAT : AIR;
}

/// Millimetres from the middle of the head.
Tissue tissueAt(const Point& at)
{
    const double depth = radius(at, {0, -4, 6}, {70, 88, 78});
    if (radius({std::abs(at.x), at.y, at.z}, {30, 68, -22}, {12, 13, 12}) < 1.0)
        return FLUID;
    if (depth >= 1.0)
        return faceAt(at);
    if (depth > 0.96)
        return FAT;
    return depth > 0.88 ? BONE : brainAt(at, depth);
}

}  // namespace

std::unique_ptr<Volume> makePhantom(Modality modality)
{
    const Layout layout{"synthetic head", {160, 200, 116}, {1.0, 1.0, 1.5}, {}};
    const auto [width, height, depth] = layout.extent;
    std::shared_ptr<short[]> voxels(new short[std::size_t{width} * height * depth]);
    short* next = voxels.get();
    for (unsigned int z = 0; z < depth; ++z) {
        stopIfInterrupted(layout.path);
        for (unsigned int y = 0; y < height; ++y)
            for (unsigned int x = 0; x < width; ++x) {
                const Tissue tissue = tissueAt({x - 79.5, y - 99.5, 1.5 * z - 86.25});
                *next++ = (modality == Modality::MR ? kMrIntensity : kHounsfield)[tissue];
            }
    }
    return makeVolume<short>(layout, voxels);
}

}  // namespace reslice
