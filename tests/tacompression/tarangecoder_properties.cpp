#include "support/memorystreams.h"
#include "tacompression/tacompressrangecoder.h"
#include "tacompression/tadecompressrangecoder.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <memory>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<unsigned char>;
using Model = TaProbabilityModelQuasiStatic;

struct SArguments
{
    std::uint32_t symbolCount, totalBits, targetRescale;
};

/// The model once more, in plain loops: it shares nothing with the library's but the name.
class ReferenceModel
{
public:
    explicit ReferenceModel(const SArguments& arguments)
        : m_arguments(arguments)
        , m_newFreq(arguments.symbolCount)
        , m_cumFreq(arguments.symbolCount + 1)
        , m_rescale(std::max(arguments.symbolCount >> 4, 2U))
    {
        const std::uint32_t total = 1U << arguments.totalBits;
        const std::uint32_t count = arguments.symbolCount;
        for (std::uint32_t symbol = 0; symbol < count; ++symbol) {
            m_newFreq[symbol] = total / count + (symbol < total % count ? 1 : 0);
        }
        m_cumFreq[count] = total;
        rescale();
    }

    std::uint32_t GetTotalBits() const { return m_arguments.totalBits; }
    std::uint32_t GetLow(std::uint32_t symbol) const { return m_cumFreq[symbol]; }
    std::uint32_t GetFrequency(std::uint32_t symbol) const
    {
        return m_cumFreq[symbol + 1] - m_cumFreq[symbol];
    }
    void Update(std::uint32_t symbol)
    {
        m_newFreq[symbol] += m_increment;
        m_left -= 1;
        if (m_left != 0) {
            return;
        }
        if (m_nextLeft != 0) {
            m_increment += 1;
            m_left = m_nextLeft;
            m_nextLeft = 0;
            return;
        }
        rescale();
    }

private:
    void rescale()
    {
        m_rescale = std::min(2 * m_rescale, m_arguments.targetRescale);
        std::uint32_t running = 1U << m_arguments.totalBits;
        std::uint32_t missing = running;
        for (std::size_t symbol = m_newFreq.size(); symbol-- > 0;) {
            running -= m_newFreq[symbol];
            m_cumFreq[symbol] = running;
            m_newFreq[symbol] = std::max(m_newFreq[symbol] >> 1, 1U);
            missing -= m_newFreq[symbol];
        }
        m_increment = missing / m_rescale;
        m_nextLeft = missing % m_rescale;
        m_left = m_rescale - m_nextLeft;
    }

    const SArguments m_arguments;
    std::vector<std::uint32_t> m_newFreq;
    std::vector<std::uint32_t> m_cumFreq;
    std::uint32_t m_rescale;
    std::uint32_t m_increment = 0;
    std::uint32_t m_left = 0;
    std::uint32_t m_nextLeft = 0;
};

/// The writer once more, one byte at a time.
class ReferenceEncoder
{
public:
    void WriteSymbol(std::uint32_t symbol, ReferenceModel& model)
    {
        encode(model.GetLow(symbol), model.GetFrequency(symbol), model.GetTotalBits());
        model.Update(symbol);
    }
    void WriteRawBits(std::uint32_t value, std::uint32_t width)
    {
        if (width > 16) {
            encode(value >> 16, 1, width - 16);
            encode(value & 0xFFFF, 1, 16);
        } else {
            encode(value, 1, width);
        }
    }
    /// Version 0, the count, the bytes.
    Bytes Finish()
    {
        for (int i = 0; i < 4; ++i) {
            putTopByte();
        }
        Bytes block(4);
        for (int shift = 0; shift < 32; shift += 8) {
            block.push_back(static_cast<unsigned char>(m_bytes.size() >> shift));
        }
        block.insert(block.end(), m_bytes.begin(), m_bytes.end());
        return block;
    }

private:
    void encode(std::uint32_t cumulative, std::uint32_t frequency, std::uint32_t totalBits)
    {
        const std::uint32_t unit = m_range >> totalBits;
        m_low += unit * cumulative;
        m_range = unit * frequency;
        while (((m_low + m_range) ^ m_low) < (1U << 24)) {
            putTopByte();
            m_range <<= 8;
        }
        if (m_range < (1U << 16)) {
            putTopByte();
            putTopByte();
            m_range = 0 - m_low;
        }
    }
    void putTopByte()
    {
        m_bytes.push_back(static_cast<unsigned char>(m_low >> 24));
        m_low <<= 8;
    }

