#pragma once

#include "tacompression/tafloatingpointquantization.h"
#include "tacompression/tastreamwritepredictivecoder.h"

/// Writes floats as codes of a quantization, each by how much its code differs from that of a
/// prediction.
///
/// Predictions are to be made of values as the reader has them: restored by the quantization
/// (`Unmap(Map(value))`), not as they were before.
///
/// Ownership: refers to the quantization and the target, which must outlive it.
/// Threads:   one thread at a time.
/// Failure:   as TaStreamWritePredictiveCoder.
class TACOMPRESSION_API TaStreamWriteCompressedFloatingPoint : public TaStreamWritePredictiveCoder
{
    TU_DECLARE_RTTI

public:
    /// `version` is the caller's number for what he stores in the block, and stands at its
    /// beginning. `sizeHint` is the size of the floats, in bytes. The codes may differ by all bits
    /// that the quantization has.
    TaStreamWriteCompressedFloatingPoint(TuStreamWriteBinary& stream,
        const TaFloatingPointQuantization& quantization, std::uint32_t version,
        std::uint32_t sizeHint);
    ~TaStreamWriteCompressedFloatingPoint() override;

    void WriteValue(float value, float prediction);
    /// The same as one by one, and faster. There is a prediction for each value.
    void WriteValues(std::span<const float> values, std::span<const float> predictions);

private:
    const TaFloatingPointQuantization& m_quantization;
};
