// A picture in colour: a volume of depth 1 whose three channels are red, green and blue.
#pragma once

#include <memory>

#include "volux/core.h"

namespace reslice {

namespace core = volux::core;

struct Colour {
    unsigned char red, green, blue;
};

constexpr Colour kInk{236, 238, 241};    ///< lettering
constexpr Colour kFaint{150, 156, 165};  ///< lettering of less weight
constexpr Colour kAccent{255, 178, 56};  ///< directions, frames, outlines
constexpr Colour kPaper{24, 26, 30};     ///< behind everything

/// Row 0 is the top. Positions outside are ignored.
class Picture {
public:
    Picture(unsigned int width, unsigned int height, Colour background);

    unsigned int width() const { return image_->getWidth(); }
    unsigned int height() const { return image_->getHeight(); }

    /// Mixes a colour into a pixel; 1 covers it.
    void blend(int x, int y, Colour colour, double opacity = 1.0);

    /// A filled box, given by its first and last column and row.
    void box(int left, int top, int right, int bottom, Colour colour);

    /// The outline of such a box, two pixels wide.
    void frame(int left, int top, int right, int bottom, Colour colour);

    void paste(const Picture& other, unsigned int left, unsigned int top);
    Picture cropped(const core::Rect& box) const;

    /// Three bytes a pixel, row by row.
    const unsigned char* bytes() const { return image_->getBufferPointer(); }

private:
    Picture() = default;

    // An image cannot be moved; its owner can.
    std::unique_ptr<core::VxImage<unsigned char>> image_ =
        std::make_unique<core::VxImage<unsigned char>>();
};

}  // namespace reslice
