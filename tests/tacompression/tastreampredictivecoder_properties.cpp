#include "support/memorystreams.h"
#include "tacompression/referencerangecoder.h"
#include "tacompression/tastreamreadpredictivecoder.h"
#include "tacompression/tastreamwritepredictivecoder.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <vector>

namespace {

RC_GTEST_PROP(
    TaStreamPredictiveCoderProperties, AnyValuesHaveTheBytesOfThePlainCoderAndComeBack, ())
{
    const auto maxBits = *rc::gen::inRange(1u, 41u);
    const std::uint32_t most = maxBits >= 32 ? 0xFFFFFFFF : (1U << maxBits) - 1;
    const auto number = rc::gen::oneOf(rc::gen::arbitrary<std::uint32_t>(),
        rc::gen::element(0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU));
    const auto numbers = *rc::gen::container<std::vector<std::pair<std::uint32_t, std::uint32_t>>>(
        rc::gen::pair(number, number));

    ReferenceModel model(2 * maxBits + 1, 16, 1024);
    ReferenceEncoder reference;
    std::vector<std::uint32_t> values;
    std::vector<std::uint32_t> predictions;
    for (const auto& [prediction, distance] : numbers) {
        // As far away as the bits allow, on either side; with 32 bits this is any number.
        const std::uint32_t step = distance & most;
        const bool isUp = step <= 0xFFFFFFFF - prediction;
        const std::uint32_t value = isUp ? prediction + step
            : step <= prediction         ? prediction - step
                                         : prediction;
        values.push_back(value);
        predictions.push_back(prediction);

        const std::uint32_t difference
            = value > prediction ? value - prediction : prediction - value;
        std::uint32_t bits = 0;
        while (bits < 32 && (difference >> bits) != 0) {
            ++bits;
        }
        reference.WriteSymbol(value > prediction ? maxBits + bits : maxBits - bits, model);
        if (bits != 0) {
            reference.WriteRawBits(difference - (1U << (bits - 1)), bits - 1);
        }
    }
    std::vector<unsigned char> expected = reference.Finish();
    expected.insert(expected.begin(), 4, 0); // the version

    const auto bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaStreamWritePredictiveCoder coder(target, maxBits, 0);
        for (std::size_t i = 0; i < values.size(); ++i) {
            coder.WriteValue(values[i], predictions[i]);
        }
    });
    RC_ASSERT(bytes == expected);
    RC_ASSERT(ReadFromBytes(bytes, [&](TuStreamReadBinary& source) {
        TaStreamReadPredictiveCoder coder(source, maxBits);
        coder.ReadValues(predictions, predictions);
        RC_ASSERT(predictions == values);
    }));
}

} // namespace
