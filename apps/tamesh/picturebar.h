#pragma once

namespace tamesh {

class Image;
struct SColoring;

/// Where a colour bar stands in a picture, in pixels. Its numbers stand to the right of it.
struct SBarPlace
{
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    int textScale = 1;
};

/// Paints the colours of a table from the bottom to the top, with what they mean.
void PaintColorBar(Image& image, const SBarPlace& place, const SColoring& coloring);

} // namespace tamesh
