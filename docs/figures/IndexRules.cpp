// Which index a position gives.

#include <cmath>

#include "../FirstNeighbour.h"
#include "Figures.h"

namespace figures {

namespace {

using namespace volux::core;

template <class Kernel>
int firstIndex(double position)
{
    return documents::firstNeighbour<Kernel>(position).value();
}

using Rule = int (*)(double);

/// The positions that give one index.
struct Interval {
    double from;
    double to;
    bool fromIncluded;
    bool toIncluded;
    int index;
};

constexpr double kStep = 0.125;
constexpr double kFirst = -3.0;
constexpr double kLast = 3.0;

std::vector<Interval> intervals(Rule rule)
{
    std::vector<Interval> result = {{kFirst, kFirst, true, true, rule(kFirst)}};
    for (double x = kFirst; x < kLast; x += kStep) {
        const int index = rule(x + kStep);
        if (index == result.back().index)
            continue;
        // The jump is on one of the two multiples of the step.
        const bool here = rule(std::nextafter(x, kLast)) == index;
        const double jump = here ? x : x + kStep;
        result.back().to = jump;
        result.back().toIncluded = here;
        result.push_back({jump, jump, !here, true, index});
    }
    result.back().to = kLast;
    return result;
}

Point onPage(double position, double y)
{
    return {440 + 95 * position, y};
}

void drawEnd(Svg& svg, double position, double y, bool included, const char* colour)
{
    if (position > kFirst && position < kLast)
        svg.dot(onPage(position, y), 4, included ? colour : "#ffffff", colour);
}

void drawRule(Svg& svg, double y, const char* name, Rule rule, const char* colour)
{
    svg.text({20, y + 12}, "start", name, kInk, " font-weight=\"bold\"");
    bool raised = false;
    for (const Interval& each : intervals(rule)) {
        const double level = y + (raised ? 0 : 16);
        svg.line(onPage(each.from, level), onPage(each.to, level), colour, " stroke-width=\"3\"");
        drawEnd(svg, each.from, level, each.fromIncluded, colour);
        drawEnd(svg, each.to, level, each.toIncluded, colour);
        const Point middle = onPage((each.from + each.to) / 2, level - 7);
        if (each.to > each.from)
            svg.text(middle, "middle", std::to_string(each.index), colour);
        raised = !raised;
    }
}

void drawNumberLine(Svg& svg, double y)
{
    svg.line(onPage(kFirst - 0.2, y), onPage(kLast + 0.2, y), kInk);
    for (int half = -6; half <= 6; ++half) {
        const bool whole = half % 2 == 0;
        const Point at = onPage(half / 2.0, y);
        svg.line(at, {at.x, y + (whole ? 9.0 : 5.0)}, kInk);
        svg.text({at.x, y + 26}, "middle", number(half / 2.0), whole ? kInk : kFaint);
    }
}

}  // namespace

Svg indexRules()
{
    Svg svg(760, 250);
    drawRule(svg, 44, "nearest voxel", firstIndex<NearestNeighbor>, kGrey);
    drawRule(svg, 114, "lower neighbour", firstIndex<Linear>, kBlue);
    drawNumberLine(svg, 172);
    svg.text({20, 176}, "start", "position");
    svg.dot({150, 226}, 4, kInk, kInk);
    svg.text({162, 230}, "start", "this position is included");
    svg.dot({330, 226}, 4, "#ffffff", kInk);
    svg.text({342, 230}, "start", "this position belongs to the other interval");
    return svg;
}

}  // namespace figures
