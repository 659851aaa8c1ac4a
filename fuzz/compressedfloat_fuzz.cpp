#include "groundwork/tuexceptions.h"
#include "support/memorystreams.h"
#include "tacompression/tafloatingpointquantizationuniformwithinvalid.h"
#include "tacompression/tastreamreadcompressedfloatingpoint.h"
#include "tacompression/tastreamwritecompressedfloatingpoint.h"

#include <bit>
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

/// Each float is predicted by the one before. What could be read is written, and must come back as
/// the quantization restores it.
void readAndWrite(
    const std::vector<unsigned char>& block, const TaFloatingPointQuantization& quantization)
{
    std::vector<float> values;
    try {
        PlainStreamRead source(block);
        TaStreamReadCompressedFloatingPoint coder(source, quantization, 1);
        float previous = 0;
        while (values.size() < kMostValues) {
            values.push_back(previous = coder.ReadValue(previous));
        }
    } catch (const TuException&) { // how hostile input is refused; anything else is a fault
    }

    std::vector<float> restored;
    const auto written = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWriteCompressedFloatingPoint coder(target, quantization, 1, 0);
        float previous = 0;
        for (const float value : values) {
            const std::uint32_t code = quantization.Map(value);
            require(std::uint64_t{ code } >> quantization.GetBitCount() == 0);
            coder.WriteValue(value, previous);
            restored.push_back(previous = quantization.Unmap(code));
        }
    });
    require(ReadFromBytes(written, [&](TuStreamReadBinary& source) {
        TaStreamReadCompressedFloatingPoint coder(source, quantization, 1);
        float previous = 0;
        for (const float value : restored) {
            previous = coder.ReadValue(previous);
            require(std::bit_cast<std::uint32_t>(previous) == std::bit_cast<std::uint32_t>(value));
        }
    }));
}

} // namespace

/// The first four floats are the range, the scale, and the invalid value; the rest is the block.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<unsigned char> bytes(data, data + size);
    PlainStreamRead source(bytes);
    float arguments[4] = {};
    try {
        source >> arguments[0] >> arguments[1] >> arguments[2] >> arguments[3];
    } catch (const TuException&) {
        return 0;
    }
    const std::vector<unsigned char> block(bytes.begin() + sizeof(arguments), bytes.end());
    const auto [minimum, maximum, scale, invalid] = arguments;
    readAndWrite(block, TaFloatingPointQuantizationUniform(minimum, maximum, scale));
    readAndWrite(
        block, TaFloatingPointQuantizationUniformWithInvalid(minimum, maximum, scale, invalid));
    return 0;
}
