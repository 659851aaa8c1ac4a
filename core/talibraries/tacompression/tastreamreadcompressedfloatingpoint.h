#pragma once

#include "tacompression/tafloatingpointquantization.h"
#include "tacompression/tastreamreadpredictivecoder.h"

/// Reads what TaStreamWriteCompressedFloatingPoint has written, with an equal quantization and the
/// same predictions. What comes back is restored by the quantization.
///
/// Ownership: refers to the quantization, which must outlive it; to the source while it is made.
/// Threads:   one thread at a time.
/// Failure:   as TaStreamReadPredictiveCoder.
class TACOMPRESSION_API TaStreamReadCompressedFloatingPoint : public TaStreamReadPredictiveCoder
{
    TU_DECLARE_RTTI

public:
    /// `version` is the highest that the caller knows of his blocks.
    TaStreamReadCompressedFloatingPoint(TuStreamReadBinary& stream,
        const TaFloatingPointQuantization& quantization, std::uint32_t version);
    ~TaStreamReadCompressedFloatingPoint() override;

    float ReadValue(float prediction);
    /// The same as one by one, and faster, for predictions that do not depend on these values.
    /// There is one for each value; it may lie where the value goes.
    void ReadValues(std::span<const float> predictions, std::span<float> values);

private:
    const TaFloatingPointQuantization& m_quantization;
};
