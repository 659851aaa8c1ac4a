#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

/// The range coder and its model once more, in plain loops one byte and one symbol at a time, for
/// tests to compare with: it shares nothing with the library but the names.
class ReferenceModel
{
public:
    ReferenceModel(std::uint32_t symbolCount, std::uint32_t totalBits, std::uint32_t targetRescale)
        : m_totalBits(totalBits)
        , m_targetRescale(targetRescale)
        , m_newFreq(symbolCount)
        , m_cumFreq(symbolCount + 1)
    {
        const std::uint32_t total = 1U << totalBits;
        for (std::uint32_t symbol = 0; symbol < symbolCount; ++symbol) {
            m_newFreq[symbol] = total / symbolCount + (symbol < total % symbolCount ? 1 : 0);
        }
        m_cumFreq[symbolCount] = total;
        m_rescale = std::max(symbolCount >> 4, 2U);
        rescale();
    }

    std::uint32_t GetTotalBits() const { return m_totalBits; }
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
        m_rescale = std::min(2 * m_rescale, m_targetRescale);
        std::uint32_t running = 1U << m_totalBits;
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

    std::uint32_t m_totalBits;
    std::uint32_t m_rescale = 0;
    std::uint32_t m_targetRescale;
    std::vector<std::uint32_t> m_newFreq;
    std::vector<std::uint32_t> m_cumFreq;
    std::uint32_t m_increment = 0;
    std::uint32_t m_left = 0;
    std::uint32_t m_nextLeft = 0;
};

class ReferenceEncoder
{
public:
    void WriteSymbol(std::uint32_t symbol, ReferenceModel& model)
    {
        const std::uint32_t unit = m_range >> model.GetTotalBits();
        m_low += unit * model.GetLow(symbol);
        m_range = unit * model.GetFrequency(symbol);
        model.Update(symbol);
        normalize();
    }
    void WriteRawBits(std::uint32_t value, std::uint32_t width)
    {
        if (width != 32) {
            value &= (1U << width) - 1;
        }
        if (width >= 17) {
            m_range >>= width - 16;
            m_low += (value >> 16) * m_range;
            normalize();
            width = 16;
            value &= 0xFFFF;
        }
        m_range >>= width;
        m_low += value * m_range;
        normalize();
    }
    void WriteRaw(const unsigned char* byte, std::size_t size)
    {
        for (; size > 0; --size) {
            m_range >>= 8;
            m_low += *byte++ * m_range;
            normalize();
        }
    }
    /// Version 0, the count, the bytes.
    std::vector<unsigned char> Finish()
    {
        for (int i = 0; i < 4; ++i) {
            putTopByte();
        }
        const std::size_t count = m_bytes.size();
        std::vector<unsigned char> block(4);
        for (int shift = 0; shift < 32; shift += 8) {
            block.push_back(static_cast<unsigned char>(count >> shift));
        }
        block.insert(block.end(), m_bytes.begin(), m_bytes.end());
        return block;
    }

private:
    void normalize()
    {
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
    std::vector<unsigned char> m_bytes;
};
