// Numbers in few bytes: the turns of an outline by how often each comes, counts by how little they
// change, and a profile of heights kept to a tenth of a millimetre, with the holes of the scan as
// they are.

#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tacompression/tacompressrangecoder.h"
#include "tacompression/tadecompressrangecoder.h"
#include "tacompression/tafloatingpointquantizationuniformwithinvalid.h"
#include "tacompression/tastreamreadcompressedfloatingpoint.h"
#include "tacompression/tastreamwritecompressedfloatingpoint.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <utility>
#include <vector>

namespace {

constexpr std::uint32_t kDirections = 8;
constexpr float kHole = -9999.0f;

/// Symbols: mostly straight on, which is 0.
bool codeTurns()
{
    std::vector<unsigned int> turns(5000, 0);
    for (std::size_t i = 0; i < turns.size(); i += 7) {
        turns[i] = i % kDirections;
    }

    TaStreamWriteBinaryBuffer file;
    {
        TaCompressRangeCoder coder(file, kDirections, 0);
        for (const unsigned int turn : turns) {
            coder << turn; // or all at once: coder.WriteSymbols(turns)
        }
        coder.WriteRawBits(19, 5); // what no model would help with
    } // now the block is in the file

    TaStreamReadBinaryBuffer source(file);
    TaDecompressRangeCoder decoder(source, kDirections);
    std::vector<unsigned int> restored(turns.size());
    for (unsigned int& turn : restored) {
        decoder >> turn;
    }
    const unsigned int tail = decoder.ReadRawBits(5);

    std::cout << turns.size() << " turns take " << file.GetSize() << " bytes\n";
    return restored == turns && tail == 19;
}

/// Whole numbers, each predicted to be as the one before.
bool codeCounts()
{
    std::vector<std::uint32_t> counts;
    for (std::uint32_t i = 0; i < 5000; ++i) {
        counts.push_back(1'000'000 + i * i % 101);
    }

    TaStreamWriteBinaryBuffer file;
    const auto size = static_cast<std::uint32_t>(counts.size() * sizeof(std::uint32_t));
    TaStreamWritePredictiveCoder coder(file, 20, size); // differences have 20 bits at most
    std::uint32_t previous = 0;
    for (const std::uint32_t count : counts) {
        coder.WriteValue(count, std::exchange(previous, count));
    }
    coder.Finish();

    TaStreamReadBinaryBuffer source(file);
    TaStreamReadPredictiveCoder decoder(source, 20);
    std::uint32_t last = 0;
    bool isSame = true;
    for (const std::uint32_t count : counts) {
        last = decoder.ReadValue(last);
        isSame = isSame && last == count;
    }
    std::cout << size << " bytes of counts take " << file.GetSize() << '\n';
    return isSame;
}

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

/// Floats, by a quantization.
bool codeHeights()
{
    const std::vector<float> heights = makeProfile();
    const TaFloatingPointQuantizationUniformWithInvalid tenths(-50.0f, 50.0f, 10.0f, kHole);

    TaStreamWriteBinaryBuffer file;
    const auto size = static_cast<unsigned int>(heights.size() * sizeof(float));
    {
        TaStreamWriteCompressedFloatingPoint coder(file, tenths, 0, size);
        float last = 0.0f;
        float secondLast = 0.0f;
        for (const float height : heights) {
            coder.WriteValue(height, predict(last, secondLast));
            secondLast = last;
            last = tenths.Unmap(tenths.Map(height)); // as the reader will have it
        }
    }

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
    std::cout << size << " bytes of heights take " << file.GetSize()
              << ", and none is off by more than " << largestError << '\n';
    return largestError < 0.051f;
}

} // namespace

int main()
{
    const bool isTurns = codeTurns();
    const bool isCounts = codeCounts();
    return codeHeights() && isTurns && isCounts ? 0 : 1;
}