    std::uint32_t m_low = 0;
    std::uint32_t m_range = 0xFFFFFFFF;
    Bytes m_bytes;
};

/// Some items of a kind, for each of which the library has a way to code them at once.
struct SRun
{
    bool isSymbols; // or raw bits
    bool isAtOnce;
    std::uint32_t width;
    std::vector<std::uint32_t> values;

    bool IsBytes() const { return !isSymbols && isAtOnce; }
};

SRun makeRun(std::uint32_t symbolCount)
{
    SRun run{ *rc::gen::arbitrary<bool>(), *rc::gen::arbitrary<bool>(), *rc::gen::inRange(0u, 33u),
        std::vector<std::uint32_t>(*rc::gen::inRange<std::size_t>(0, 3000)) };
    run.width = run.IsBytes() ? 8 : run.width;
    std::mt19937 random(*rc::gen::arbitrary<unsigned int>());
    const std::uint32_t skew = *rc::gen::arbitrary<bool>() ? symbolCount : 1;
    for (std::uint32_t& value : run.values) {
        const auto number = static_cast<std::uint32_t>(random());
        value = run.isSymbols ? number % (symbolCount - number / symbolCount % skew)
                              : static_cast<std::uint32_t>(number & ((1ULL << run.width) - 1));
    }
    return run;
}

RC_GTEST_PROP(TaRangeCoderProperties, AnyItemsHaveTheBytesOfThePlainCoderAndComeBack, ())
{
    const auto [symbolCount, fewestBits] = *rc::gen::element(std::pair(2U, 3U), std::pair(3U, 4U),
        std::pair(64U, 8U), std::pair(1000U, 12U), std::pair(16384U, 16U));
    const auto totalBits = *rc::gen::inRange(fewestBits, 17u);
    const auto bound = *rc::gen::element(16u, 2U << totalBits);
    const SArguments arguments{ symbolCount, totalBits, *rc::gen::inRange(1u, bound) };
    ReferenceModel referenceModel(arguments);
    ReferenceEncoder reference;
    Model model(symbolCount, totalBits, arguments.targetRescale);
    std::vector<SRun> runs;
    for (auto count = *rc::gen::inRange(0, 20); count > 0; --count) {
        runs.push_back(makeRun(symbolCount));
    }

    const Bytes bytes = WriteToBytes([&](TuStreamWriteBinary& target) {
        TaCompressRangeCoder coder(target, 2, *rc::gen::inRange(0u, 100'000u));
        for (const auto& [isSymbols, isAtOnce, width, values] : runs) {
            if (isAtOnce && isSymbols) {
                coder.WriteSymbols(values, model);
            } else if (isAtOnce) {
                coder.WriteRaw(Bytes(values.begin(), values.end()).data(), values.size());
            }
            for (const std::uint32_t value : values) {
                if (isSymbols) {
                    reference.WriteSymbol(value, referenceModel);
                } else {
                    reference.WriteRawBits(value, width);
                }
                if (!isAtOnce && isSymbols) {
                    coder.WriteSymbol(value, model);
                } else if (!isAtOnce) {
                    coder.WriteRawBits(value, width);
                }
            }
        }
    });
    RC_ASSERT(bytes == reference.Finish());

    model.Reset();
    RC_ASSERT(ReadFromBytes(bytes, [&](TuStreamReadBinary& source) {
        TaDecompressRangeCoder coder(source, 2);
        for (const SRun& run : runs) {
            std::vector<std::uint32_t> found(run.values.size());
            if (run.isSymbols && !run.isAtOnce) { // the other way than they were written
                coder.ReadSymbols(found, model);
            } else if (run.IsBytes()) {
                Bytes raw(found.size());
                coder.ReadExactly(raw.data(), raw.size());
                found.assign(raw.begin(), raw.end());
            } else {
                for (std::uint32_t& value : found) {
                    value = run.isSymbols ? coder.ReadSymbol(model) : coder.ReadRawBits(run.width);
                }
            }
            RC_ASSERT(found == run.values);
        }
    }));
}

} // namespace
