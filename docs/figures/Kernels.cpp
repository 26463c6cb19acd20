// The three kernels along one row of voxels, a step and an impulse.

#include <cmath>

#include "Figures.h"
#include "volux/core.h"

namespace figures {

namespace {

using namespace volux::core;
using Row = VxImage<double>;

constexpr double kVoxelWidth = 48;
constexpr double kValueHeight = 1.5;

/// A plot of one row: where its voxel 0 of value 0 is on the page.
struct Plot {
    Point origin;

    Point at(double position, double value) const
    {
        return {origin.x + kVoxelWidth * position, origin.y - kValueHeight * value};
    }
};

template <class Kernel>
double valueAt(const Row& row, double x, Kernel kernel)
{
    return row.getDoubleValueReal(x, 0, 0, 0, kernel, InterpolationBorderType::REPLICATION, 0);
}

template <class Kernel>
void drawCurve(Svg& svg, const Plot& plot, const Row& row, Kernel kernel, const char* colour)
{
    constexpr int kSteps = 16;
    const int last = kSteps * (static_cast<int>(row.getWidth()) - 1);
    std::vector<Point> points;
    for (int i = 0; i <= last; ++i) {
        const double x = static_cast<double>(i) / kSteps;
        for (const double side : {std::nextafter(x, -1.0), x})  // a jump is drawn upright
            points.push_back(plot.at(x, valueAt(row, side, kernel)));
    }
    svg.curve(points, colour);
}

void drawAxes(Svg& svg, const Plot& plot, const Row& row, const char* title)
{
    const int last = static_cast<int>(row.getWidth()) - 1;
    for (int value = 0; value <= 100; value += 50) {
        svg.line(plot.at(-0.3, value), plot.at(last + 0.3, value), "#e5e5e5");
        const Point label = plot.at(-0.4, value);
        svg.text({label.x, label.y + 4}, "end", std::to_string(value), kGrey);
    }
    for (int x = 0; x <= last; ++x) {
        const Point label = plot.at(x, 0);
        svg.text({label.x, plot.origin.y + 42}, "middle", std::to_string(x), kGrey);
    }
    const Point head = plot.at(last / 2.0, 0);
    svg.text({head.x, plot.origin.y - 190}, "middle", title, kInk, " font-weight=\"bold\"");
}

void drawPlot(Svg& svg, const Plot& plot, const Row& row, const char* title)
{
    drawAxes(svg, plot, row, title);
    drawCurve(svg, plot, row, InterpolationType::NEAREST_NEIGHBOR, kGrey);
    drawCurve(svg, plot, row, InterpolationType::LINEAR, kBlue);
    drawCurve(svg, plot, row, InterpolationType::CUBIC, kOrange);
    for (int x = 0; x < static_cast<int>(row.getWidth()); ++x)
        svg.dot(plot.at(x, row.getValueVoxel(x, 0)), 4, kInk, "#ffffff");
}

void drawLegend(Svg& svg, double y)
{
    const struct {
        double x;
        const char* colour;
        const char* words;
    } entries[] = {
        {150, kGrey, "nearest neighbour"}, {330, kBlue, "trilinear"}, {450, kOrange, "tricubic"}};
    for (const auto& entry : entries) {
        svg.line({entry.x, y - 4}, {entry.x + 24, y - 4}, entry.colour, " stroke-width=\"3\"");
        svg.text({entry.x + 30, y}, "start", entry.words);
    }
    svg.dot({560, y - 4}, 4, kInk, "#ffffff");
    svg.text({570, y}, "start", "voxel");
}

}  // namespace

Svg kernels()
{
    double step[] = {0, 0, 0, 100, 100, 100, 100};
    double impulse[] = {0, 0, 0, 100, 0, 0, 0};
    Row stepRow;
    Row impulseRow;
    stepRow.initializeWithPointer(step, 7, 1, 1, 1);
    impulseRow.initializeWithPointer(impulse, 7, 1, 1, 1);

    Svg svg(760, 300);
    drawPlot(svg, {{50, 212}}, stepRow, "a step");
    drawPlot(svg, {{430, 212}}, impulseRow, "an impulse");
    drawLegend(svg, 286);
    return svg;
}

}  // namespace figures
