// A profile of heights, kept to a tenth of a millimetre, with the holes of the scan as they are.

#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tacompression/tafloatingpointquantizationuniformwithinvalid.h"
#include "tacompression/tastreamreadcompressedfloatingpoint.h"
#include "tacompression/tastreamwritecompressedfloatingpoint.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <vector>

namespace {

constexpr float kHole = -9999.0f;

std::vector<float> makeProfile()
{
    std::vector<float> heights;
    for (int i = 0; i < 10000; ++i) {
        const double height = 40.0 * std::sin(i * 0.002) + 3.0 * std::sin(i * 0.05);
        heights.push_back(i % 1000 < 5 ? kHole : static_cast<float>(height));
    }
    return heights;
}

/// What the next height is likely to be, from those before it: on a straight line, or the same
/// where there is a hole. Both sides ask for it, with what the reader has.
float predict(float last, float secondLast)
{
    return last == kHole || secondLast == kHole ? last : 2.0f * last - secondLast;
}

} // namespace

int main()
{
    const std::vector<float> heights = makeProfile();
    const TaFloatingPointQuantizationUniformWithInvalid tenths(-50.0f, 50.0f, 10.0f, kHole);

    TaStreamWriteBinaryBuffer file;
    {
        const auto size = static_cast<unsigned int>(heights.size() * sizeof(float));
        TaStreamWriteCompressedFloatingPoint coder(file, tenths, 0, size);
        float last = 0.0f;
        float secondLast = 0.0f;
        for (const float height : heights) {
            coder.WriteValue(height, predict(last, secondLast));
            secondLast = last;
            last = tenths.Unmap(tenths.Map(height));
        }
    } // now the block is in the file

    TaStreamReadBinaryBuffer source(file);
    TaStreamReadCompressedFloatingPoint decoder(source, tenths, 0);
    float last = 0.0f;
    float secondLast = 0.0f;
    float largestError = 0.0f;
    for (const float height : heights) {
        const float restored = decoder.ReadValue(predict(last, secondLast));
        secondLast = last;
        last = restored;
        largestError = std::max(largestError, std::abs(restored - height));
    }
    std::cout << heights.size() * sizeof(float) << " bytes of heights take " << file.GetSize()
              << ", and none is off by more than " << largestError << "\n";
    return largestError < 0.051f ? 0 : 1;
}
