#include "Lettering.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include "Failure.h"

namespace reslice {
namespace {

class Font {
public:
    Font()
    {
        if (FT_Init_FreeType(&library_) != 0 || FT_New_Face(library_, RESLICE_FONT, 0, &face_) != 0)
            cannotRead(RESLICE_FONT, "the font of the labels is missing");
    }
    ~Font() { FT_Done_FreeType(library_); }
    Font(const Font&) = delete;
    Font& operator=(const Font&) = delete;

    /// Null where the font has no such letter.
    FT_GlyphSlot glyph(char32_t letter, unsigned int size)
    {
        FT_Set_Pixel_Sizes(face_, 0, size);
        return FT_Load_Char(face_, letter, FT_LOAD_RENDER) == 0 ? face_->glyph : nullptr;
    }

private:
    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
};

Font& font()
{
    static Font one;
    return one;
}

bool continues(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Letters beyond Latin-1, and bytes that are not UTF-8, become question marks.
std::u32string lettersOf(const std::string& text)
{
    std::u32string letters;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool latin =
            (byte == 0xC2 || byte == 0xC3) && i + 1 < text.size() && continues(text[i + 1]);
        if (byte < 0x80)
            letters += byte;
        else if (latin)
            letters += static_cast<char32_t>((byte & 3) << 6 |
                                             (static_cast<unsigned char>(text[++i]) & 0x3F));
        else if (!continues(text[i]))
            letters += U'?';
    }
    return letters;
}

void stamp(Picture& picture, int x, int baseline, const FT_GlyphSlot glyph, Colour colour)
{
    const FT_Bitmap& bitmap = glyph->bitmap;
    for (int row = 0; row < static_cast<int>(bitmap.rows); ++row)
        for (int column = 0; column < static_cast<int>(bitmap.width); ++column)
            picture.blend(x + glyph->bitmap_left + column, baseline - glyph->bitmap_top + row,
                          colour, bitmap.buffer[row * bitmap.pitch + column] / 255.0);
}

/// Draws each letter shifted in all directions, by up to the width of the rim.
void set(Picture& picture, int x, int baseline, const std::string& text, const Style& style,
         int rim)
{
    const int width = style.anchor == Anchor::LEFT ? 0 : textWidth(text, style.size);
    x -= style.anchor == Anchor::CENTRE ? width / 2 : width;
    for (const char32_t letter : lettersOf(text)) {
        const FT_GlyphSlot glyph = font().glyph(letter, style.size);
        if (glyph == nullptr)
            continue;
        for (int down = -rim; down <= rim; ++down)
            for (int right = -rim; right <= rim; ++right)
                stamp(picture, x + right, baseline + down, glyph, style.colour);
        x += static_cast<int>(glyph->advance.x >> 6);
    }
}

}  // namespace

int textWidth(const std::string& text, unsigned int size)
{
    int width = 0;
    for (const char32_t letter : lettersOf(text))
        if (const FT_GlyphSlot glyph = font().glyph(letter, size))
            width += static_cast<int>(glyph->advance.x >> 6);
    return width;
}

void write(Picture& picture, int x, int baseline, const std::string& text, const Style& style)
{
    set(picture, x, baseline, text, style, 0);
}

void writeOver(Picture& picture, int x, int baseline, const std::string& text, const Style& style)
{
    constexpr Colour kRim{0, 0, 0};
    set(picture, x, baseline, text, {style.size, kRim, style.anchor}, 1);
    write(picture, x, baseline, text, style);
}

}  // namespace reslice
