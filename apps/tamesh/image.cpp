#include "tamesh/image.h"

#include <algorithm>

namespace tamesh {

void Image::FillRectangle(int left, int top, int width, int height, TaColor color)
{
    const int right = std::min(left + width, m_size.width);
    const int bottom = std::min(top + height, m_size.height);
    for (int y = std::max(top, 0); y < bottom; ++y) {
        for (int x = std::max(left, 0); x < right; ++x) {
            SetPixel(x, y, color);
        }
    }
}

} // namespace tamesh
