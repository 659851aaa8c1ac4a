#include "tacompression/tadecompressrangecoder.h"

#include "groundwork/tuexceptions.h"
#include "tacompression/talocalcopy.h"

#include <algorithm>
#include <utility>

TU_DEFINE_RTTI(TaDecompressRangeCoder, TuStreamReadBinary, nullptr, nullptr);

namespace {

constexpr unsigned int kLineBlockTooShort = 93;
constexpr unsigned int kLineBytesRunOut = 141;
constexpr unsigned int kLineTwoBytesRunOut = 160;

constexpr unsigned int kVersion = 0;
constexpr std::uint32_t kMostRawBits = 32;
constexpr std::uint32_t kFewestBytes = 4; // the writer's last register
constexpr std::uint32_t kFirstStep = 65536;

[[noreturn]] void throwRunOut(unsigned int line)
{
    throw TuExceptionStream(TuSource{ __FILE__ }, line, u"the coded block has no more bytes");
}

} // namespace

TaDecompressRangeCoder::TaDecompressRangeCoder(
    TuStreamReadBinary& stream, std::uint32_t symbolCount)
    : m_model(TaProbabilityModelQuasiStatic::CreateUsual(symbolCount))
{
    reset();
    initialize(stream);
}

TaDecompressRangeCoder::TaDecompressRangeCoder(
    TuStreamReadBinary& stream, TuSmartPointer<TaProbabilityModelQuasiStatic> model)
    : m_model(std::move(model))
{
    if (m_model.IsNull()) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"a range coder has a model");
    }
    initialize(stream);
}

TaDecompressRangeCoder::~TaDecompressRangeCoder() = default;

void TaDecompressRangeCoder::ReadSymbols(
    std::span<std::uint32_t> symbols, TaProbabilityModelQuasiStatic& model)
{
    const std::uint32_t totalBits = model.GetTotalBits();
    TaLocalCopy decoder(m_decoder);
    for (std::uint32_t& symbol : symbols) {
        std::uint32_t value = decoder->Find(totalBits);
        std::uint32_t frequency = 0;
        symbol = model.GetSymbol(value, frequency);
        decoder->Take(value, frequency);
    }
}

std::uint32_t TaDecompressRangeCoder::ReadRawBits(std::uint32_t bitCount)
{
    if (bitCount > kMostRawBits) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"raw bits are at most 32 wide");
    }
    return m_decoder.DecodeBits(bitCount);
}

unsigned long long TaDecompressRangeCoder::read(void* data, unsigned long long size)
{
    TaLocalCopy decoder(m_decoder);
    for (unsigned char& byte :
        std::span(static_cast<unsigned char*>(data), static_cast<std::size_t>(size))) {
        byte = decoder->DecodeByte();
    }
    return size;
}

void TaDecompressRangeCoder::reset()
{
    m_decoder = TaRangeDecoder();
    m_buffer.RemoveAll();
    m_model->Reset();
}

/// The count is only a claim: the buffer grows as the bytes arrive.
void TaDecompressRangeCoder::initialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kVersion);
    unsigned int count = 0;
    stream >> count;
    for (std::uint32_t done = 0; done < count;) {
        const std::uint32_t step = std::min(count - done, std::max(done, kFirstStep));
        m_buffer.SetSize(done + step);
        stream.ReadExactly(m_buffer.GetData() + done, step);
        done += step;
    }
    if (count < kFewestBytes) {
        throw TuExceptionStream(
            TuSource{ __FILE__ }, kLineBlockTooShort, u"a coded block has at least four bytes");
    }
    m_decoder = TaRangeDecoder();
    m_decoder.next = m_buffer.GetData();
    m_decoder.end = m_buffer.GetData() + count;
    for (std::uint32_t i = 0; i < kFewestBytes; ++i) {
        m_decoder.code = (m_decoder.code << 8) + *m_decoder.next++;
    }
}

std::uint32_t TaRangeDecoder::loadLast(std::uint32_t count) const
{
    if (end - next < static_cast<std::ptrdiff_t>(count)) {
        throwRunOut(kLineBytesRunOut);
    }
    std::uint32_t ahead = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        ahead |= std::uint32_t{ next[i] } << (24 - 8 * i);
    }
    return ahead;
}

void TaRangeDecoder::takeTwo()
{
    if (end - next < 2) {
        throwRunOut(kLineTwoBytesRunOut);
    }
    code = (code << 16) + (std::uint32_t{ next[0] } << 8) + next[1];
    next += 2;
    low <<= 16;
    range = 0 - low;
}
