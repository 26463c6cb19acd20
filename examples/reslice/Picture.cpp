#include "Picture.h"

#include <array>
#include <cmath>
#include <new>

namespace reslice {

Picture::Picture(unsigned int width, unsigned int height, Colour background)
{
    if (image_->initialize(width, height, 1, 3) != core::SUCCESS)
        throw std::bad_alloc();
    image_->fill(0, background.red);
    image_->fill(1, background.green);
    image_->fill(2, background.blue);
}

void Picture::blend(int x, int y, Colour colour, double opacity)
{
    if (!image_->hasVoxel(x, y, 0, 0))
        return;
    const std::array<unsigned char, 3> ink = {colour.red, colour.green, colour.blue};
    for (int c = 0; c < 3; ++c) {
        unsigned char& value = (*image_)(x, y, 0, c);
        const double mixed = value + opacity * (ink[static_cast<std::size_t>(c)] - value);
        value = static_cast<unsigned char>(std::lround(mixed));
    }
}

void Picture::box(int left, int top, int right, int bottom, Colour colour)
{
    for (int y = top; y <= bottom; ++y)
        for (int x = left; x <= right; ++x)
            blend(x, y, colour);
}

void Picture::frame(int left, int top, int right, int bottom, Colour colour)
{
    box(left, top, right, top + 1, colour);
    box(left, bottom - 1, right, bottom, colour);
    box(left, top, left + 1, bottom, colour);
    box(right - 1, top, right, bottom, colour);
}

void Picture::paste(const Picture& other, unsigned int left, unsigned int top)
{
    image_->draw(*other.image_, left, top, 0);
}

Picture Picture::cropped(const core::Rect& box) const
{
    Picture part;
    if (image_->crop(box, part.image_.get()) != core::SUCCESS)
        throw std::bad_alloc();
    return part;
}

}  // namespace reslice
