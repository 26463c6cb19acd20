#include "Montage.h"

#include <algorithm>
#include <string>
#include <vector>

#include "Lettering.h"
#include "Sheet.h"
#include "ShortNumber.h"
#include "View.h"

namespace reslice {
namespace {

constexpr unsigned int kTiles = kMontageColumns * kMontageRows;
constexpr double kTileExtent = 210.0;  // pixels along the longest side, before cropping

bool isBright(const Picture& picture, unsigned int x, unsigned int y)
{
    constexpr unsigned char kAir = 40;
    return picture.bytes()[3 * (std::size_t{y} * picture.width() + x)] > kAir;
}

/// Grows the box until it holds every bright pixel.
void include(const Picture& picture, core::Rect& box)
{
    for (unsigned int y = 0; y < picture.height(); ++y)
        for (unsigned int x = 0; x < picture.width(); ++x)
            if (isBright(picture, x, y)) {
                box.xStart = std::min(box.xStart, x);
                box.xEnd = std::max(box.xEnd, x);
                box.yStart = std::min(box.yStart, y);
                box.yEnd = std::max(box.yEnd, y);
            }
}

/// One box for all slices, so that they keep their places; everything if all of it is dark.
core::Rect headIn(const std::vector<Picture>& slices)
{
    const unsigned int width = slices[0].width();
    const unsigned int height = slices[0].height();
    core::Rect box(width, 0, height, 0);
    for (const Picture& slice : slices)
        include(slice, box);
    return box.xStart > box.xEnd ? core::Rect(0, width - 1, 0, height - 1) : box;
}

/// The part of the volume's height that the head takes, from 0 at the lowest slice to 1.
struct Heights {
    double low, high;

    unsigned int slice(unsigned int tile, unsigned int slices) const
    {
        const double part = low + (tile + 0.5) / kTiles * (high - low);
        return std::min(static_cast<unsigned int>(part * slices), slices - 1);
    }
};

/// As the middle coronal plane shows it.
Heights heightsOfHead(const Volume& volume, const Window& window, double pixelEdge, Job& job)
{
    std::vector<Picture> views;
    views.push_back(
        viewCut(volume, Cut::CORONAL, volume.size().height / 2, pixelEdge, window, job));
    const core::Rect head = headIn(views);
    const double rows = views[0].height();
    return {1.0 - (head.yEnd + 1) / rows, 1.0 - head.yStart / rows};
}

}  // namespace

Picture makeMontage(const Volume& volume, const Window& window, Job& job)
{
    const Point extent = volume.extent();
    const double pixelEdge = std::max({extent.x, extent.y, extent.z}) / kTileExtent;
    const Heights heights = heightsOfHead(volume, window, pixelEdge, job);
    std::vector<unsigned int> indices;
    std::vector<Picture> slices;
    for (unsigned int tile = 0; tile < kTiles; ++tile) {
        indices.push_back(heights.slice(tile, volume.size().depth));
        slices.push_back(viewCut(volume, Cut::AXIAL, indices.back(), pixelEdge, window, job));
    }
    const core::Rect head = headIn(slices);
    Picture montage(kMontageColumns * head.width(), kMontageRows * head.height(), kPaper);
    for (unsigned int tile = 0; tile < kTiles; ++tile) {
        Picture slice = slices[tile].cropped(head);
        if (hasRoom(slice))
            writeOver(slice, 6, static_cast<int>(slice.height()) - 7,
                      shortNumber(indices[tile] * volume.spacing().z) + " mm", {12, kInk});
        montage.paste(slice, tile % kMontageColumns * head.width(),
                      tile / kMontageColumns * head.height());
    }
    return montage;
}

}  // namespace reslice
