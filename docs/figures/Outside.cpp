// A picture on a larger, turned grid, with an edge that extends and with one that ends, and what is
// read along a row of voxels. Everything is what the library answers. Usage: draw_outside FILE

#include <map>
#include <stdexcept>

#include "Svg.h"
#include "volux/resample.h"

namespace figures {

namespace {

using namespace volux::core;
using namespace volux::resample;

constexpr int kWidth = 16;
constexpr int kHeight = 12;
constexpr unsigned int kColumns = 56;  // of the grid
constexpr unsigned int kRows = 40;
constexpr double kPixel = 6;  // on the page

/// Rings around the middle, and a rim that differs from voxel to voxel.
void fillPicture(VxImage<unsigned char>& image)
{
    image.initialize(kWidth, kHeight, 1, 1);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const int across = 2 * x - kWidth + 1, down = 2 * y - kHeight + 1;
            const int square = across * across + down * down;
            const int rim = 60 + (x * 5 + y * 3) % 4 * 55;
            image(x, y, 0, 0) = static_cast<unsigned char>(square < 20   ? 250
                                                           : square < 60 ? 110
                                                                         : rim);
        }
    }
}

/// Half a voxel apart, turned by the angle of a triangle whose sides are 7, 24 and 25.
Grid turnedGrid()
{
    constexpr double kAlong = 0.5 * 24 / 25, kBeside = 0.5 * 7 / 25;
    const double i = (kColumns - 1) / 2.0, j = (kRows - 1) / 2.0;  // the middle
    Grid grid;
    grid.width = kColumns;
    grid.height = kRows;
    grid.depth = 1;
    grid.map = {{{kAlong, kBeside, 0, (kWidth - 1) / 2.0 - kAlong * i - kBeside * j},
                 {-kBeside, kAlong, 0, (kHeight - 1) / 2.0 + kBeside * i - kAlong * j},
                 {0, 0, 1, 0}}};
    return grid;
}

std::string grey(int level)
{
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", level, level, level);
    return text;
}

void drawPixels(Svg& svg, Point corner, const VxImage<unsigned char>& pixels)
{
    std::map<int, std::string> pixelsByLevel;
    for (unsigned int j = 0; j < kRows; ++j) {
        for (unsigned int i = 0; i < kColumns; ++i) {
            const int level = pixels(static_cast<int>(i), static_cast<int>(j), 0, 0) / 4 * 4;
            pixelsByLevel[level] += "M" + number(corner.x + i * kPixel) + " " +
                                    number(corner.y + j * kPixel) + "h6v6h-6z";
        }
    }
    for (const auto& [level, places] : pixelsByLevel)
        svg.path(places, grey(level), "none", " shape-rendering=\"crispEdges\"");
}

/// The field of view, whose steps on the grid are those of the map turned back and doubled.
void drawView(Svg& svg, Point corner)
{
    constexpr double kAlong = 2 * 24.0 / 25, kBeside = 2 * 7.0 / 25;
    std::string outline;
    for (const Point& end : {Point{-1, -1}, Point{1, -1}, Point{1, 1}, Point{-1, 1}}) {
        const double x = end.x * kWidth / 2, y = end.y * kHeight / 2;
        outline += (outline.empty() ? "M" : "L") +
                   number(corner.x + kPixel * (kColumns / 2.0 + kAlong * x - kBeside * y)) + " " +
                   number(corner.y + kPixel * (kRows / 2.0 + kBeside * x + kAlong * y));
    }
    svg.path(outline + "z", "none", kOrange, " stroke-width=\"2\"");
}

void drawPanel(Svg& svg, Point corner, const std::string& name, const Options& options)
{
    VxImage<unsigned char> picture, result;
    fillPicture(picture);
    if (resample(picture, turnedGrid(), &result, options) != SUCCESS)
        throw std::runtime_error("the picture was not resampled");
    svg.text({corner.x, corner.y - 10}, "start", name, kInk, " font-weight=\"bold\"");
    drawPixels(svg, corner, result);
    drawView(svg, corner);
}

constexpr unsigned char kRow[4] = {140, 60, 200, 110};
constexpr double kFirst = -3;  // positions of the profile
constexpr double kLast = 6;

Point onPage(double position, double value)
{
    return {80 + (position - kFirst) * 70, 500 - value * 0.45};
}

/// What a grid reads of four voxels at positions 1/64 apart.
std::vector<Point> profile(const Options& options)
{
    VxImage<unsigned char> row;
    row.initialize(4, 1, 1, 1);
    row.setImageData(kRow, sizeof kRow);
    Grid grid;
    grid.width = static_cast<unsigned int>((kLast - kFirst) * 64 + 1);
    grid.height = grid.depth = 1;
    grid.map = {{{1.0 / 64, 0, 0, kFirst}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
    VxImage<unsigned char> result;
    if (resample(row, grid, &result, options) != SUCCESS)
        throw std::runtime_error("the row was not resampled");
    std::vector<Point> points;
    for (unsigned int i = 0; i < grid.width; ++i)
        points.push_back(onPage(grid.map(i, 0, 0).x, result(static_cast<int>(i), 0, 0, 0)));
    return points;
}

void drawProfile(Svg& svg, const Options& extending, const Options& ending)
{
    svg.line(onPage(kFirst, 0), onPage(kLast, 0), kFaint);
    for (const double edge : {-0.5, 3.5}) {
        svg.line(onPage(edge, 0), onPage(edge, 230), kOrange, " stroke-dasharray=\"3 4\"");
        svg.text({onPage(edge, 0).x, 518}, "middle", edge < 0 ? "-0.5" : "n - 0.5", kOrange);
    }
    svg.curve(profile(extending), kFaint);
    svg.curve(profile(ending), kBlue);
    for (int x = 0; x < 4; ++x) {
        svg.dot(onPage(x, kRow[x]), 4, kInk, kInk);
        svg.text({onPage(x, 0).x, 518}, "middle", std::to_string(x));
    }
    const double first = onPage(kLast, 0).x;
    svg.text({first + 8, onPage(0, kRow[3]).y + 5}, "start", "edgeExtends", kGrey);
    svg.text({first + 8, onPage(0, 0).y + 5}, "start", "outside", kBlue);
}

Svg ends()
{
    Options extending;
    extending.edgeExtends = true;
    const Options ending;
    Svg svg(816, 536);
    drawPanel(svg, {60, 40}, "edgeExtends: the rim is smeared", extending);
    drawPanel(svg, {424, 40}, "the default: outside is 0", ending);
    svg.box({60, 296, 14, 10}, "none", kOrange, " stroke-width=\"2\"");
    svg.text({82, 306}, "start",
             "the field of view of 16 x 12 voxels, on a grid of 56 x 40 that is turned");
    svg.text({60, 360}, "start", "read along four voxels, n = 4", kInk, " font-weight=\"bold\"");
    drawProfile(svg, extending, ending);
    return svg;
}

}  // namespace

}  // namespace figures

int main(int count, char** arguments)
{
    if (count != 2)
        return std::fputs("Usage: draw_outside FILE\n", stderr), 2;
    if (figures::ends().save(arguments[1]))
        return 0;
    std::fprintf(stderr, "%s: cannot be written\n", arguments[1]);
    return 1;
}
