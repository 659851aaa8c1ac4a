#pragma once

#include "tabase/tacolor.h"

#include <string_view>

namespace tamesh {

class Image;

/// Of a line of text, in pixels at scale 1.
constexpr int kTextHeight = 9;

/// Paints a line of text (UTF-8), of which (left, top) is the corner. Characters beyond ASCII show
/// as question marks.
void PaintText(Image& image, int left, int top, int scale, std::string_view text, TaColor color);

} // namespace tamesh
