// A zone plate made smaller by a factor of 4: as it should be, sampled, as means, and blurred
// first; and how much of what a smaller picture cannot hold each of them keeps. Usage:
// draw_reducing FILE

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>

#include "Svg.h"
#include "volux/resample.h"

namespace figures {

namespace {

using namespace volux::core;
using namespace volux::resample;

constexpr int kFactor = 4;
constexpr int kSmall = 48;  // voxels along both axes
constexpr int kLarge = kFactor * kSmall;
constexpr double kPixel = 4;  // on the page

double fromMiddle(int n, int extent)
{
    return n - (extent - 1) / 2.0;
}

/// The phase grows with the square of the distance, so the frequency along an axis grows from 0 in
/// the middle to 1/2 at the edge.
double plateAt(double x, double y)
{
    return std::cos(3.14159265358979323846 * (x * x + y * y) / kLarge);
}

using Picture = VxImage<float>;

void fillPlate(Picture& plate)
{
    plate.initialize(kLarge, kLarge, 1, 1);
    for (int y = 0; y < kLarge; ++y)
        for (int x = 0; x < kLarge; ++x)
            plate(x, y, 0, 0) =
                static_cast<float>(plateAt(fromMiddle(x, kLarge), fromMiddle(y, kLarge)));
}

/// Whether the frequency at a voxel of the result is more than it can hold along an axis.
bool isTooFine(int x, int y)
{
    const double furthest =
        std::max(std::abs(fromMiddle(x, kSmall)), std::abs(fromMiddle(y, kSmall)));
    return furthest * kFactor / kLarge > 0.5 / kFactor;
}

void makeSmaller(const Picture& plate, Picture& result, const Options& options)
{
    if (resize(plate, kSmall, kSmall, 1, Align::EDGES, &result, options) != SUCCESS)
        throw std::runtime_error("the zone plate was not made smaller");
}

/// The plate itself where the result can hold it, and its mean elsewhere.
void fillIdeal(Picture& ideal)
{
    ideal.initialize(kSmall, kSmall, 1, 1);
    for (int y = 0; y < kSmall; ++y)
        for (int x = 0; x < kSmall; ++x)
            ideal(x, y, 0, 0) = isTooFine(x, y)
                                    ? 0.0F
                                    : static_cast<float>(plateAt(fromMiddle(x, kSmall) * kFactor,
                                                                 fromMiddle(y, kSmall) * kFactor));
}

/// Weighs voxels along x by a Gaussian that ends after four standard deviations, mirrored at the
/// edges, and exchanges the axes.
void blurAndTurn(const Picture& from, Picture& to, double deviation)
{
    const int radius = static_cast<int>(4 * deviation + 0.5);
    to.initialize(kLarge, kLarge, 1, 1);
    for (int y = 0; y < kLarge; ++y) {
        for (int x = 0; x < kLarge; ++x) {
            double sum = 0, weights = 0;
            for (int n = -radius; n <= radius; ++n) {
                const double weight = std::exp(-0.5 * n * n / (deviation * deviation));
                const int at = x + n < 0         ? -1 - x - n
                               : x + n >= kLarge ? 2 * kLarge - 1 - x - n
                                                 : x + n;
                sum += weight * static_cast<double>(from(at, y, 0, 0));
                weights += weight;
            }
            to(y, x, 0, 0) = static_cast<float>(sum / weights);
        }
    }
}

/// What is kept of what the result cannot hold, in percent of what the plate has there.
std::string kept(const Picture& result)
{
    double squares = 0, all = 0;
    for (int y = 0; y < kSmall; ++y) {
        for (int x = 0; x < kSmall; ++x) {
            if (isTooFine(x, y)) {
                const auto value = static_cast<double>(result(x, y, 0, 0));
                squares += value * value;
                all += 0.5;  // the mean square of a cosine
            }
        }
    }
    char text[16];
    std::snprintf(text, sizeof text, "%.1f %%", 100 * squares / all);
    return text;
}

std::string grey(int level)
{
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", level, level, level);
    return text;
}

/// Lines as wide as a pixel, those of one grey together.
void drawPixels(Svg& svg, Point corner, const Picture& picture)
{
    std::map<int, std::string> linesByLevel;
    const auto levelAt = [&](int x, int y) {
        return static_cast<int>(std::lround(7.5 + 7.0 * static_cast<double>(picture(x, y, 0, 0))));
    };
    for (int y = 0; y < kSmall; ++y) {
        for (int x = 0, end = 0; x < kSmall; x = end) {
            const int level = levelAt(x, y);
            while (end < kSmall && levelAt(end, y) == level)
                ++end;
            linesByLevel[level] += "M" + number(corner.x + x * kPixel) + " " +
                                   number(corner.y + (y + 0.5) * kPixel) + "h" +
                                   number((end - x) * kPixel);
        }
    }
    for (const auto& [level, lines] : linesByLevel)
        svg.path(lines, "none", grey(level * 17),
                 " stroke-width=\"4\" shape-rendering=\"crispEdges\"");
}

void drawPanel(Svg& svg, Point corner, const std::string& name, const std::string& how,
               const Picture& picture)
{
    svg.text({corner.x, corner.y - 28}, "start", name, kInk, " font-weight=\"bold\"");
    svg.text({corner.x, corner.y - 10}, "start", how, kGrey);
    drawPixels(svg, corner, picture);
    svg.text({corner.x, corner.y + kSmall * kPixel + 20}, "start", "kept: " + kept(picture));
}

/// What the result can hold, in the middle.
void drawLimit(Svg& svg, Point corner)
{
    const double half = kSmall / (2.0 * kFactor) * kPixel, middle = kSmall / 2.0 * kPixel;
    svg.box({corner.x + middle - half, corner.y + middle - half, 2 * half, 2 * half}, "none",
            kOrange, " stroke-width=\"1.5\"");
}

Svg reducing()
{
    Picture plate, turned, blurred, ideal, sampled, means, soft;
    fillPlate(plate);
    blurAndTurn(plate, turned, kFactor / 2.0);
    blurAndTurn(turned, blurred, kFactor / 2.0);
    Options antialiased;
    antialiased.subsamples = kAntialiased;
    fillIdeal(ideal);
    makeSmaller(plate, sampled, NearestNeighbor());
    makeSmaller(plate, means, antialiased);
    makeSmaller(blurred, soft, Linear());
    Svg svg(864, 296);
    const auto panel = [&](int n) { return Point{24 + n * 208.0, 56}; };
    drawPanel(svg, panel(0), "what 48 x 48 can hold", "of a zone plate of 192 x 192", ideal);
    drawPanel(svg, panel(1), "plain", "NearestNeighbor", sampled);
    drawPanel(svg, panel(2), "means of blocks", "kAntialiased", means);
    drawPanel(svg, panel(3), "blurred, then plain", "Gaussian, deviation 2", soft);
    for (int n = 0; n < 4; ++n)
        drawLimit(svg, panel(n));
    return svg;
}

}  // namespace

}  // namespace figures

int main(int count, char** arguments)
{
    if (count != 2)
        return std::fputs("Usage: draw_reducing FILE\n", stderr), 2;
    if (figures::reducing().save(arguments[1]))
        return 0;
    std::fprintf(stderr, "%s: cannot be written\n", arguments[1]);
    return 1;
}
