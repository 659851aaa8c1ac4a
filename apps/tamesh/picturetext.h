#pragma once

#include "tabase/tacolor.h"

#include <string_view>

namespace tamesh {

class Image;

/// Of a line of text, in pixels at scale 1.
constexpr int kTextHeight = 9;

/// In pixels.
int MeasureText(std::string_view text, int scale);
/// Paints a line of text, of which (left, top) is the corner. Characters beyond ASCII show as
/// question marks.
void PaintText(Image& image, int left, int top, int scale, std::string_view text, TaColor color);

} // namespace tamesh
