// A small map of three labels, enlarged and turned by each interpolator. Everything is what the
// library answers. Usage: draw_labels FILE

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <utility>

#include "Svg.h"
#include "volux/resample.h"

namespace figures {

namespace {

using namespace volux::core;
using namespace volux::resample;

constexpr int kSide = 12;
constexpr unsigned int kPixels = 96;  // of the result, along a side
constexpr double kPixel = 2.5;        // on the page

/// Nothing, an organ, and a vessel inside it: the labels are 0, 2 and 8.
void fillMap(VxImage<unsigned char>& image)
{
    image.initialize(kSide, kSide, 1, 1);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const int across = 2 * x - kSide + 1, down = 2 * y - kSide + 1;
            const bool isOrgan = across * across + down * down < 90;
            const bool isVessel = std::abs(across - down + 3) < 4 && isOrgan;
            image(x, y, 0, 0) = isVessel ? 8 : isOrgan ? 2 : 0;
        }
    }
}

/// Turned by the angle of a triangle whose sides are 7, 24 and 25.
Grid turnedGrid()
{
    constexpr double kStep = static_cast<double>(kSide) / kPixels;
    constexpr double kAlong = kStep * 24 / 25, kBeside = kStep * 7 / 25;
    const double middle = (kPixels - 1) / 2.0;
    Grid grid;
    grid.width = grid.height = kPixels;
    grid.depth = 1;
    grid.map = {{{kAlong, kBeside, 0, (kSide - 1) / 2.0 - (kAlong + kBeside) * middle},
                 {-kBeside, kAlong, 0, (kSide - 1) / 2.0 + (kBeside - kAlong) * middle},
                 {0, 0, 1, 0}}};
    return grid;
}

/// The labels of the source, and any other number.
const char* colourOf(int label)
{
    return label == 0 ? "#e8e8e8" : label == 2 ? kBlue : label == 8 ? kGreen : kOrange;
}

/// Runs of equal pixels, row by row.
void drawPixels(Svg& svg, Point corner, const VxImage<unsigned char>& pixels, double size)
{
    const auto side = static_cast<int>(pixels.getWidth());
    std::map<std::string, std::string> places;
    for (int j = 0; j < side; ++j) {
        for (int i = 0, end = 0; i < side; i = end) {
            const std::string colour = colourOf(pixels(i, j, 0, 0));
            while (end < side && colourOf(pixels(end, j, 0, 0)) == colour)
                ++end;
            const std::string run = number((end - i) * size);
            places[colour] += "M" + number(corner.x + i * size) + " " +
                              number(corner.y + j * size) + "h" + run + "v" + number(size) + "h-" +
                              run + "z";
        }
    }
    for (const auto& [colour, all] : places)
        svg.path(all, colour, "none", " shape-rendering=\"crispEdges\"");
}

void drawSource(Svg& svg, Point corner)
{
    VxImage<unsigned char> map;
    fillMap(map);
    svg.text({corner.x, corner.y - 10}, "start", "the map: 0, 2 and 8", kInk,
             " font-weight=\"bold\"");
    drawPixels(svg, corner, map, kPixel * kPixels / kSide);
}

void drawResult(Svg& svg, Point corner, const std::string& name, const Options& options)
{
    VxImage<unsigned char> map, result;
    fillMap(map);
    if (resample(map, turnedGrid(), &result, options) != SUCCESS)
        throw std::runtime_error("the map was not resampled");
    svg.text({corner.x, corner.y - 10}, "start", name, kInk, " font-weight=\"bold\"");
    drawPixels(svg, corner, result, kPixel);
}

Svg labels()
{
    Svg svg(560, 610);
    drawSource(svg, {20, 40});
    drawResult(svg, {300, 40}, "Linear: numbers that name nothing", Linear());
    drawResult(svg, {20, 320}, "NearestNeighbor", NearestNeighbor());
    drawResult(svg, {300, 320}, "Labels", volux::resample::Labels());
    int n = 0;
    for (const auto& [label, name] : {std::pair(0, "0, nothing"), std::pair(2, "2"),
                                      std::pair(8, "8"), std::pair(5, "1, 3 to 7")}) {
        svg.box({20.0 + 130 * n, 582, 14, 14}, colourOf(label), "none");
        svg.text({42.0 + 130 * n, 594}, "start", name);
        ++n;
    }
    return svg;
}

}  // namespace

}  // namespace figures

int main(int count, char** arguments)
{
    if (count != 2)
        return std::fputs("Usage: draw_labels FILE\n", stderr), 2;
    if (figures::labels().save(arguments[1]))
        return 0;
    std::fprintf(stderr, "%s: cannot be written\n", arguments[1]);
    return 1;
}
