#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tusmartpointer.h"
#include "groundwork/tustreamwritebinary.h"
#include "tacompression/talocalcopy.h"
#include "tacompression/taprobabilitymodelquasistatic.h"
#include "tacompression/tarangeencoder.h"

#include <cstdint>
#include <exception>
#include <span>

/// Writes symbols of adaptive models, raw bits and bytes as one compact block of another stream.
///
///     TaCompressRangeCoder coder(file, 64, 0);
///     for (unsigned int symbol : symbols)
///         coder << symbol;                  // a symbol of the coder's own model
///     coder.WriteRawBits(tail, 5);
///     coder.Finish();                       // now the block is in the file
///
/// The output operators for char, unsigned char, unsigned short, int, unsigned int, long, unsigned
/// long and long long take the number for a symbol; a char is a signed number here, whatever it is
/// elsewhere, so a negative one is no symbol. All others write what they do in any binary stream,
/// uncompressed. (So std::uint64_t is a symbol where it is unsigned long, and eight bytes where it
/// is unsigned long long: a program whose files travel casts it.)
///
/// The reader repeats the same operations with models made and reset alike. The block: version 0,
/// the count of its bytes in 32 bits, the bytes.
///
/// It is a stream in its implementation only: a record that is written through TuStreamWriteBinary
/// would take its counts and versions for symbols. A stream for any record is
/// TaStreamWritePredictiveCoder.
///
/// Ownership: shares its model; refers to the target, which must outlive it.
/// Threads:   one thread at a time, together with all that uses the model or the target.
/// Failure:   TuExceptionPreconditionViolation for a symbol that the model does not have, for raw
///            bits wider than 32, and after Finish(); TuExceptionOutOfMemory, and TuExceptionStream
///            for a block beyond 4 GiB. The item is then not coded. Nothing reaches the target
///            before the end; what fails there passes out of Finish(), while the destructor, which
///            does the same, can only log it.
class TACOMPRESSION_API TaCompressRangeCoder : protected TuStreamWriteBinary
{
    TU_DECLARE_RTTI

public:
    /// With a model of its own (TaProbabilityModelQuasiStatic::CreateUsual). The buffer is made for
    /// `initialBufferSize` bytes and grows.
    TaCompressRangeCoder(
        TuStreamWriteBinary& stream, std::uint32_t symbolCount, std::uint32_t initialBufferSize);
    /// Shares the model, and resets it.
    TaCompressRangeCoder(TuStreamWriteBinary& stream,
        TuSmartPointer<TaProbabilityModelQuasiStatic> model, std::uint32_t initialBufferSize);
    ~TaCompressRangeCoder() override;
    TaCompressRangeCoder(const TaCompressRangeCoder&) = delete;
    TaCompressRangeCoder& operator=(const TaCompressRangeCoder&) = delete;

    /// Writes the block to the target. Nothing can be coded afterwards.
    void Finish() { flush(); }

    void WriteSymbol(std::uint32_t symbol, TaProbabilityModelQuasiStatic& model)
    {
        provideRoom(TaRangeEncoder::kItemRoom);
        std::uint32_t cumulative = 0;
        std::uint32_t frequency = 0;
        model.GetFrequencies(symbol, cumulative, frequency);
        TaLocalCopy encoder(m_encoder);
        encoder->Encode(cumulative, frequency, model.GetTotalBits());
    }
    /// The same as one by one, and faster.
    void WriteSymbols(std::span<const std::uint32_t> symbols) { WriteSymbols(symbols, *m_model); }
    void WriteSymbols(std::span<const std::uint32_t> symbols, TaProbabilityModelQuasiStatic& model);
    /// The lowest `bitCount` bits of the value. No bits at all are an item, too: the reader must
    /// read them.
    void WriteRawBits(std::uint32_t value, std::uint32_t bitCount);
    void WriteRaw(const void* data, unsigned long long byteCount) { write(data, byteCount); }
    using TuStreamWriteBinary::WriteBuffer;

    TaCompressRangeCoder& operator<<(char value)
    {
        return putSymbol(static_cast<signed char>(value));
    }
    TaCompressRangeCoder& operator<<(unsigned char value) override { return putSymbol(value); }
    TaCompressRangeCoder& operator<<(unsigned short value) override { return putSymbol(value); }
    TaCompressRangeCoder& operator<<(int value) override { return putSymbol(value); }
    TaCompressRangeCoder& operator<<(unsigned int value) override { return putSymbol(value); }
    TaCompressRangeCoder& operator<<(long value) { return putSymbol(value); }
    TaCompressRangeCoder& operator<<(unsigned long value) { return putSymbol(value); }
    TaCompressRangeCoder& operator<<(long long value) override { return putSymbol(value); }

    TaCompressRangeCoder& operator<<(bool value) override { return putBytesOf(value); }
    TaCompressRangeCoder& operator<<(signed char value) override { return putBytesOf(value); }
    TaCompressRangeCoder& operator<<(short value) override { return putBytesOf(value); }
    TaCompressRangeCoder& operator<<(unsigned long long value) override
    {
        return putBytesOf(value);
    }
    TaCompressRangeCoder& operator<<(float value) override { return putBytesOf(value); }
    TaCompressRangeCoder& operator<<(double value) override { return putBytesOf(value); }
    TaCompressRangeCoder& operator<<(const char* text) override { return putBytesOf(text); }
    TaCompressRangeCoder& operator<<(const char16_t* text) override { return putBytesOf(text); }
    /// All else that a binary stream takes.
    template <class T>
    requires requires(TuStreamWrite& base, const T& value) { base.operator<<(value); }
    TaCompressRangeCoder& operator<<(const T& value) { return putBytesOf(value); }

    bool IsCompressing() const override { return true; }

protected:
    /// Each byte by itself, all of them equally frequent.
    void write(const void* data, unsigned long long size) override;

private:
    friend class TaStreamWritePredictiveCoder; // codes runs as WriteSymbols does, and ends likewise

    using Buffer = TuArray<unsigned char, TuArrayPolicyConstructUninitialised>;

    // Bulk operations code runs of at most so many symbols (with raw bits behind them, or not) or
    // bytes, for which there is room.
    static constexpr std::uint32_t kRun = 1024;
    static constexpr std::uint32_t kValueRoom = 2 * TaRangeEncoder::kItemRoom;
    static constexpr std::uint32_t kRunRoom = kRun * kValueRoom;

    template <class T> TaCompressRangeCoder& putSymbol(T value)
    {
        WriteSymbol(static_cast<std::uint32_t>(value), *m_model);
        return *this;
    }
    template <class T> TaCompressRangeCoder& putBytesOf(const T& value)
    {
        TuStreamWriteBinary::operator<<(value);
        return *this;
    }

    /// For a destructor, which must not fail.
    static void logLoss(const std::exception& failure) noexcept;

    void flush();
    void reset();
    /// Nothing is coded any more: there is no room for it. What is coded and not yet written never
    /// is.
    void close()
    {
        m_encoder.range = 0;
        m_bufferEnd = m_encoder.next;
    }

    void provideRoom(std::uint32_t bytes)
    {
        if (m_bufferEnd - m_encoder.next < static_cast<std::ptrdiff_t>(bytes)) [[unlikely]] {
            grow(bytes);
        }
    }
    void grow(std::uint32_t bytes);

    TaRangeEncoder m_encoder; // low, range, and the end of what is coded
    TuSmartPointer<TaProbabilityModelQuasiStatic> m_model;
    Buffer m_buffer;
    const unsigned char* m_bufferEnd = nullptr;
    TuStreamWriteBinary& m_stream;
};
