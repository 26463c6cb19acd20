// Text in pictures, set by FreeType.
#pragma once

#include <string>

#include "Picture.h"

namespace reslice {

enum class Anchor { LEFT, CENTRE, RIGHT };

struct Style {
    unsigned int size;  ///< of the letters, in pixels
    Colour colour = kInk;
    Anchor anchor = Anchor::LEFT;
};

/// `x` is the column of the anchor, `baseline` the row of the baseline. The text is UTF-8. Throws
/// Failure if the font cannot be loaded.
void write(Picture& picture, int x, int baseline, const std::string& text, const Style& style);

/// The same with a dark rim, readable on any background.
void writeOver(Picture& picture, int x, int baseline, const std::string& text, const Style& style);

/// The width of the text, in pixels.
int textWidth(const std::string& text, unsigned int size);

}  // namespace reslice
