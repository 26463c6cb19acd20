// A picture read through a displacement field: the arrows from the output to the source, and the
// lines of the output where the source is read. Everything is what the library answers.
// Usage: draw_warps FILE

#include <algorithm>
#include <map>
#include <stdexcept>

#include "Svg.h"
#include "volux/core.h"
#include "volux/resample.h"

namespace figures {

namespace {

using namespace volux::core;
using namespace volux::resample;

constexpr int kWidth = 28;  // of the source, in voxels and units of the world
constexpr int kHeight = 22;
constexpr double kUnit = 12;       // on the page
constexpr unsigned int kFine = 2;  // pixels of the result in a unit
constexpr double kApart = 2;       // nodes of the field, and lines

/// Squares and a bar, so that it shows what moves.
void fillPicture(VxImage<unsigned char>& image)
{
    image.initialize(kWidth, kHeight, 1, 1);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const bool isBar = x >= 12 && x < 16 && y >= 4 && y < 18;
            const int square = (x / 4 + y / 4) % 2 == 0 ? 240 : 215;
            image(x, y, 0, 0) = static_cast<unsigned char>(isBar ? 110 : square);
        }
    }
}

/// A twist about the middle, which dies out towards the rim.
Geometry fillField(VxImage<float>& field)
{
    const unsigned int nodesX = kWidth / 2 + 1, nodesY = kHeight / 2 + 1;
    field.initialize(nodesX, nodesY, 1, 3);
    const Geometry place = {nodesX, nodesY, 1, VoxelSize(kApart, kApart, 1), {-0.5, -0.5, 0}};
    const AffineMap toWorld = place.toWorld();
    for (unsigned int j = 0; j < nodesY; ++j) {
        for (unsigned int i = 0; i < nodesX; ++i) {
            const Position p = toWorld(i, j, 0);
            const double x = p.x - (kWidth - 1) / 2.0, y = p.y - (kHeight - 1) / 2.0;
            const double near = std::max(1 - (x * x + y * y) / 110, 0.0);
            const int column = static_cast<int>(i), row = static_cast<int>(j);
            field(column, row, 0, 0) = static_cast<float>(-0.8 * y * near * near);
            field(column, row, 0, 1) = static_cast<float>(0.8 * x * near * near);
        }
    }
    return place;
}

std::string grey(int level)
{
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", level, level, level);
    return text;
}

/// Pixels of a size on the page, of which there are `fine` in a unit.
void drawPixels(Svg& svg, Point corner, const VxImage<unsigned char>& pixels, unsigned int fine)
{
    const std::string size = number(kUnit / fine);
    std::map<int, std::string> pixelsByLevel;
    for (unsigned int j = 0; j < pixels.getHeight(); ++j) {
        for (unsigned int i = 0; i < pixels.getWidth(); ++i) {
            const int level = pixels(static_cast<int>(i), static_cast<int>(j), 0, 0) / 4 * 4;
            pixelsByLevel[level] += "M" + number(corner.x + i * kUnit / fine) + " " +
                                    number(corner.y + j * kUnit / fine) + "h" + size + "v" + size +
                                    "h-" + size + "z";
        }
    }
    for (const auto& [level, places] : pixelsByLevel)
        svg.path(places, grey(level), "none", " shape-rendering=\"crispEdges\"");
}

/// A place in the world; the first voxel's centre is half a unit from the corner.
Point onPage(Point corner, const Position& p)
{
    return {corner.x + (p.x + 0.5) * kUnit, corner.y + (p.y + 0.5) * kUnit};
}

/// Lines of the output, each point of which `place` puts into the picture.
template <class Place>
void drawLines(Svg& svg, Point corner, const Place& place)
{
    constexpr int kSteps = 2;  // in a unit
    const auto draw = [&](int units, const auto& along) {
        std::string line;
        for (int n = 0; n <= units * kSteps; ++n) {
            const Point at = onPage(corner, place(along(n * 1.0 / kSteps - 0.5)));
            line += (n == 0 ? "M" : "L") + number(at.x) + " " + number(at.y);
        }
        svg.path(line, "none", kBlue);
    };
    for (double x = -0.5; x < kWidth; x += kApart)
        draw(kHeight, [x](double y) { return Position{x, y, 0}; });
    for (double y = -0.5; y < kHeight; y += kApart)
        draw(kWidth, [y](double x) { return Position{x, y, 0}; });
}

void drawArrows(Svg& svg, Point corner, const Warp& warp)
{
    for (double y = 1.5; y < kHeight; y += kApart) {
        for (double x = 1.5; x < kWidth; x += kApart) {
            const Position p = {x, y, 0}, q = warp(p);
            const double across = q.x - x, down = q.y - y;
            if (across * across + down * down > 0.5)
                svg.line(onPage(corner, p), onPage(corner, q), kInk, " marker-end=\"url(#tip)\"");
        }
    }
}

Svg twisted()
{
    VxImage<unsigned char> picture, result;
    VxImage<float> field;
    fillPicture(picture);
    const Geometry there = fillField(field);
    const Geometry source = {kWidth, kHeight, 1};
    constexpr double kPixel = 1.0 / kFine;
    const Geometry output = {kWidth * kFine,
                             kHeight * kFine,
                             1,
                             VoxelSize(kPixel, kPixel, 1),
                             {kPixel / 2 - 0.5, kPixel / 2 - 0.5, 0}};
    const auto [grid, warp] = warpBetween(output, there, source, field);
    if (resample(picture, grid, warp, &result) != SUCCESS)
        throw std::runtime_error("the picture was not warped");
    Svg svg(816, 372);
    const Point left = {40, 44}, right = {440, 44};
    svg.text({left.x, 26}, "start", "the output, and its vectors", kInk, " font-weight=\"bold\"");
    drawPixels(svg, left, result, kFine);
    drawLines(svg, left, [](const Position& p) { return p; });
    drawArrows(svg, left, warp);
    svg.text({right.x, 26}, "start", "the source, and where the output reads it", kInk,
             " font-weight=\"bold\"");
    drawPixels(svg, right, picture, 1);
    drawLines(svg, right, warp);
    svg.text({left.x, 340}, "start",
             "An arrow begins at a place of the output and ends at the place of the source that is "
             "read for it.");
    svg.text({left.x, 360}, "start",
             "The vectors turn clockwise, so what is in the picture turns the other way.");
    return svg;
}

}  // namespace

}  // namespace figures

int main(int count, char** arguments)
{
    if (count != 2)
        return std::fputs("Usage: draw_warps FILE\n", stderr), 2;
    if (figures::twisted().save(arguments[1]))
        return 0;
    std::fprintf(stderr, "%s: cannot be written\n", arguments[1]);
    return 1;
}
