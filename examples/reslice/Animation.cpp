#include "Animation.h"

#include <gif_lib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "Failure.h"

namespace reslice {
namespace {

constexpr unsigned int kGreys = 240;
constexpr unsigned int kColours = 256;

GifByteType level(unsigned int step, unsigned int steps)
{
    return static_cast<GifByteType>((255 * step + (steps - 1) / 2) / (steps - 1));
}

/// Greys from black to white, then the accent colour from dark to bright.
std::array<GifColorType, kColours> makePalette()
{
    std::array<GifColorType, kColours> palette{};
    for (unsigned int n = 0; n < kGreys; ++n)
        palette[n] = {level(n, kGreys), level(n, kGreys), level(n, kGreys)};
    constexpr unsigned int kSteps = kColours - kGreys;
    for (unsigned int n = 1; n <= kSteps; ++n) {
        const auto part = [n](unsigned char channel) {
            return static_cast<GifByteType>(channel * n / kSteps);
        };
        palette[kGreys + n - 1] = {part(kAccent.red), part(kAccent.green), part(kAccent.blue)};
    }
    return palette;
}

int distance(const GifColorType& one, const unsigned char* other)
{
    const int red = one.Red - other[0], green = one.Green - other[1], blue = one.Blue - other[2];
    return red * red + green * green + blue * blue;
}

struct FreeColourMap {
    void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};

int append(GifFileType* gif, const GifByteType* bytes, int count)
{
    auto& file = *static_cast<std::vector<unsigned char>*>(gif->UserData);
    file.insert(file.end(), bytes, bytes + count);
    return count;
}

}  // namespace

Animation::Animation(std::string path, unsigned int hundredths)
    : path_(std::move(path)), hundredths_(hundredths)
{
    int error = 0;
    gif_ = EGifOpen(&file_, append, &error);
    if (gif_ == nullptr)
        cannotWrite(path_, GifErrorString(error));
    EGifSetGifVersion(gif_, true);
}

Animation::~Animation()
{
    if (gif_ != nullptr)
        EGifCloseFile(gif_, nullptr);
}

void Animation::require(int answer) const
{
    if (answer != GIF_OK)
        cannotWrite(path_, GifErrorString(gif_->Error));
}

unsigned char Animation::indexOf(const unsigned char* colour)
{
    const std::array<unsigned char, 3> key = {colour[0], colour[1], colour[2]};
    const auto known = indices_.find(key);
    if (known != indices_.end())
        return known->second;
    const std::array<GifColorType, kColours> palette = makePalette();
    std::size_t best = 0;
    for (std::size_t n = 1; n < kColours; ++n)
        if (distance(palette[n], colour) < distance(palette[best], colour))
            best = n;
    return indices_[key] = static_cast<unsigned char>(best);
}

/// The size, the palette, and that the frames repeat for ever.
void Animation::begin(const Picture& first)
{
    constexpr unsigned int kMost = 65535;
    width_ = first.width();
    height_ = first.height();
    if (width_ > kMost || height_ > kMost)
        cannotWrite(path_, "a GIF has at most 65535 rows and columns");
    const std::array<GifColorType, kColours> palette = makePalette();
    const std::unique_ptr<ColorMapObject, FreeColourMap> map(
        GifMakeMapObject(kColours, palette.data()));
    require(EGifPutScreenDesc(gif_, static_cast<int>(width_), static_cast<int>(height_), 8, 0,
                              map.get()));
    require(EGifPutExtensionLeader(gif_, APPLICATION_EXT_FUNC_CODE));
    require(EGifPutExtensionBlock(gif_, 11, "NETSCAPE2.0"));
    require(EGifPutExtensionBlock(gif_, 3, "\1\0\0"));
    require(EGifPutExtensionTrailer(gif_));
}

/// What differs from the frame before; one pixel if nothing does.
Animation::Part Animation::changedPart(const std::vector<GifByteType>& pixels) const
{
    if (shown_.empty())
        return {0, 0, width_, height_};
    Part part{width_, height_, 0, 0};
    for (std::size_t y = 0; y < height_; ++y)
        for (std::size_t x = 0; x < width_; ++x)
            if (pixels[y * width_ + x] != shown_[y * width_ + x]) {
                part.left = std::min(part.left, x);
                part.right = std::max(part.right, x + 1);
                part.top = std::min(part.top, y);
                part.bottom = y + 1;
            }
    return part.right == 0 ? Part{0, 0, 1, 1} : part;
}

void Animation::putPart(const Part& part, std::vector<GifByteType>& pixels)
{
    const GraphicsControlBlock control{DISPOSE_DO_NOT, false, static_cast<int>(hundredths_),
                                       NO_TRANSPARENT_COLOR};
    std::array<GifByteType, 4> bytes{};
    require(EGifPutExtension(gif_, GRAPHICS_EXT_FUNC_CODE,
                             static_cast<int>(EGifGCBToExtension(&control, bytes.data())),
                             bytes.data()));
    const auto columns = static_cast<int>(part.right - part.left);
    require(EGifPutImageDesc(gif_, static_cast<int>(part.left), static_cast<int>(part.top), columns,
                             static_cast<int>(part.bottom - part.top), false, nullptr));
    for (std::size_t y = part.top; y < part.bottom; ++y)
        require(EGifPutLine(gif_, &pixels[y * width_ + part.left], columns));
}

void Animation::add(const Picture& frame)
{
    if (frames_ == 0)
        begin(frame);
    if (frame.width() != width_ || frame.height() != height_)
        cannotWrite(path_, "its frames differ in size");
    std::vector<GifByteType> pixels(std::size_t{width_} * height_);
    for (std::size_t n = 0; n < pixels.size(); ++n)
        pixels[n] = indexOf(frame.bytes() + 3 * n);
    const Part part = changedPart(pixels);
    std::vector<GifByteType> lines = pixels;  // giflib modifies its input
    putPart(part, lines);
    shown_ = std::move(pixels);
    ++frames_;
}

std::vector<unsigned char> Animation::finish()
{
    int error = 0;
    if (EGifCloseFile(std::exchange(gif_, nullptr), &error) != GIF_OK)
        cannotWrite(path_, GifErrorString(error));
    return std::move(file_);
}

}  // namespace reslice
