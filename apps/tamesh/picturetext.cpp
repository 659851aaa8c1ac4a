#include "tamesh/picturetext.h"

#include "tamesh/image.h"

#include <stb/stb_easy_font.h>

#include <array>
#include <cstring>

namespace tamesh {

namespace {

    /// As a text of its own, as the font wants it.
    std::array<char, 2> glyphOf(char character)
    {
        return { character >= ' ' && character <= '~' ? character : '?', '\0' };
    }

    int measureGlyph(std::array<char, 2> glyph) { return stb_easy_font_width(glyph.data()); }

    void paintGlyph(
        Image& image, int left, int top, int scale, std::array<char, 2> glyph, TaColor color)
    {
        struct SCorner
        {
            float x;
            float y;
            float z;
            unsigned char color[4];
        };
        using Quad = std::array<SCorner, 4>;
        constexpr std::size_t kMostQuads = 64; // no glyph has half as many
        std::array<Quad, kMostQuads> quads{};
        const int count = stb_easy_font_print(
            0.0f, 0.0f, glyph.data(), nullptr, quads.data(), static_cast<int>(sizeof(quads)));
        for (int i = 0; i < count; ++i) {
            const Quad& quad = quads[static_cast<std::size_t>(i)];
            const auto place
                = [scale](float coordinate) { return static_cast<int>(coordinate) * scale; };
            const int x = place(quad[0].x);
            const int y = place(quad[0].y);
            image.FillRectangle(
                left + x, top + y, place(quad[2].x) - x, place(quad[2].y) - y, color);
        }
    }

} // namespace

void PaintText(Image& image, int left, int top, int scale, std::string_view text, TaColor color)
{
    for (const char character : text) {
        if ((static_cast<unsigned char>(character) & 0xC0u) == 0x80u) {
            continue; // goes on with a character that is shown already
        }
        paintGlyph(image, left, top, scale, glyphOf(character), color);
        left += measureGlyph(glyphOf(character)) * scale;
    }
}

} // namespace tamesh
