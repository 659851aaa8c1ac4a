#include "tacompression/tacompressrangecoder.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tuloglistenermanager.h"
#include "tacompression/talocalcopy.h"

#include <algorithm>
#include <limits>
#include <utility>

TU_DEFINE_RTTI(TaCompressRangeCoder, TuStreamWriteBinary, nullptr, nullptr);

namespace {

constexpr unsigned int kVersion = 0;
constexpr std::uint32_t kMostRawBits = 32;
constexpr std::uint64_t kLeastBuffer = 256;

} // namespace

TaCompressRangeCoder::TaCompressRangeCoder(
    TuStreamWriteBinary& stream, std::uint32_t symbolCount, std::uint32_t initialBufferSize)
    : TaCompressRangeCoder(
        stream, TaProbabilityModelQuasiStatic::CreateUsual(symbolCount), initialBufferSize)
{
}

TaCompressRangeCoder::TaCompressRangeCoder(TuStreamWriteBinary& stream,
    TuSmartPointer<TaProbabilityModelQuasiStatic> model, std::uint32_t initialBufferSize)
    : m_model(std::move(model))
    , m_stream(stream)
{
    if (m_model.IsNull()) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"a range coder has a model");
    }
    m_buffer.SetSize(initialBufferSize);
    reset();
}

TaCompressRangeCoder::~TaCompressRangeCoder()
{
    try {
        flush();
    } catch (const std::exception& failure) {
        logLoss(failure);
    }
}

void TaCompressRangeCoder::logLoss(const std::exception& failure) noexcept
{
    try {
        TuLogListenerManager::GetInstance().NotifyListeners(
            eLL_Error, TU_HERE, u"a coded block is lost: " + CString::FromUtf8(failure.what()));
    } catch (...) { // out of memory: there is no way left to report
    }
}

void TaCompressRangeCoder::WriteSymbols(
    std::span<const std::uint32_t> symbols, TaProbabilityModelQuasiStatic& model)
{
    const std::uint32_t totalBits = model.GetTotalBits();
    while (!symbols.empty()) {
        const auto run = symbols.first(std::min<std::size_t>(symbols.size(), kRun));
        provideRoom(kRunRoom);
        TaLocalCopy encoder(m_encoder);
        for (const std::uint32_t symbol : run) {
            std::uint32_t cumulative = 0;
            std::uint32_t frequency = 0;
            model.GetFrequencies(symbol, cumulative, frequency);
            encoder->Encode(cumulative, frequency, totalBits);
        }
        symbols = symbols.subspan(run.size());
    }
}

void TaCompressRangeCoder::WriteRawBits(std::uint32_t value, std::uint32_t bitCount)
{
    if (bitCount > kMostRawBits) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"raw bits are at most 32 wide");
    }
    provideRoom(TaRangeEncoder::kItemRoom);
    m_encoder.EncodeBits(value, bitCount);
}

void TaCompressRangeCoder::write(const void* data, unsigned long long size)
{
    std::span bytes(static_cast<const unsigned char*>(data), static_cast<std::size_t>(size));
    while (!bytes.empty()) {
        const auto run = bytes.first(std::min<std::size_t>(bytes.size(), kRun));
        provideRoom(kRunRoom);
        TaLocalCopy encoder(m_encoder);
        for (const unsigned char byte : run) {
            encoder->EncodeByte(byte);
        }
        bytes = bytes.subspan(run.size());
    }
}

void TaCompressRangeCoder::reset()
{
    m_encoder = TaRangeEncoder();
    m_encoder.next = m_buffer.GetData();
    m_bufferEnd = m_buffer.GetData() + m_buffer.GetSize();
    m_model->Reset();
}

/// The range of a finished coder is 0: there is nothing left to flush.
void TaCompressRangeCoder::flush()
{
    if (m_encoder.range == 0) {
        return;
    }
    provideRoom(4); // which every item has left over
    m_encoder.storeLow();
    m_encoder.next += 4;
    close();
    m_stream.WriteVersion(kVersion);
    const auto count = static_cast<unsigned int>(m_encoder.next - m_buffer.GetData());
    m_stream << count;
    m_stream.WriteBuffer(m_buffer.GetData(), count);
}

void TaCompressRangeCoder::grow(std::uint32_t bytes)
{
    if (m_encoder.range == 0) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"a finished range coder takes no more");
    }
    const auto used = static_cast<std::uint64_t>(m_encoder.next - m_buffer.GetData());
    const std::uint64_t wanted = std::max(used + bytes, kLeastBuffer);
    if (wanted > std::numeric_limits<std::uint32_t>::max()) {
        throw TuExceptionStream(TU_HERE, u"a coded block has less than 4 GiB");
    }
    m_buffer.SetSize(static_cast<std::uint32_t>(wanted));
    m_buffer.SetSize(m_buffer.GetCapacity());
    m_encoder.next = m_buffer.GetData() + used;
    m_bufferEnd = m_buffer.GetData() + m_buffer.GetSize();
}
