#include "tacompression/tastreamwritepredictivecoder.h"

#include "groundwork/tuexceptions.h"
#include "tacompression/predictivesymbols.h"
#include "tacompression/talocalcopy.h"

#include <algorithm>
#include <bit>
#include <utility>

TU_DEFINE_RTTI(TaStreamWritePredictiveCoder, TuStreamWriteBinary, nullptr, nullptr);

namespace {

/// A difference is a symbol for its sign and its highest bit, and the bits below that. Inlined
/// always: called, it would keep the registers in memory.
[[gnu::always_inline]] inline void encodeValue(TaRangeEncoder& encoder,
    TaProbabilityModelQuasiStatic& model, std::uint32_t maxBits, std::uint32_t value,
    std::uint32_t prediction)
{
    const bool isGreater = value > prediction;
    const std::uint32_t difference = isGreater ? value - prediction : prediction - value;
    const auto bits = static_cast<std::uint32_t>(std::bit_width(difference));
    // A symbol below 0 wraps around, and is refused as those beyond the others.
    const std::uint32_t symbol = isGreater ? maxBits + bits : maxBits - bits;
    std::uint32_t cumulative = 0;
    std::uint32_t frequency = 0;
    model.GetFrequencies(symbol, cumulative, frequency);
    encoder.Encode(cumulative, frequency, model.GetTotalBits());
    if (bits != 0) {
        encoder.EncodeBits(difference, bits - 1);
    }
}

} // namespace

TaStreamWritePredictiveCoder::TaStreamWritePredictiveCoder(
    TuStreamWriteBinary& stream, std::uint32_t maxBits, std::uint32_t sizeHint)
    : TaStreamWritePredictiveCoder(stream, maxBits, sizeHint, 0)
{
}

TaStreamWritePredictiveCoder::TaStreamWritePredictiveCoder(TuStreamWriteBinary& stream,
    std::uint32_t maxBits, std::uint32_t sizeHint, std::uint32_t version)
    : m_coder(std::make_unique<TaCompressRangeCoder>(
        stream, GetPredictiveSymbolCount(maxBits), sizeHint >> 2))
    , m_stream(stream)
    , m_maxBits(maxBits)
    , m_version(version)
{
}

TaStreamWritePredictiveCoder::~TaStreamWritePredictiveCoder()
{
    try {
        Finish();
    } catch (const std::exception& failure) {
        TaCompressRangeCoder::logLoss(failure);
    }
}

void TaStreamWritePredictiveCoder::WriteValue(std::uint32_t value, std::uint32_t prediction)
{
    m_coder->provideRoom(TaCompressRangeCoder::kValueRoom);
    TaLocalCopy encoder(m_coder->m_encoder);
    encodeValue(*encoder, *m_coder->m_model, m_maxBits, value, prediction);
}

void TaStreamWritePredictiveCoder::WriteValues(
    std::span<const std::uint32_t> values, std::span<const std::uint32_t> predictions)
{
    if (values.size() != predictions.size()) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"there is a prediction for each value");
    }
    TaProbabilityModelQuasiStatic& model = *m_coder->m_model;
    const std::uint32_t maxBits = m_maxBits;
    for (std::size_t done = 0; done < values.size();) {
        const std::size_t end = std::min(values.size(), done + TaCompressRangeCoder::kRun);
        m_coder->provideRoom(TaCompressRangeCoder::kRunRoom);
        TaLocalCopy encoder(m_coder->m_encoder);
        for (; done < end; ++done) {
            encodeValue(*encoder, model, maxBits, values[done], predictions[done]);
        }
    }
}

/// The version comes first, although everything else was coded before.
void TaStreamWritePredictiveCoder::Finish()
{
    if (std::exchange(m_isFinished, true)) {
        return;
    }
    try {
        m_stream.WriteVersion(m_version);
    } catch (...) {
        m_coder->close();
        throw;
    }
    m_coder->Finish();
}

void TaStreamWritePredictiveCoder::write(const void* data, unsigned long long size)
{
    m_coder->WriteRaw(data, size);
}
