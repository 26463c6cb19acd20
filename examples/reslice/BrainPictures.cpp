#include "BrainPictures.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "BulkPictures.h"
#include "Montage.h"
#include "Sheet.h"
#include "ShortNumber.h"
#include "View.h"
#include "Window.h"

namespace reslice {
namespace {

namespace InterpolationType = core::InterpolationType;
namespace InterpolationBorderType = core::InterpolationBorderType;

constexpr unsigned int kTile = 400;  // pixels
constexpr unsigned int kDetailTile = 312;
constexpr double kPixelsToVoxel = 20.0;

std::string convention(const Volume& volume)
{
    return volume.orientationKnown() ? "radiological convention: the patient's right is on the left"
                                     : "orientation unknown: axes as stored";
}

Tile cutTile(const Volume& volume, Cut cut, const std::string& name, const Window& window, Job& job)
{
    const double pixelEdge = volume.longestSide() / kTile;
    const unsigned int index = slicesOf(volume, cut) / 2;
    Picture picture = viewCut(volume, cut, index, pixelEdge, window, job);
    furnish(picture, volume, directionsOf(cut), pixelEdge);
    return {std::move(picture), name + std::to_string(index)};
}

void makePlanes(const Volume& volume, const Window& window, const OutputFolder& folder)
{
    Job job("planes.png", 3);
    std::vector<Tile> tiles;
    tiles.push_back(cutTile(volume, Cut::AXIAL, "axial, z = ", window, job));
    tiles.push_back(cutTile(volume, Cut::CORONAL, "coronal, y = ", window, job));
    tiles.push_back(cutTile(volume, Cut::SAGITTAL, "sagittal, x = ", window, job));
    folder.write(job,
                 composeSheet("Three orthogonal planes: " + volume.name(),
                              describe(volume) + "; " + convention(volume), tiles),
                 "three orthogonal planes by the plane functions; " + convention(volume));
}

/// A coronal plane, turned about the body's axis and then leant back.
Plane obliquePlane(const Volume& volume)
{
    constexpr double kTurn = 0.55, kLean = 0.35;  // radians
    const double s = std::sin(kTurn), c = std::cos(kTurn);
    const double lean = std::sin(kLean), upright = std::cos(kLean);
    return {volume.centre(), {{-c, s, 0.0}, {lean * s, lean * c, -upright}}};
}

/// How far the kernels differ in the square of that many millimetres around the plane's centre.
double disagreement(const Volume& volume, const Plane& plane, double square)
{
    constexpr int kSamples = 16;
    double sum = 0.0;
    for (int row = 0; row < kSamples; ++row)
        for (int column = 0; column < kSamples; ++column) {
            const Point at = plane.at(((column + 0.5) / kSamples - 0.5) * square,
                                      ((row + 0.5) / kSamples - 0.5) * square);
            const auto read = [&](core::Interpolator& interpolator) {
                return volume.sample(at, &interpolator, &InterpolationBorderType::REPLICATION, 0.0);
            };
            sum += std::abs(read(InterpolationType::CUBIC) - read(InterpolationType::LINEAR));
        }
    return sum;
}

/// The same plane around the square that has most to show, well inside the head.
Plane mostTelling(const Volume& volume, const Plane& plane, double square)
{
    constexpr int kTries = 5;  // to each side
    const double step = 0.15 * volume.longestSide() / kTries;
    Plane best = plane;
    double most = disagreement(volume, plane, square);
    for (int down = -kTries; down <= kTries; ++down)
        for (int right = -kTries; right <= kTries; ++right) {
            const Plane other{plane.at(right * step, down * step), plane.directions};
            const double here = disagreement(volume, other, square);
            if (here > most) {
                best = other;
                most = here;
            }
        }
    return best;
}

Tile view(const Volume& volume, const Plane& plane, const PixelGrid& grid, const Policies& policies,
          const std::string& name, const Window& window, Job& job)
{
    Picture picture = viewPlane(volume, plane, grid, policies, window, job);
    furnish(picture, volume, plane.directions, grid.edge);
    return {std::move(picture), name};
}

/// Both planes have the same directions.
void framePart(Picture& picture, const Plane& plane, const PixelGrid& grid, const Plane& part,
               double square)
{
    const auto& [right, down] = plane.directions;
    const Point way{part.centre.x - plane.centre.x, part.centre.y - plane.centre.y,
                    part.centre.z - plane.centre.z};
    const auto pixel = [&](const Point& direction, double shift) {
        const double length = way.x * direction.x + way.y * direction.y + way.z * direction.z;
        return static_cast<int>(std::lround((length + shift) / grid.edge + kDetailTile / 2.0));
    };
    picture.frame(pixel(right, -square / 2), pixel(down, -square / 2), pixel(right, square / 2),
                  pixel(down, square / 2), kAccent);
}

void makeOblique(const Volume& volume, const Window& window, const OutputFolder& folder)
{
    Job job("oblique.png", 4);
    const core::VoxelSize spacing = volume.spacing();
    const double finest = std::min({spacing.x, spacing.y, spacing.z});
    const PixelGrid whole{kDetailTile, kDetailTile, 1.1 * volume.longestSide() / kDetailTile};
    const PixelGrid part{kDetailTile, kDetailTile, finest / kPixelsToVoxel};
    const Plane plane = obliquePlane(volume);
    const Plane detail = mostTelling(volume, plane, kDetailTile * part.edge);
    std::vector<Tile> tiles;
    const auto add = [&](core::Interpolator& interpolator, const std::string& name) {
        const Policies policies{&interpolator, &InterpolationBorderType::REPLICATION};
        tiles.push_back(view(volume, detail, part, policies, name, window, job));
    };
    const Policies darkOutside{&InterpolationType::CUBIC, &InterpolationBorderType::CONSTANT,
                               window.low};
    tiles.push_back(view(volume, plane, whole, darkOutside, "the plane", window, job));
    framePart(tiles[0].picture, plane, whole, detail, kDetailTile * part.edge);
    add(InterpolationType::NEAREST_NEIGHBOR, "nearest neighbour");
    add(InterpolationType::LINEAR, "trilinear");
    add(InterpolationType::CUBIC, "tricubic");
    const std::string times = shortNumber(kPixelsToVoxel) + " pixels to a voxel's edge";
    folder.write(job,
                 composeSheet("One oblique plane, three kernels: " + volume.name(),
                              "the framed part magnified, " + times, tiles),
                 "an oblique plane by nearest neighbour, trilinear and tricubic, " + times);
}

bool isInside(const Volume& volume, const Point& at)
{
    const Point extent = volume.extent();
    const core::VoxelSize spacing = volume.spacing();
    const auto within = [](double value, double length, double edge) {
        return value >= -edge / 2 && value < length - edge / 2;
    };
    return within(at.x, extent.x, spacing.x) && within(at.y, extent.y, spacing.y) &&
           within(at.z, extent.z, spacing.z);
}

/// Draws where the plane leaves the volume.
void outline(Picture& picture, const Volume& volume, const Plane& plane, const PixelGrid& grid)
{
    const auto inside = [&](unsigned int column, unsigned int row) {
        return isInside(volume, plane.at(grid.right(column), grid.down(row)));
    };
    for (unsigned int row = 0; row + 1 < grid.height; ++row)
        for (unsigned int column = 0; column + 1 < grid.width; ++column) {
            const bool here = inside(column, row);
            if (here != inside(column + 1, row) || here != inside(column, row + 1))
                picture.blend(static_cast<int>(column), static_cast<int>(row), kAccent);
        }
}

/// A dark grey, unlike the air around a head.
double greyBorder(const Volume& volume, const Window& window)
{
    return volume.storable(window.intensityOf(0.3));
}

Tile bordered(const Volume& volume, core::Border& border, const std::string& name,
              const Window& window, Job& job)
{
    const Plane plane = obliquePlane(volume);
    const PixelGrid grid{600, 500, 1.7 * volume.longestSide() / 600};
    const Policies policies{&InterpolationType::LINEAR, &border, greyBorder(volume, window)};
    Picture picture = viewPlane(volume, plane, grid, policies, window, job);
    outline(picture, volume, plane, grid);
    furnish(picture, volume, plane.directions, grid.edge);
    return {std::move(picture), name};
}

void makeBorders(const Volume& volume, const Window& window, const OutputFolder& folder)
{
    Job job("borders.png", 2);
    const std::string outside = shortNumber(greyBorder(volume, window));
    std::vector<Tile> tiles;
    tiles.push_back(bordered(volume, InterpolationBorderType::CONSTANT,
                             "constant: outside reads " + outside, window, job));
    tiles.push_back(bordered(volume, InterpolationBorderType::REPLICATION,
                             "replication: outside reads the nearest edge voxel", window, job));
    folder.write(job,
                 composeSheet("The same plane beyond the volume: " + volume.name(),
                              "trilinear; the line is where the plane leaves the volume", tiles),
                 "the same plane reaching outside, constant and replicated border");
}

void makeMontageSheet(const Volume& volume, const Window& window, const OutputFolder& folder)
{
    Job job("montage.png", kMontageViews);
    std::vector<Tile> tiles;
    tiles.push_back({makeMontage(volume, window, job), "height above the lowest slice"});
    folder.write(
        job,
        composeSheet("Axial slices, from the feet up: " + volume.name(), convention(volume), tiles),
        "axial slices, cropped to the head and drawn side by side");
}

}  // namespace

void makeBrainPictures(const Volume& volume, const OutputFolder& folder)
{
    const Window window = windowOf(volume);
    makePlanes(volume, window, folder);
    makeOblique(volume, window, folder);
    makeBorders(volume, window, folder);
    makeWarp(volume, window, folder);
    makeMontageSheet(volume, window, folder);
    makeFlight(volume, window, folder);
}

}  // namespace reslice
