// A picture of 5 x 4 voxels and what is read around it: a row for each border, a column for each
// kernel.

#include <map>

#include "Figures.h"
#include "volux/core.h"

namespace figures {

namespace {

using namespace volux::core;
using Picture = VxImage<unsigned char>;

constexpr int kWidth = 5;
constexpr int kHeight = 4;
constexpr int kMargin = 2;     // voxels of the outside that a panel shows
constexpr int kPixels = 4;     // along one voxel
constexpr int kPixelSize = 6;  // on the page
constexpr double kVoxelSize = kPixels * kPixelSize;
constexpr unsigned char kOutside = 90;

void fillPicture(Picture& picture)
{
    constexpr unsigned char kValues[kWidth * kHeight] = {255, 215, 175, 40,  150,  //
                                                         235, 20,  190, 160, 130,  //
                                                         200, 180, 255, 10,  110,  //
                                                         60,  150, 120, 230, 0};
    picture.initialize(kWidth, kHeight, 1, 1);
    picture.setImageData(kValues, sizeof kValues);
}

std::string grey(int level)
{
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", level, level, level);
    return text;
}

/// The position of the centre of a pixel, in voxels.
double position(int pixel)
{
    return (pixel + 0.5) / kPixels - kMargin - 0.5;
}

template <class Kernel, class Outside>
void drawPixels(Svg& svg, Point corner, const Picture& picture, Kernel kernel, Outside border)
{
    std::map<int, std::string> pixelsByLevel;
    for (int j = 0; j < (kHeight + 2 * kMargin) * kPixels; ++j) {
        for (int i = 0; i < (kWidth + 2 * kMargin) * kPixels; ++i) {
            const double value = picture.getDoubleValueReal(position(i), position(j), 0, 0, kernel,
                                                            border, kOutside);
            const int level = value <= 0 ? 0 : value >= 255 ? 255 : static_cast<int>(value) / 4 * 4;
            pixelsByLevel[level] += "M" + number(corner.x + i * kPixelSize) + " " +
                                    number(corner.y + j * kPixelSize) + "h6v6h-6z";
        }
    }
    for (const auto& [level, pixels] : pixelsByLevel)
        svg.path(pixels, grey(level), "none", " shape-rendering=\"crispEdges\"");
}

template <class Kernel, class Outside>
void drawPanel(Svg& svg, Point corner, const Picture& picture, Kernel kernel, Outside border)
{
    drawPixels(svg, corner, picture, kernel, border);
    svg.box({corner.x + kMargin * kVoxelSize, corner.y + kMargin * kVoxelSize, kWidth * kVoxelSize,
             kHeight * kVoxelSize},
            "none", kOrange, " stroke-width=\"2\"");
}

template <class Outside>
void drawRow(Svg& svg, double y, const Picture& picture, Outside border)
{
    drawPanel(svg, {120, y}, picture, InterpolationType::NEAREST_NEIGHBOR, border);
    drawPanel(svg, {350, y}, picture, InterpolationType::LINEAR, border);
    drawPanel(svg, {580, y}, picture, InterpolationType::CUBIC, border);
}

}  // namespace

Svg borders()
{
    Picture picture;
    fillPicture(picture);

    Svg svg(816, 480);
    svg.text({228, 28}, "middle", "nearest neighbour", kInk, " font-weight=\"bold\"");
    svg.text({458, 28}, "middle", "trilinear", kInk, " font-weight=\"bold\"");
    svg.text({688, 28}, "middle", "tricubic", kInk, " font-weight=\"bold\"");
    svg.text({108, 140}, "end", "Constant,", kInk, " font-weight=\"bold\"");
    svg.text({108, 158}, "end", "value " + std::to_string(kOutside));
    svg.text({108, 358}, "end", "Replication", kInk, " font-weight=\"bold\"");
    drawRow(svg, 42, picture, InterpolationBorderType::CONSTANT);
    drawRow(svg, 254, picture, InterpolationBorderType::REPLICATION);
    svg.box({120, 456, 14, 10}, "none", kOrange, " stroke-width=\"2\"");
    svg.text({142, 466}, "start",
             "the image, 5 x 4 voxels: it ends half a voxel beyond its outer "
             "voxel centres");
    return svg;
}

}  // namespace figures
