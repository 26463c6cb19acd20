// One image of 3 x 2 x 1 voxels with two channels in three layouts: where each element is, by the
// address that the image gives for it.

#include "Figures.h"
#include "volux/core.h"

namespace figures {

namespace {

using namespace volux::core;

constexpr int kCells = 16;
constexpr double kCell = 42;

struct Layout {
    const char* name;
    unsigned int strideX;
    unsigned int strideY;
    unsigned int strideZ;
    unsigned int strideC;
};

void drawElement(Svg& svg, double y, std::ptrdiff_t element, int x, int row, int channel)
{
    const double left = 40 + kCell * static_cast<double>(element);
    svg.box({left, y, kCell, 34}, channel == 0 ? "#d6e9f5" : "#fbe3d0", kInk);
    svg.text({left + kCell / 2, y + 15}, "middle",
             "(" + std::to_string(x) + "," + std::to_string(row) + ")");
    svg.text({left + kCell / 2, y + 29}, "middle", "c " + std::to_string(channel),
             channel == 0 ? kBlue : kOrange, " font-size=\"11\"");
}

void drawLayout(Svg& svg, double y, const Layout& layout)
{
    float block[kCells] = {};
    VxImage<float> image;
    image.initializeWithPointer(block, 3, 2, 1, 2);
    image.setImageStride(layout.strideY, layout.strideZ, layout.strideC, layout.strideX);

    svg.text({40, y - 10}, "start", layout.name, kInk, " font-weight=\"bold\"");
    svg.text({160, y - 10}, "start",
             "strideX " + std::to_string(layout.strideX) + ", strideY " +
                 std::to_string(layout.strideY) + ", strideZ " + std::to_string(layout.strideZ) +
                 ", strideC " + std::to_string(layout.strideC));
    for (int i = 0; i < kCells; ++i)
        svg.box({40 + kCell * i, y, kCell, 34}, "none", "#dddddd");
    for (int row = 0; row < 2; ++row)
        for (int x = 0; x < 3; ++x)
            for (int c = 0; c < 2; ++c)
                drawElement(svg, y, &image(x, row, 0, c) - block, x, row, c);
}

}  // namespace

Svg layouts()
{
    Svg svg(752, 300);
    drawLayout(svg, 40, {"interleaved", 2, 6, 12, 1});
    drawLayout(svg, 122, {"planar", 1, 3, 6, 6});
    drawLayout(svg, 204, {"padded rows", 2, 8, 16, 1});
    for (int i = 0; i < kCells; ++i)
        svg.text({40 + kCell * (i + 0.5), 256}, "middle", std::to_string(i), kGrey);
    svg.text({40, 284}, "start",
             "Elements of the buffer. (x,y) is the voxel, c its channel; pale "
             "cells belong to no voxel.");
    return svg;
}

}  // namespace figures
