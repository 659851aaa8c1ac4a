#pragma once

#include "groundwork/tustreamreadbinary.h"
#include "tacompression/tadecompressrangecoder.h"

#include <cstdint>
#include <memory>
#include <span>

/// Reads what TaStreamWritePredictiveCoder has written, with the same `maxBits` and the same
/// predictions, in the same order.
///
/// The whole block is read when the reader is made; the source then stands behind it. Other
/// predictions or bits than the writer's cannot be recognised: the values are then wrong.
///
/// Ownership: refers to the source while the block is read.
/// Threads:   one thread at a time.
/// Failure:   as TaDecompressRangeCoder; TuExceptionStream also for a difference of more than 32
///            bits, which only damaged data have.
class TACOMPRESSION_API TaStreamReadPredictiveCoder : public TuStreamReadBinary
{
    TU_DECLARE_RTTI

public:
    TaStreamReadPredictiveCoder(TuStreamReadBinary& stream, std::uint32_t maxBits);
    ~TaStreamReadPredictiveCoder() override;
    TaStreamReadPredictiveCoder(const TaStreamReadPredictiveCoder&) = delete;
    TaStreamReadPredictiveCoder& operator=(const TaStreamReadPredictiveCoder&) = delete;

    std::uint32_t ReadValue(std::uint32_t prediction);
    /// The same as one by one, and faster, for predictions that do not depend on these values.
    /// There is one for each value; it may lie where the value goes.
    void ReadValues(std::span<const std::uint32_t> predictions, std::span<std::uint32_t> values);

protected:
    /// For a subclass whose blocks have a version of their own: it calls initialize.
    TaStreamReadPredictiveCoder(std::uint32_t maxBits, std::uint32_t version);
    /// Reads the block. TuExceptionWrongFileVersion when its version is greater than the reader's.
    void initialize(TuStreamReadBinary& stream);

    unsigned long long read(void* data, unsigned long long size) override;

private:
    TaDecompressRangeCoder& getCoder() const;

    std::unique_ptr<TaDecompressRangeCoder> m_coder; // null until the block is read
    const std::uint32_t m_maxBits;
    const std::uint32_t m_version;
};
