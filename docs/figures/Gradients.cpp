// Readings along one row of voxels, and beneath them their derivatives.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Svg.h"
#include "volux/resample.h"

namespace figures {

namespace {

using namespace volux;

constexpr double kVoxelWidth = 84;
constexpr int kSteps = 32;  // of a curve, to each voxel

/// One plot above the other: where position 0 and the value 0 are on the page.
struct Plot {
    Point origin;
    double unit;  // on the page, of a value

    Point at(double position, double value) const
    {
        return {origin.x + kVoxelWidth * position, origin.y - unit * value};
    }
};

constexpr Plot kReadings = {{70, 170}, 1.4};
constexpr Plot kSlopes = {{70, 292}, 0.7};
const std::vector<float> kRow = {10, 10, 60, 100, 70, 70, 20, 20};

resample::ReadingAndGradient readingAt(double x, const resample::Options& options)
{
    const resample::Position position = {x, 0, 0};
    resample::ReadingAndGradient found = {};
    const resample::View<const float> row(kRow.data(), static_cast<unsigned int>(kRow.size()), 1,
                                          1);
    if (resample::sampleGradient(row, &position, 1, resample::Units::VOXELS, 0, &found, options) !=
        core::SUCCESS)
        std::abort();
    return found;
}

// The derivative of Linear jumps at the voxels, which is drawn as a gap.
void drawKernel(Svg& svg, const resample::Options& options, bool hasJumps, const char* colour)
{
    std::vector<Point> readings;
    std::vector<Point> slopes;
    const int last = kSteps * (static_cast<int>(kRow.size()) - 1);
    for (int n = 0; n <= last; ++n) {
        const double x = static_cast<double>(n) / kSteps;
        const auto before = readingAt(std::nextafter(x, -1.0), options);
        const auto found = readingAt(x, options);
        readings.push_back(kReadings.at(x, found.value));
        if (hasJumps && n % kSteps == 0 && n > 0) {
            slopes.push_back(kSlopes.at(x, before.x));
            svg.curve(slopes, colour);
            slopes.clear();
        }
        if (n < last || !hasJumps)
            slopes.push_back(kSlopes.at(x, found.x));
    }
    svg.curve(readings, colour);
    if (!hasJumps)
        svg.curve(slopes, colour);
}

void drawAxis(Svg& svg, const Plot& plot, std::initializer_list<int> values, const char* title)
{
    const double last = static_cast<double>(kRow.size()) - 1;
    for (const int value : values) {
        const Point label = plot.at(-0.12, value);
        svg.line(plot.at(-0.1, value), plot.at(last + 0.1, value), value == 0 ? kFaint : "#e5e5e5");
        svg.text({label.x, label.y + 4}, "end", std::to_string(value), kGrey);
    }
    svg.text({plot.origin.x, plot.at(0, *(values.end() - 1)).y - 10}, "start", title, kInk,
             " font-weight=\"bold\"");
}

Svg gradients()
{
    Svg svg(730, 402);
    drawAxis(svg, kReadings, {0, 50, 100}, "value");
    drawAxis(svg, kSlopes, {-60, 0, 60}, "x: how fast the value grows, by voxels");
    drawKernel(svg, core::Linear(), true, kBlue);
    drawKernel(svg, core::Cubic(), false, kOrange);
    for (std::size_t n = 0; n < kRow.size(); ++n) {
        const double x = static_cast<double>(n);
        svg.dot(kReadings.at(x, kRow[n]), 4, kInk, "#ffffff");
        svg.text({kSlopes.at(x, 0).x, 360}, "middle", std::to_string(n), kGrey);
    }
    svg.line({230, 384}, {254, 384}, kBlue, " stroke-width=\"3\"");
    svg.text({260, 388}, "start", "Linear");
    svg.line({340, 384}, {364, 384}, kOrange, " stroke-width=\"3\"");
    svg.text({370, 388}, "start", "Cubic");
    svg.dot({450, 384}, 4, kInk, "#ffffff");
    svg.text({460, 388}, "start", "voxel");
    return svg;
}

}  // namespace

}  // namespace figures

int main(int count, char** arguments)
{
    if (count != 2)
        return std::fputs("Usage: draw_gradients FILE\n", stderr), 2;
    if (figures::gradients().save(arguments[1]))
        return 0;
    std::fprintf(stderr, "%s: cannot be written\n", arguments[1]);
    return 1;
}
