#include "tamesh/codednumbers.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "tacompression/tastreamreadpredictivecoder.h"
#include "tacompression/tastreamwritepredictivecoder.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace tamesh {

namespace {

    constexpr std::size_t kBlock = 65536;
    constexpr std::uint32_t kBits = 32;
    constexpr std::uint32_t kSign = 0x80000000u;

    // Near floats become near numbers.
    std::uint32_t toNumber(float value)
    {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        return (bits & kSign) != 0 ? ~bits : bits | kSign;
    }

    float toFloat(std::uint32_t number)
    {
        return std::bit_cast<float>((number & kSign) != 0 ? number ^ kSign : ~number);
    }

    template <class Value, class ToNumber>
    void write(TuStreamWriteBinary& stream, std::span<const Value> values, ToNumber&& toNumber)
    {
        if (values.size() > std::numeric_limits<std::uint32_t>::max()) {
            throw TuExceptionStream(TU_HERE, u"there are too many numbers for one record");
        }
        stream << static_cast<std::uint32_t>(values.size());
        std::uint32_t previous = 0;
        while (!values.empty()) {
            const std::size_t count = std::min(kBlock, values.size());
            TaStreamWritePredictiveCoder coder(
                stream, kBits, static_cast<std::uint32_t>(count * sizeof(std::uint32_t)));
            for (const Value value : values.first(count)) {
                const std::uint32_t number = toNumber(value);
                coder.WriteValue(number, previous);
                previous = number;
            }
            coder.Finish();
            values = values.subspan(count);
        }
    }

    template <class Value, class FromNumber>
    std::vector<Value> read(TuStreamReadBinary& stream, FromNumber&& fromNumber)
    {
        std::uint32_t left = 0;
        stream >> left;
        std::vector<Value> values;
        std::uint32_t previous = 0;
        while (left != 0) {
            const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(kBlock, left));
            TaStreamReadPredictiveCoder coder(stream, kBits);
            for (std::uint32_t i = 0; i != count; ++i) {
                previous = coder.ReadValue(previous);
                values.push_back(fromNumber(previous));
            }
            left -= count;
        }
        return values;
    }

} // namespace

void WriteCoded(TuStreamWriteBinary& stream, std::span<const std::uint32_t> numbers)
{
    write(stream, numbers, [](std::uint32_t number) { return number; });
}

void WriteCoded(TuStreamWriteBinary& stream, std::span<const float> numbers)
{
    write(stream, numbers, toNumber);
}

std::vector<std::uint32_t> ReadCodedNumbers(TuStreamReadBinary& stream)
{
    return read<std::uint32_t>(stream, [](std::uint32_t number) { return number; });
}

std::vector<float> ReadCodedFloats(TuStreamReadBinary& stream)
{
    return read<float>(stream, toFloat);
}

} // namespace tamesh
