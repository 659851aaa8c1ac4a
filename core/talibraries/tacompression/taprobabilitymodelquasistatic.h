#pragma once

#include "groundwork/tureferencecounted.h"
#include "groundwork/tusmartpointer.h"
#include "tacompression/tacompressionapi.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>

/// An adaptive model of how often each of the symbols 0 .. n-1 occurs, for the range coder.
///
/// The frequencies that the coder uses, scaled to the sum T = 2^totalBits, stay as they are for an
/// interval of updates; what was counted meanwhile then replaces them. The first intervals are
/// short, each is twice as long as the one before, up to the bound: a quasi-static model, after
/// M. Schindler's "range coder" (1998). Details differ from the publication (the halving keeps a
/// count above 0 by a floor of 1, and the interval doubles before it is used), and stored data
/// depends on them.
///
/// Writer and reader use models made with the same arguments, each its own, in the same state. Both
/// ends sharing one live model, or a model and its copy used in turns, cannot work: a copy shares
/// the frequencies and has its own schedule. A schedule that does not fit its frequencies any more
/// is noticed when it rescales.
///
/// Ownership: shared, through TuSmartPointer.
/// Threads:   one thread at a time, together with all copies.
/// Failure:   TuExceptionPreconditionViolation for arguments out of range (nothing is made then),
///            for a symbol that the model does not have (nothing changes), and for frequencies that
///            another copy has changed (Reset mends the model).
class TACOMPRESSION_API TaProbabilityModelQuasiStatic : public TuReferenceCounted
{
public:
    /// `symbolCount` is 2 or more, `totalBits` 16 at most, T at least four times the symbol count,
    /// and `targetRescale`, the bound of the interval in updates, from 1 to less than 2 T.
    TaProbabilityModelQuasiStatic(
        std::uint32_t symbolCount, std::uint32_t totalBits, std::uint32_t targetRescale);
    TaProbabilityModelQuasiStatic(const TaProbabilityModelQuasiStatic&) = default;
    TaProbabilityModelQuasiStatic& operator=(const TaProbabilityModelQuasiStatic&) = default;
    ~TaProbabilityModelQuasiStatic() override;

    /// The model that range coders make for themselves: of 16 bits, with a rescaling bound of 1024.
    static TuSmartPointer<TaProbabilityModelQuasiStatic> CreateUsual(std::uint32_t symbolCount);

    /// Back to the start, where all symbols are equally frequent.
    void Reset();

    /// Gives the symbol's share of [0, T), where it begins and how wide it is, and counts it.
    void GetFrequencies(std::uint32_t symbol, std::uint32_t& low, std::uint32_t& frequency)
    {
        if (symbol >= m_symbolCount) [[unlikely]] {
            throwUnknownSymbol(symbol);
        }
        low = m_cumFreq[symbol];
        frequency = m_cumFreq[symbol + 1] - low;
        updateFrequency(symbol);
    }

    /// Returns the symbol in whose share the number `value`, less than T, lies, and counts it.
    /// `value` becomes the beginning of the share. A greater number belongs to the last symbol.
    std::uint32_t GetSymbol(std::uint32_t& value, std::uint32_t& frequency)
    {
        const std::uint32_t symbol = findSymbol(value);
        value = m_cumFreq[symbol];
        frequency = m_cumFreq[symbol + 1] - value;
        updateFrequency(symbol);
        return symbol;
    }

    std::uint32_t GetSymbolCount() const { return m_symbolCount; }
    std::uint32_t GetTotalBits() const { return m_totalBits; }

private:
    /// What copies share: both arrays, and an index that narrows the search for a symbol.
    struct SFrequencies : TuReferenceCounted
    {
        static constexpr std::uint32_t kIndexBits = 10; // at most

        explicit SFrequencies(std::uint32_t symbolCount);

        std::unique_ptr<std::uint32_t[]> cumFreq;
        std::unique_ptr<std::uint32_t[]> newFreq;
        // For each stretch of 2^indexShift numbers, the symbols of the first and (in the upper
        // half) of the last of them. Only readers search, so it is made when it is first asked for.
        std::array<std::uint32_t, 1U << kIndexBits> index;
        std::uint32_t indexShift = 0;
        bool isIndexed = false;
    };

    [[noreturn]] void throwUnknownSymbol(std::uint32_t symbol) const;

    void updateFrequency(std::uint32_t symbol)
    {
        m_newFreq[symbol] += m_increment;
        if (--m_left == 0) [[unlikely]] {
            continueSchedule();
        }
    }
    void continueSchedule();
    void updateFrequencies();
    void makeIndex();
    /// The index leaves the search few symbols, mostly one; the result is that of a search in all.
    std::uint32_t findSymbol(std::uint32_t value)
    {
        SFrequencies& frequencies = *m_frequencies;
        if (!frequencies.isIndexed) [[unlikely]] {
            makeIndex();
        }
        const std::uint32_t lastStretch = (1U << (m_totalBits - frequencies.indexShift)) - 1;
        const std::uint32_t symbols
            = frequencies.index[std::min(value >> frequencies.indexShift, lastStretch)];
        std::uint32_t low = symbols & 0xFFFF;
        std::uint32_t high = (symbols >> 16) + 1;
        while (low + 1 < high) {
            const std::uint32_t middle = (low + high) >> 1;
            if (m_cumFreq[middle] > value) {
                high = middle;
            } else {
                low = middle;
            }
        }
        return low;
    }

    std::uint32_t m_symbolCount;
    std::uint32_t m_totalBits;
    std::uint32_t m_rescale = 0; // updates in this interval
    std::uint32_t m_targetRescale;
    std::uint32_t* m_cumFreq = nullptr; // n + 1: symbol s has [cumFreq[s], cumFreq[s + 1])
    std::uint32_t* m_newFreq = nullptr; // n: what the next interval is made of
    std::uint32_t m_increment = 0; // what an update adds
    std::uint32_t m_left = 0; // updates before the next step of the schedule
    std::uint32_t m_nextLeft = 0; // updates with increment + 1 that follow them
    TuSmartPointer<SFrequencies> m_frequencies; // owns both arrays
};
