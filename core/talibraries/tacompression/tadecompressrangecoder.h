#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tusmartpointer.h"
#include "groundwork/tustreamreadbinary.h"
#include "tacompression/taprobabilitymodelquasistatic.h"
#include "tacompression/tarangedecoder.h"

#include <cstdint>
#include <span>

/// Reads what TaCompressRangeCoder has written, by the same operations in the same order.
///
/// The whole block is read when the reader is made; the source then stands behind it.
///
/// Other operations or models than the writer's cannot be recognised: the values are then wrong,
/// but every read ends, and the block yields no more of them than its bytes allow or the caller
/// asks for. Symbols are always symbols of the model.
///
/// Ownership: shares its model; refers to the source while it is made.
/// Threads:   one thread at a time, together with all that uses the model.
/// Failure:   TuExceptionStream for a block that is cut off or too short, and where the coded bytes
///            run out; all further reads fail, too. TuExceptionWrongFileVersion for a block of a
///            later version. TuExceptionPreconditionViolation for raw bits wider than 32.
class TACOMPRESSION_API TaDecompressRangeCoder : protected TuStreamReadBinary
{
    TU_DECLARE_RTTI

public:
    /// With a model of its own (TaProbabilityModelQuasiStatic::CreateUsual).
    TaDecompressRangeCoder(TuStreamReadBinary& stream, std::uint32_t symbolCount);
    /// Shares the model, as it is: reset it first where the writer's began with this block, as it
    /// always does for the model that the writer was given.
    TaDecompressRangeCoder(
        TuStreamReadBinary& stream, TuSmartPointer<TaProbabilityModelQuasiStatic> model);
    ~TaDecompressRangeCoder() override;
    TaDecompressRangeCoder(const TaDecompressRangeCoder&) = delete;
    TaDecompressRangeCoder& operator=(const TaDecompressRangeCoder&) = delete;

    std::uint32_t ReadSymbol(TaProbabilityModelQuasiStatic& model)
    {
        std::uint32_t value = m_decoder.Find(model.GetTotalBits());
        std::uint32_t frequency = 0;
        const std::uint32_t symbol = model.GetSymbol(value, frequency);
        m_decoder.Take(value, frequency);
        return symbol;
    }
    /// The same as one by one, and faster.
    void ReadSymbols(std::span<std::uint32_t> symbols) { ReadSymbols(symbols, *m_model); }
    void ReadSymbols(std::span<std::uint32_t> symbols, TaProbabilityModelQuasiStatic& model);
    /// What WriteRawBits wrote with the same width. Damaged data may give more bits than that.
    std::uint32_t ReadRawBits(std::uint32_t bitCount);
    unsigned long long ReadRaw(void* data, unsigned long long size) { return read(data, size); }
    using TuStreamReadBinary::ReadBuffer;
    using TuStreamReadBinary::ReadExactly;

    TaDecompressRangeCoder& operator>>(char& value) { return takeSymbol(value); }
    TaDecompressRangeCoder& operator>>(unsigned char& value) override { return takeSymbol(value); }
    TaDecompressRangeCoder& operator>>(unsigned short& value) override { return takeSymbol(value); }
    TaDecompressRangeCoder& operator>>(int& value) override { return takeSymbol(value); }
    TaDecompressRangeCoder& operator>>(unsigned int& value) override { return takeSymbol(value); }
    TaDecompressRangeCoder& operator>>(long& value) { return takeSymbol(value); }
    TaDecompressRangeCoder& operator>>(unsigned long& value) { return takeSymbol(value); }
    TaDecompressRangeCoder& operator>>(long long& value) override { return takeSymbol(value); }

    TaDecompressRangeCoder& operator>>(bool& value) override { return takeBytesOf(value); }
    TaDecompressRangeCoder& operator>>(signed char& value) override { return takeBytesOf(value); }
    TaDecompressRangeCoder& operator>>(short& value) override { return takeBytesOf(value); }
    TaDecompressRangeCoder& operator>>(unsigned long long& value) override
    {
        return takeBytesOf(value);
    }
    TaDecompressRangeCoder& operator>>(float& value) override { return takeBytesOf(value); }
    TaDecompressRangeCoder& operator>>(double& value) override { return takeBytesOf(value); }
    TaDecompressRangeCoder& operator>>(CStringA& text) override { return takeBytesOf(text); }
    TaDecompressRangeCoder& operator>>(CString& text) override { return takeBytesOf(text); }

protected:
    unsigned long long read(void* data, unsigned long long size) override;

private:
    friend class TaStreamReadPredictiveCoder; // reads runs of items as ReadSymbols does

    template <class T> TaDecompressRangeCoder& takeSymbol(T& value)
    {
        value = static_cast<T>(ReadSymbol(*m_model));
        return *this;
    }
    template <class T> TaDecompressRangeCoder& takeBytesOf(T& value)
    {
        TuStreamReadBinary::operator>>(value);
        return *this;
    }

    void initialize(TuStreamReadBinary& stream);
    void reset();

    TaRangeDecoder m_decoder; // code, low, range, and what is left of the buffer
    TuSmartPointer<TaProbabilityModelQuasiStatic> m_model;
    TuArray<unsigned char, TuArrayPolicyConstructUninitialised> m_buffer; // the block
};
