#include "tacompression/tastreamreadpredictivecoder.h"

#include "groundwork/tuexceptions.h"
#include "tacompression/predictivesymbols.h"
#include "tacompression/talocalcopy.h"

TU_DEFINE_RTTI(TaStreamReadPredictiveCoder, TuStreamReadBinary, nullptr, nullptr);

namespace {

constexpr std::uint32_t kMostBits = 32;

[[noreturn]] void throwTooManyBits()
{
    throw TuExceptionStream(TU_HERE, u"a coded difference has more than 32 bits");
}

std::uint32_t decodeValue(TaRangeDecoder& decoder, TaProbabilityModelQuasiStatic& model,
    std::uint32_t maxBits, std::uint32_t prediction)
{
    std::uint32_t value = decoder.Find(model.GetTotalBits());
    std::uint32_t frequency = 0;
    const std::uint32_t symbol = model.GetSymbol(value, frequency);
    decoder.Take(value, frequency);
    if (symbol == maxBits) {
        return prediction;
    }
    const bool isGreater = symbol > maxBits;
    const std::uint32_t bits = isGreater ? symbol - maxBits : maxBits - symbol;
    if (bits > kMostBits) {
        throwTooManyBits();
    }
    const std::uint32_t difference = (1U << (bits - 1)) + decoder.DecodeBits(bits - 1);
    return isGreater ? prediction + difference : prediction - difference;
}

} // namespace

TaStreamReadPredictiveCoder::TaStreamReadPredictiveCoder(
    TuStreamReadBinary& stream, std::uint32_t maxBits)
    : TaStreamReadPredictiveCoder(maxBits, 0)
{
    initialize(stream);
}

TaStreamReadPredictiveCoder::TaStreamReadPredictiveCoder(
    std::uint32_t maxBits, std::uint32_t version)
    : m_maxBits(maxBits)
    , m_version(version)
{
}

TaStreamReadPredictiveCoder::~TaStreamReadPredictiveCoder() = default;

std::uint32_t TaStreamReadPredictiveCoder::ReadValue(std::uint32_t prediction)
{
    TaDecompressRangeCoder& coder = getCoder();
    return decodeValue(coder.m_decoder, *coder.m_model, m_maxBits, prediction);
}

void TaStreamReadPredictiveCoder::ReadValues(
    std::span<const std::uint32_t> predictions, std::span<std::uint32_t> values)
{
    if (values.size() != predictions.size()) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"there is a prediction for each value");
    }
    TaDecompressRangeCoder& coder = getCoder();
    TaProbabilityModelQuasiStatic& model = *coder.m_model;
    const std::uint32_t maxBits = m_maxBits;
    TaLocalCopy decoder(coder.m_decoder);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = decodeValue(*decoder, model, maxBits, predictions[i]);
    }
}

void TaStreamReadPredictiveCoder::initialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(m_version);
    m_coder = std::make_unique<TaDecompressRangeCoder>(stream, GetPredictiveSymbolCount(m_maxBits));
}

unsigned long long TaStreamReadPredictiveCoder::read(void* data, unsigned long long size)
{
    return getCoder().ReadRaw(data, size);
}

TaDecompressRangeCoder& TaStreamReadPredictiveCoder::getCoder() const
{
    if (m_coder == nullptr) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"the block is read before its values are");
    }
    return *m_coder;
}
