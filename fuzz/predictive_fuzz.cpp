#include "groundwork/tuexceptions.h"
#include "support/memorystreams.h"
#include "tacompression/tastreamreadpredictivecoder.h"
#include "tacompression/tastreamwritepredictivecoder.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

constexpr std::size_t kMostValues = 3000;

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

} // namespace

/// The first two bytes are the bits, the rest is the block; each value is predicted by the one
/// before. What could be read is written, and must come back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    const std::uint32_t maxBits = data[0] + 256U * data[1];
    const std::vector<unsigned char> block(data + 2, data + size);
    std::vector<std::uint32_t> values{ 0 };
    try {
        PlainStreamRead source(block);
        TaStreamReadPredictiveCoder coder(source, maxBits);
        unsigned char byte = 0;
        while (values.size() < kMostValues) {
            values.push_back(coder.ReadValue(values.back()));
            if (values.size() % 8 == 0) {
                coder.ReadExactly(&byte, 1); // a record between the values
            }
        }
    } catch (const TuException&) { // how hostile input is refused; anything else is a fault
    }

    const std::vector<std::uint32_t> predictions(values.begin(), values.end() - 1);
    values.erase(values.begin());
    constexpr std::uint32_t kAllBits = 32; // damaged differences may be larger than `maxBits`
    const auto written = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWritePredictiveCoder coder(target, kAllBits, 0);
        coder.WriteValues(values, predictions);
    });
    require(ReadFromBytes(written, [&](TuStreamReadBinary& source) {
        TaStreamReadPredictiveCoder coder(source, kAllBits);
        for (std::size_t i = 0; i < values.size(); ++i) {
            require(coder.ReadValue(predictions[i]) == values[i]);
        }
    }));
    return 0;
}
