#pragma once

#include "tabase/tacolor.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tamesh {

/// In pixels, or in samples.
struct SSize
{
    int width = 0;
    int height = 0;

    friend bool operator==(const SSize&, const SSize&) = default;
};

/// Opaque pixels, row by row from the top. What is drawn outside is cut off.
class Image
{
public:
    Image(const SSize& size, TaColor color)
        : m_size(size)
        , m_pixels(
              static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height), color)
    {
    }

    void FillRectangle(int left, int top, int width, int height, TaColor color);
    void SetPixel(int x, int y, TaColor color) { m_pixels[indexOf(x, y)] = color; }

    /// Of the row, from the left.
    TaColor* GetPixels(int x, int y) { return &m_pixels[indexOf(x, y)]; }

    const SSize& GetSize() const { return m_size; }
    TaColor GetPixel(int x, int y) const { return m_pixels[indexOf(x, y)]; }

private:
    std::size_t indexOf(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_size.width)
            + static_cast<std::size_t>(x);
    }

    SSize m_size;
    std::vector<TaColor> m_pixels;
};

} // namespace tamesh
