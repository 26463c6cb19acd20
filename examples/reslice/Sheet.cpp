#include "Sheet.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "Lettering.h"
#include "ShortNumber.h"

namespace reslice {
namespace {

constexpr unsigned int kTitleSize = 22;
constexpr unsigned int kTextSize = 15;
constexpr int kMargin = 20;
constexpr int kGap = 14;
constexpr int kHeadHeight = 78;
constexpr int kCaptionHeight = 26;

/// The patient's directions in which a vector points, the strongest first.
std::string lettersOf(const Point& direction)
{
    constexpr double kNegligible = 0.25;
    std::array<std::pair<double, char>, 3> parts = {{{direction.x, direction.x > 0 ? 'R' : 'L'},
                                                     {direction.y, direction.y > 0 ? 'A' : 'P'},
                                                     {direction.z, direction.z > 0 ? 'S' : 'I'}}};
    std::sort(parts.begin(), parts.end(), [](const auto& one, const auto& other) {
        return std::abs(one.first) > std::abs(other.first);
    });
    std::string letters;
    for (const auto& [length, letter] : parts)
        if (std::abs(length) > kNegligible)
            letters += letter;
    return letters;
}

Point opposite(const Point& direction)
{
    return {-direction.x, -direction.y, -direction.z};
}

/// The longest of 1, 2, 5, 10, 20, ... that fits.
double roundLength(double longest)
{
    const double power = std::pow(10.0, std::floor(std::log10(longest)));
    for (const double digit : {5.0, 2.0})
        if (digit * power <= longest)
            return digit * power;
    return power;
}

/// The tile, or its caption where that is wider.
int columnOf(const Tile& tile)
{
    return std::max(static_cast<int>(tile.picture.width()), textWidth(tile.caption, kTextSize));
}

int widthOf(const std::vector<Tile>& tiles)
{
    int width = 2 * kMargin - kGap;
    for (const Tile& tile : tiles)
        width += columnOf(tile) + kGap;
    return width;
}

int heightOf(const std::vector<Tile>& tiles)
{
    unsigned int tallest = 0;
    for (const Tile& tile : tiles)
        tallest = std::max(tallest, tile.picture.height());
    return static_cast<int>(tallest);
}

}  // namespace

bool hasRoom(const Picture& picture)
{
    constexpr unsigned int kNarrowest = 40;
    return std::min(picture.width(), picture.height()) >= kNarrowest;
}

void addDirections(Picture& picture, const Directions& directions)
{
    if (!hasRoom(picture))
        return;
    const int width = static_cast<int>(picture.width());
    const int height = static_cast<int>(picture.height());
    const int size = static_cast<int>(kTextSize);
    const auto put = [&](int x, int baseline, const Point& direction, Anchor anchor) {
        writeOver(picture, x, baseline, lettersOf(direction), {kTextSize, kAccent, anchor});
    };
    put(8, height / 2 + size / 2, opposite(directions.right), Anchor::LEFT);
    put(width - 8, height / 2 + size / 2, directions.right, Anchor::RIGHT);
    put(width / 2, size + 6, opposite(directions.down), Anchor::CENTRE);
    put(width / 2, height - 8, directions.down, Anchor::CENTRE);
}

void addScale(Picture& picture, double pixelEdge)
{
    if (!hasRoom(picture))
        return;
    const double length = roundLength(picture.width() * pixelEdge * 0.25);
    const int pixels = static_cast<int>(std::lround(length / pixelEdge));
    const int right = static_cast<int>(picture.width()) - 10;
    const int bottom = static_cast<int>(picture.height()) - 10;
    picture.box(right - pixels - 1, bottom - 4, right + 1, bottom + 1, {0, 0, 0});
    picture.box(right - pixels, bottom - 3, right, bottom, kInk);
    writeOver(picture, right, bottom - 9, shortNumber(length) + " mm",
              {kTextSize - 2, kInk, Anchor::RIGHT});
}

void furnish(Picture& picture, const Volume& volume, const Directions& directions, double pixelEdge)
{
    if (volume.orientationKnown())
        addDirections(picture, directions);
    addScale(picture, pixelEdge);
}

Picture composeSheet(const std::string& title, const std::string& subtitle,
                     const std::vector<Tile>& tiles)
{
    const int textual = std::max(textWidth(title, kTitleSize), textWidth(subtitle, kTextSize));
    const int width = std::max(widthOf(tiles), textual + 2 * kMargin);
    const int height = kHeadHeight + kCaptionHeight + heightOf(tiles) + kMargin;
    Picture sheet(static_cast<unsigned int>(width), static_cast<unsigned int>(height), kPaper);
    write(sheet, kMargin, 36, title, {kTitleSize});
    write(sheet, kMargin, 62, subtitle, {kTextSize, kFaint});
    int left = kMargin;
    for (const Tile& tile : tiles) {
        write(sheet, left, kHeadHeight + kTextSize + 2, tile.caption, {kTextSize});
        sheet.paste(tile.picture, static_cast<unsigned int>(left), kHeadHeight + kCaptionHeight);
        left += columnOf(tile) + kGap;
    }
    return sheet;
}

std::string describe(const Volume& volume)
{
    const core::ImageSize size = volume.size();
    const core::VoxelSize spacing = volume.spacing();
    return std::to_string(size.width) + " × " + std::to_string(size.height) + " × " +
           std::to_string(size.depth) + " voxels of " + shortNumber(spacing.x) + " × " +
           shortNumber(spacing.y) + " × " + shortNumber(spacing.z) + " mm";
}

}  // namespace reslice
