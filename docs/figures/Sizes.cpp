// Where the voxels of a resized image read the source, with each convention and with none: every
// position and extent is that of the library's own grids. Usage: draw_sizes FILE

#include <cmath>

#include "Svg.h"
#include "volux/resample.h"

namespace figures {

namespace {

using namespace volux::core;
using namespace volux::resample;

constexpr unsigned int kSource = 4;  // voxels
constexpr double kRow = 46;
constexpr double kBox = 22;

Point onPage(double position, double y)
{
    return {332 + 92 * position, y};
}

/// Voxels as wide as their distance, each around the position that it reads.
void drawVoxels(Svg& svg, double y, const Grid& grid, const char* fill, const char* stroke)
{
    const double width = grid.map.rows[0][0];
    for (unsigned int i = 0; i < grid.width; ++i) {
        const double at = grid.map(i, 0, 0).x;
        const Point corner = onPage(at - width / 2, y);
        svg.box({corner.x, corner.y, onPage(at + width / 2, y).x - corner.x, kBox}, fill, stroke);
        svg.dot(onPage(at, y + kBox / 2), 3, stroke, stroke);
        const Point label = onPage(at, y + kBox + 13);
        svg.box({label.x - 5, label.y - 10, 10, 12}, "#ffffff", "none");  // no guide through it
        svg.text(label, "middle", number(at), stroke, " font-size=\"11\"");
    }
}

void drawRow(Svg& svg, double y, const std::string& name, const Grid& grid, const char* stroke)
{
    svg.text({20, y + 15}, "start", name);
    drawVoxels(svg, y, grid, "none", stroke);
}

void drawGuide(Svg& svg, double position, double y)
{
    svg.line(onPage(position, y), onPage(position, y + 3 * kRow + kBox + 8), kGrey,
             " stroke-dasharray=\"3 4\"");
}

/// `gridOf` gives the grid that leads from the source to so many voxels.
template <class GridOf>
void drawPanel(Svg& svg, double y, const std::string& name, const std::string& kept,
               const char* stroke, GridOf gridOf)
{
    svg.text({20, y}, "start", name, kInk, " font-weight=\"bold\"");
    svg.text({120, y}, "start", kept);
    const double top = y + 16;
    svg.text({20, top + 15}, "start", "the source");
    drawVoxels(svg, top, gridOf(kSource), "#eeeeee", kInk);
    drawRow(svg, top + kRow, "to 4 voxels", gridOf(kSource), stroke);
    drawRow(svg, top + 2 * kRow, "to 8 voxels", gridOf(2 * kSource), stroke);
    drawRow(svg, top + 3 * kRow, "to 2 voxels", gridOf(kSource / 2), stroke);
}

Grid aligned(unsigned int width, Align align)
{
    return gridOfSize(ImageSize(kSource, 1, 1, 1), VoxelSize(1, 1, 1), width, 1, 1, align);
}

/// The ratio of EDGES with the origin of CENTRES.
Grid mixed(unsigned int width)
{
    Grid grid = aligned(width, Align::EDGES);
    grid.map.rows[0][3] = 0;
    return grid;
}

std::string shiftOf(unsigned int width)
{
    const double wrong = mixed(width).map(0, 0, 0).x;
    return number(std::abs(wrong - aligned(width, Align::EDGES).map(0, 0, 0).x));
}

Svg sizes()
{
    Svg svg(820, 700);
    const double edges = 30, centres = 256, neither = 482;
    const double last = kSource - 1;
    for (const double guide : {-0.5, last + 0.5}) {
        drawGuide(svg, guide, edges + 12);
        drawGuide(svg, guide, neither + 12);
    }
    for (const double guide : {0.0, last})
        drawGuide(svg, guide, centres + 12);
    drawPanel(svg, edges, "EDGES", "keeps the field of view: both dashed lines", kBlue,
              [](unsigned int width) { return aligned(width, Align::EDGES); });
    drawPanel(svg, centres, "CENTRES", "keeps the first and the last centre", kGreen,
              [](unsigned int width) { return aligned(width, Align::CENTRES); });
    drawPanel(svg, neither, "Neither",
              "the common mistake, i * s with the s of EDGES: everything shifts, by " +
                  shiftOf(2 * kSource) + " voxels (to 8), by " + shiftOf(kSource / 2) + " (to 2)",
              kOrange, mixed);
    return svg;
}

}  // namespace

}  // namespace figures

int main(int count, char** arguments)
{
    if (count != 2)
        return std::fputs("Usage: draw_sizes FILE\n", stderr), 2;
    if (figures::sizes().save(arguments[1]))
        return 0;
    std::fprintf(stderr, "%s: cannot be written\n", arguments[1]);
    return 1;
}
