// Where a resized image lies in the world, and where it appears to lie with the origin of its
// source: every position and value is the library's own. Usage: draw_origins FILE

#include <cmath>

#include "Svg.h"
#include "volux/core.h"
#include "volux/resample.h"

namespace figures {

namespace {

using namespace volux::core;
using namespace volux::resample;

constexpr double kRow = 50;
constexpr double kBox = 24;
constexpr unsigned int kCounts[] = {8, 2};  // voxels of the results

Point onPage(double world, double y)
{
    return {360 + 50 * (world - 9), y};
}

/// An image in the world.
struct Placed {
    VxImage<double> image;
    Geometry geometry;
};

/// Four voxels of 2 mm, one of them dark.
void makeSource(Placed& source)
{
    source.geometry.width = 4;
    source.geometry.height = source.geometry.depth = 1;
    source.geometry.spacing.x = 2;
    source.geometry.origin.x = 10;
    source.image.initialize(4, 1, 1, 1);
    source.image.fill(230);
    source.image(2, 0, 0, 0) = 110;
}

bool resized(const Placed& source, unsigned int width, Placed& result)
{
    const PlacedGrid placed = gridOfSize(source.geometry, width, 1, 1, Align::EDGES);
    result.geometry = placed.geometry;
    return resample(source.image, placed.grid, &result.image) == SUCCESS;
}

std::string grey(double value)
{
    char text[8];
    const auto level = static_cast<unsigned int>(std::lround(value));
    std::snprintf(text, sizeof text, "#%02x%02x%02x", level, level, level);
    return text;
}

void drawImage(Svg& svg, double y, const std::string& name, const Placed& placed,
               const char* stroke)
{
    svg.text({20, y + 16}, "start", name);
    const AffineMap toWorld = placed.geometry.toWorld();
    for (unsigned int i = 0; i < placed.geometry.width; ++i) {
        const double centre = toWorld(i, 0, 0).x;
        const Point from = onPage(toWorld({i - 0.5, 0, 0}).x, y);
        const Point to = onPage(toWorld({i + 0.5, 0, 0}).x, y);
        svg.box({from.x, y, to.x - from.x, kBox}, grey(placed.image(static_cast<int>(i), 0, 0, 0)),
                stroke);
        svg.dot(onPage(centre, y + kBox / 2), 3, stroke, stroke);
        const Point label = onPage(centre, y + kBox + 13);
        svg.box({label.x - 13, label.y - 10, 26, 12}, "#ffffff", "none");  // no guide through it
        svg.text(label, "middle", number(centre), stroke, " font-size=\"11\"");
    }
}

void drawGuides(Svg& svg, const Placed& source, double top, double bottom)
{
    const AffineMap toWorld = source.geometry.toWorld();
    for (const double voxel : {-0.5, 2.0, source.geometry.width - 0.5}) {
        const double world = toWorld({voxel, 0, 0}).x;
        svg.line(onPage(world, top), onPage(world, bottom), kGrey, " stroke-dasharray=\"3 4\"");
    }
}

/// The source and its results, each at the origin that `originOf` gives.
template <class OriginOf>
bool drawPanel(Svg& svg, double y, const std::string& name, const std::string& words,
               const char* stroke, OriginOf originOf)
{
    Placed source;
    makeSource(source);
    svg.text({20, y}, "start", name, stroke, " font-weight=\"bold\"");
    svg.text({190, y}, "start", words);
    const double top = y + 16;
    drawGuides(svg, source, top - 6, top + 2 * kRow + kBox + 10);
    drawImage(svg, top, "the source, voxels of 2 mm", source, kInk);
    double row = top;
    for (const unsigned int count : kCounts) {
        Placed result;
        if (!resized(source, count, result))
            return false;
        const double right = result.geometry.origin.x;
        result.geometry.origin = originOf(source.geometry, result.geometry);
        const double shift = result.geometry.origin.x - right;
        row += kRow;
        drawImage(svg, row,
                  "voxels of " + number(result.geometry.spacing.x) + " mm, origin " +
                      number(result.geometry.origin.x) +
                      (shift == 0.0 ? "" : ": off by " + number(shift) + " mm"),
                  result, stroke);
    }
    return true;
}

bool drawOrigins(Svg& svg)
{
    return drawPanel(svg, 30, "The result's origin", "the edges stay, so the first centre moves",
                     kBlue,
                     [](const Geometry&, const Geometry& result) { return result.origin; }) &&
           drawPanel(svg, 216, "The source's origin",
                     "the classic error: everything shifts, by half the difference of the spacings",
                     kOrange,
                     [](const Geometry& source, const Geometry&) { return source.origin; });
}

}  // namespace

}  // namespace figures

int main(int count, char** arguments)
{
    if (count != 2)
        return std::fputs("Usage: draw_origins FILE\n", stderr), 2;
    figures::Svg svg(820, 392);
    if (figures::drawOrigins(svg) && svg.save(arguments[1]))
        return 0;
    std::fprintf(stderr, "%s: cannot be written\n", arguments[1]);
    return 1;
}
