#include "tacompression/tastreamreadcompressedfloatingpoint.h"

#include "groundwork/tuexceptions.h"

#include <algorithm>
#include <array>

TU_DEFINE_RTTI(TaStreamReadCompressedFloatingPoint, TaStreamReadPredictiveCoder, nullptr, nullptr);

TaStreamReadCompressedFloatingPoint::TaStreamReadCompressedFloatingPoint(TuStreamReadBinary& stream,
    const TaFloatingPointQuantization& quantization, std::uint32_t version)
    : TaStreamReadPredictiveCoder(quantization.GetBitCount(), version)
    , m_quantization(quantization)
{
    initialize(stream);
}

TaStreamReadCompressedFloatingPoint::~TaStreamReadCompressedFloatingPoint() = default;

float TaStreamReadCompressedFloatingPoint::ReadValue(float prediction)
{
    return m_quantization.Unmap(
        TaStreamReadPredictiveCoder::ReadValue(m_quantization.Map(prediction)));
}

void TaStreamReadCompressedFloatingPoint::ReadValues(
    std::span<const float> predictions, std::span<float> values)
{
    if (values.size() != predictions.size()) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"there is a prediction for each value");
    }
    constexpr std::size_t kRun = 512;
    std::array<std::uint32_t, kRun> codes;
    for (std::size_t done = 0; done < values.size();) {
        const auto run = std::span(codes).first(std::min(values.size() - done, kRun));
        m_quantization.MapValues(predictions.subspan(done, run.size()), run);
        TaStreamReadPredictiveCoder::ReadValues(run, run);
        m_quantization.UnmapValues(run, values.subspan(done, run.size()));
        done += run.size();
    }
}
