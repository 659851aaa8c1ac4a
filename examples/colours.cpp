// A field of depths as a picture: colours by a table, a line where the depth is 0, a hole where
// nothing was measured, and a colour bar. `colours FILE.ppm` keeps the picture.

#include "tabase/tacolorbar.h"
#include "tabase/tacolortables.h"

#include <cmath>
#include <fstream>
#include <iostream>
#include <limits>
#include <vector>

namespace {

constexpr std::uint32_t kWidth = 320;
constexpr std::uint32_t kHeight = 200;
constexpr std::uint32_t kBarWidth = 16;

std::vector<float> measureDepths()
{
    std::vector<float> depths;
    for (std::uint32_t y = 0; y < kHeight; ++y) {
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const bool isHole = x > 90 && x < 120 && y > 60 && y < 85;
            const float depth = 12.0f * std::sin(static_cast<float>(x) * 0.03f)
                * std::cos(static_cast<float>(y) * 0.04f);
            depths.push_back(isHole ? std::numeric_limits<float>::quiet_NaN() : depth);
        }
    }
    return depths;
}

void write(const std::vector<TaColor>& pixels, const char* path)
{
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << kWidth << " " << kHeight << "\n255\n";
    for (const TaColor& pixel : pixels) {
        const std::uint32_t word = pixel.GetDword();
        file.put(static_cast<char>(word >> 16 & 0xFF));
        file.put(static_cast<char>(word >> 8 & 0xFF));
        file.put(static_cast<char>(word & 0xFF));
    }
}

} // namespace

int main(int argc, char** argv)
{
    const auto table = TaColorTables::CreateCoolWarm(256, -12.0f, 12.0f); // 0 is its centre
    table->AddColorValue(TaColor(0, 0, 0, 255), -0.05f, 0.05f);
    table->SetUnderflowColor(TaColor(64, 64, 64, 255)); // the hole, too

    const std::vector<float> depths = measureDepths();
    std::vector<TaColor> pixels(depths.size());
    table->GetColorValues(depths.data(), pixels.data(), depths.size());

    const TaColorBar bar(*table, kBarWidth, kHeight);
    bar.Draw(pixels.data() + kWidth - kBarWidth, kWidth);
    for (const TaColorBar::STick& tick : bar.GetTicks(5)) {
        std::cout << tick.m_text.ToUtf8() << " stands at row " << tick.m_position << "\n";
    }
    if (argc > 1) {
        write(pixels, argv[1]);
    }
    return pixels[70 * kWidth + 100] == table->GetUnderflowColor() ? 0 : 1;
}
