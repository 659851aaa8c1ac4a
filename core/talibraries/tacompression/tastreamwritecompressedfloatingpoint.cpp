#include "tacompression/tastreamwritecompressedfloatingpoint.h"

#include "groundwork/tuexceptions.h"

#include <algorithm>
#include <array>

TU_DEFINE_RTTI(
    TaStreamWriteCompressedFloatingPoint, TaStreamWritePredictiveCoder, nullptr, nullptr);

TaStreamWriteCompressedFloatingPoint::TaStreamWriteCompressedFloatingPoint(
    TuStreamWriteBinary& stream, const TaFloatingPointQuantization& quantization,
    std::uint32_t version, std::uint32_t sizeHint)
    : TaStreamWritePredictiveCoder(stream, quantization.GetBitCount(), sizeHint, version)
    , m_quantization(quantization)
{
}

TaStreamWriteCompressedFloatingPoint::~TaStreamWriteCompressedFloatingPoint() = default;

// The prediction is mapped first, whatever order a compiler has for arguments.
void TaStreamWriteCompressedFloatingPoint::WriteValue(float value, float prediction)
{
    const std::uint32_t predictedCode = m_quantization.Map(prediction);
    TaStreamWritePredictiveCoder::WriteValue(m_quantization.Map(value), predictedCode);
}

void TaStreamWriteCompressedFloatingPoint::WriteValues(
    std::span<const float> values, std::span<const float> predictions)
{
    if (values.size() != predictions.size()) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"there is a prediction for each value");
    }
    constexpr std::size_t kRun = 512;
    std::array<std::uint32_t, kRun> codes;
    std::array<std::uint32_t, kRun> predictedCodes;
    for (std::size_t done = 0; done < values.size();) {
        const std::size_t count = std::min(values.size() - done, kRun);
        const auto run = std::span(codes).first(count);
        const auto predictedRun = std::span(predictedCodes).first(count);
        m_quantization.MapValues(predictions.subspan(done, count), predictedRun);
        m_quantization.MapValues(values.subspan(done, count), run);
        TaStreamWritePredictiveCoder::WriteValues(run, predictedRun);
        done += count;
    }
}
