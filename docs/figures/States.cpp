// The three states of an image and the calls that change them.

#include "Figures.h"

namespace figures {

namespace {

void drawState(Svg& svg, Box box, const char* name, const char* words, const char* colour)
{
    svg.box(box, "#ffffff", colour, " stroke-width=\"2\" rx=\"10\"");
    const double middle = box.x + box.width / 2;
    svg.text({middle, box.y + 26}, "middle", name, colour, " font-weight=\"bold\"");
    svg.text({middle, box.y + 46}, "middle", words);
}

void drawArrow(Svg& svg, const char* commands, const char* extra = "")
{
    svg.path(commands, "none", kInk, (std::string(" marker-end=\"url(#tip)\"") + extra).c_str());
}

void drawCalls(Svg& svg, Point at, const char* anchor, const std::vector<const char*>& calls,
               const char* colour = kInk)
{
    for (const char* call : calls) {
        svg.text(at, anchor, call, colour, " font-size=\"12\"");
        at.y += 17;
    }
}

void drawOwningCalls(Svg& svg)
{
    drawArrow(svg, "M300 130C240 150 190 180 160 226");
    drawCalls(svg, {34, 140}, "start",
              {"initialize(sizes)", "initialize(other, copyData)", "setImageSize(sizes)"});
    drawArrow(svg, "M186 226C216 190 260 160 330 134");
    drawCalls(svg, {278, 182}, "start", {"terminate()"});
    drawArrow(svg, "M110 290C90 340 190 340 172 290");
    drawCalls(svg, {40, 346}, "start", {"setImageSize(sizes): keeps a block that is large enough"});
}

void drawWrappingCalls(Svg& svg)
{
    drawArrow(svg, "M460 130C520 150 570 180 600 226");
    drawCalls(svg, {548, 140}, "start", {"initializeWithPointer(data, sizes)"});
    drawArrow(svg, "M574 226C544 190 500 160 430 134");
    drawCalls(svg, {482, 182}, "end", {"terminate()"});
    drawArrow(svg, "M520 258L262 258", " stroke-dasharray=\"5 4\"");
    drawCalls(svg, {391, 250}, "middle", {"assignment, in a derived class"});
}

}  // namespace

Svg states()
{
    Svg svg(760, 420);
    drawState(svg, {290, 66, 180, 64}, "Empty", "no buffer", kGreen);
    drawState(svg, {60, 226, 200, 64}, "Owning", "its own block", kBlue);
    drawState(svg, {520, 226, 200, 64}, "Wrapping", "the caller's block", kOrange);
    drawArrow(svg, "M380 30L380 64");
    drawCalls(svg, {390, 44}, "start", {"VxImage()"});
    drawOwningCalls(svg);
    drawWrappingCalls(svg);
    drawCalls(svg, {40, 382}, "start",
              {"All other calls of these functions throw. A copy (initialize from another image, "
               "copying in "
               "a derived class) is always Owning.",
               "Destruction frees the block of an Owning image, but not that of a Wrapping one."},
              kGrey);
    return svg;
}

}  // namespace figures
