#include "tamesh/picturebar.h"

#include "tabase/tacolorbar.h"
#include "tamesh/coloring.h"
#include "tamesh/figurelines.h"
#include "tamesh/image.h"
#include "tamesh/picturetext.h"

#include <cmath>
#include <limits>

namespace tamesh {

namespace {

    /// A text beside the bar, at a distance from its top, in pixels.
    struct SLabel
    {
        float position;
        std::string text;
    };

    float toFloat(double value)
    {
        constexpr double kLargest = std::numeric_limits<float>::max();
        return value > kLargest ? std::numeric_limits<float>::infinity()
            : value < -kLargest ? -std::numeric_limits<float>::infinity()
                                : static_cast<float>(value);
    }

    std::vector<SLabel> makeLabels(const SColoring& coloring, int height)
    {
        std::vector<SLabel> labels;
        const auto bottom = static_cast<float>(height);
        const auto count = static_cast<float>(coloring.names.size());
        for (const std::string& name : coloring.names) {
            const float share = (static_cast<float>(labels.size()) + 0.5f) / count;
            labels.push_back({ bottom * (1.0f - share), name });
        }
        if (labels.empty()) {
            const auto table = TuMake<TaColorTable>(*coloring.table);
            table->SetMinMax(toFloat(coloring.lower), toFloat(coloring.upper));
            const TaColorBar bar(*table, 1, static_cast<std::uint32_t>(height));
            for (const TaColorBar::STick& tick : bar.GetTicks()) {
                labels.push_back({ tick.m_position, tick.m_text.ToUtf8() });
            }
        }
        if (labels.empty()) { // the range is empty, or beyond what the bar knows
            constexpr int kDigits = 6;
            const auto add = [&](float position, double value) {
                labels.push_back({ position, std::string(FormatNumber(value, kDigits).GetView()) });
            };
            if (coloring.upper > coloring.lower) {
                add(0.0f, coloring.upper);
                add(bottom, coloring.lower);
            } else {
                add(bottom / 2, coloring.lower);
            }
        }
        return labels;
    }

} // namespace

void PaintColorBar(Image& image, const SBarPlace& place, const SColoring& coloring)
{
    constexpr TaColor kInk = TaColor::FromDword(0xFF202020u);
    constexpr int kTickLength = 3; // at text scale 1

    const int scale = place.textScale;
    const auto table = TuMake<TaColorTable>(*coloring.table);
    table->SetMinMax(toFloat(coloring.lower), toFloat(coloring.upper));
    const TaColorBar bar(
        *table, static_cast<std::uint32_t>(place.width), static_cast<std::uint32_t>(place.height));
    image.FillRectangle(place.left - scale, place.top - scale, place.width + 2 * scale,
        place.height + 2 * scale, kInk);
    bar.Draw(
        image.GetPixels(place.left, place.top), static_cast<std::size_t>(image.GetSize().width));

    const int right = place.left + place.width + scale;
    for (const SLabel& label : makeLabels(coloring, place.height)) {
        const int y = place.top + static_cast<int>(std::floor(label.position + 0.5f));
        image.FillRectangle(right, y - scale / 2, kTickLength * scale, scale, kInk);
        PaintText(image, right + 2 * kTickLength * scale, y - kTextHeight * scale / 2, scale,
            label.text, kInk);
    }
}

} // namespace tamesh
