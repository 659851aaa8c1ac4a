#pragma once

#include "groundwork/tustreamwritebinary.h"
#include "tacompression/tacompressrangecoder.h"

#include <cstdint>
#include <memory>
#include <span>

/// Writes unsigned numbers by how much they differ from a prediction that the reader can make
/// again: the size class of the difference by an adaptive model, its other bits raw.
///
///     TaStreamWritePredictiveCoder coder(file, 16, expectedSize);
///     for (unsigned int height : heights)
///         coder.WriteValue(height, std::exchange(previous, height));
///     coder.Finish();                       // now the block is in the file
///
/// Everything else that is written to it lies between the numbers, each byte as it is. It can be
/// the target of a further coder, and several blocks can follow one another in one stream. The
/// block: a version, then that of TaCompressRangeCoder.
///
/// Ownership: refers to the target, which must outlive it.
/// Threads:   one thread at a time, together with all that uses the target.
/// Failure:   TuExceptionPreconditionViolation for a difference of more than `maxBits` bits (where
///            the model has no symbol for it) and for a `maxBits` of 0 or more than 8191, otherwise
///            as TaCompressRangeCoder.
class TACOMPRESSION_API TaStreamWritePredictiveCoder : public TuStreamWriteBinary
{
    TU_DECLARE_RTTI

public:
    /// `maxBits` is the number of bits of the greatest difference, in either direction: 32 suffice
    /// for all. `sizeHint` is the size of the numbers uncompressed, in bytes.
    TaStreamWritePredictiveCoder(
        TuStreamWriteBinary& stream, std::uint32_t maxBits, std::uint32_t sizeHint);
    ~TaStreamWritePredictiveCoder() override;
    TaStreamWritePredictiveCoder(const TaStreamWritePredictiveCoder&) = delete;
    TaStreamWritePredictiveCoder& operator=(const TaStreamWritePredictiveCoder&) = delete;

    void WriteValue(std::uint32_t value, std::uint32_t prediction);
    /// The same as one by one, and faster. There is a prediction for each value.
    void WriteValues(
        std::span<const std::uint32_t> values, std::span<const std::uint32_t> predictions);

    /// Writes the block to the target. Nothing can be written afterwards.
    void Finish();

    bool IsCompressing() const override { return true; }

protected:
    /// For a subclass whose blocks have a version of their own.
    TaStreamWritePredictiveCoder(TuStreamWriteBinary& stream, std::uint32_t maxBits,
        std::uint32_t sizeHint, std::uint32_t version);

    void write(const void* data, unsigned long long size) override;

private:
    const std::unique_ptr<TaCompressRangeCoder> m_coder;
    TuStreamWriteBinary& m_stream;
    const std::uint32_t m_maxBits;
    const std::uint32_t m_version;
    bool m_isFinished = false;
};
