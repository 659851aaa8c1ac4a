#include "tacompression/taprobabilitymodelquasistatic.h"

#include "groundwork/tuexceptions.h"

#include <bit>
#include <string>
#include <utility>

namespace {

constexpr unsigned int kLineArguments = 55;

constexpr std::uint32_t kFewestSymbols = 2;
constexpr std::uint32_t kMostTotalBits = 16;
constexpr std::uint32_t kLeastShare = 4; // of the total, for each symbol on average
constexpr std::uint32_t kFirstRescale = 2; // at least

bool areArgumentsSound(
    std::uint32_t symbolCount, std::uint32_t totalBits, std::uint32_t targetRescale)
{
    return symbolCount >= kFewestSymbols && totalBits <= kMostTotalBits
        && symbolCount <= (1U << totalBits) / kLeastShare && targetRescale > 0
        && targetRescale < (2U << totalBits);
}

} // namespace

TaProbabilityModelQuasiStatic::SFrequencies::SFrequencies(std::uint32_t symbolCount)
    : cumFreq(std::make_unique<std::uint32_t[]>(symbolCount + 1))
    , newFreq(std::make_unique<std::uint32_t[]>(symbolCount))
{
}

TaProbabilityModelQuasiStatic::TaProbabilityModelQuasiStatic(
    std::uint32_t symbolCount, std::uint32_t totalBits, std::uint32_t targetRescale)
    : m_symbolCount(symbolCount)
    , m_totalBits(totalBits)
    , m_targetRescale(targetRescale)
{
    if (!areArgumentsSound(symbolCount, totalBits, targetRescale)) {
        throw TuExceptionPreconditionViolation(TuSource{ __FILE__ }, kLineArguments,
            u"a model has at least 2 symbols, at most 16 bits, at least four times as large a total"
            u" as symbols, and a rescaling bound from 1 to less than twice the total");
    }
    m_frequencies = TuMake<SFrequencies>(symbolCount);
    m_cumFreq = m_frequencies->cumFreq.get();
    m_newFreq = m_frequencies->newFreq.get();
    Reset();
}

TuSmartPointer<TaProbabilityModelQuasiStatic> TaProbabilityModelQuasiStatic::CreateUsual(
    std::uint32_t symbolCount)
{
    constexpr std::uint32_t kTotalBits = 16;
    constexpr std::uint32_t kTargetRescale = 1024;
    return TuMake<TaProbabilityModelQuasiStatic>(symbolCount, kTotalBits, kTargetRescale);
}

TaProbabilityModelQuasiStatic::~TaProbabilityModelQuasiStatic() = default;

void TaProbabilityModelQuasiStatic::Reset()
{
    const std::uint32_t total = 1U << m_totalBits;
    const std::uint32_t quotient = total / m_symbolCount;
    const std::uint32_t remainder = total % m_symbolCount;
    std::fill_n(m_newFreq, remainder, quotient + 1);
    std::fill(m_newFreq + remainder, m_newFreq + m_symbolCount, quotient);
    m_cumFreq[0] = 0;
    m_cumFreq[m_symbolCount] = total;
    m_rescale = std::max(m_symbolCount >> 4, kFirstRescale);
    updateFrequencies();
}

void TaProbabilityModelQuasiStatic::throwUnknownSymbol(std::uint32_t symbol) const
{
    throw TuExceptionPreconditionViolation(TU_HERE,
        CString::FromUtf8("the model has the symbols 0 to " + std::to_string(m_symbolCount - 1)
            + ", but not " + std::to_string(symbol)));
}

void TaProbabilityModelQuasiStatic::continueSchedule()
{
    if (m_nextLeft != 0) {
        ++m_increment;
        m_left = std::exchange(m_nextLeft, 0U);
    } else {
        updateFrequencies();
    }
}

/// The counts become the frequencies. Half of each is kept, and what is missing then up to the
/// total is shared out among the updates of the next interval, so that the counts always add up to
/// the total when the interval ends.
void TaProbabilityModelQuasiStatic::updateFrequencies()
{
    const std::uint32_t total = 1U << m_totalBits;
    std::uint64_t sum = 0;
    bool areWithinTotal = true; // and none is 0
    for (std::uint32_t symbol = 0; symbol < m_symbolCount; ++symbol) {
        sum += m_newFreq[symbol];
        areWithinTotal &= m_newFreq[symbol] - 1 < total;
    }
    if (sum != total || !areWithinTotal) {
        m_left = 1; // so that the next update finds it, too
        throw TuExceptionPreconditionViolation(TU_HERE,
            u"a model and a copy of it, which shares its frequencies, are not used in turns");
    }

    m_rescale = std::min(2 * m_rescale, m_targetRescale);
    std::uint32_t cumulative = total;
    std::uint32_t missing = total;
    for (std::uint32_t symbol = m_symbolCount; symbol-- != 0;) {
        std::uint32_t& count = m_newFreq[symbol];
        cumulative -= count;
        m_cumFreq[symbol] = cumulative;
        count = std::max(count >> 1, 1U);
        missing -= count;
    }
    m_increment = missing / m_rescale;
    m_nextLeft = missing % m_rescale;
    m_left = m_rescale - m_nextLeft;
    m_frequencies->isIndexed = false;
}

/// No finer than the interval is long: a short one would not pay for the index.
void TaProbabilityModelQuasiStatic::makeIndex()
{
    SFrequencies& frequencies = *m_frequencies;
    const auto intervalBits = static_cast<std::uint32_t>(std::bit_width(m_rescale));
    const std::uint32_t bits = std::min({ SFrequencies::kIndexBits, m_totalBits, intervalBits });
    const std::uint32_t shift = m_totalBits - bits;
    const std::uint32_t withinStretch = (1U << shift) - 1;
    for (std::uint32_t symbol = 0; symbol < m_symbolCount; ++symbol) {
        std::uint32_t stretch = m_cumFreq[symbol] >> shift;
        const std::uint32_t last = (m_cumFreq[symbol + 1] - 1) >> shift;
        if ((m_cumFreq[symbol] & withinStretch) != 0) { // it begins with another symbol
            frequencies.index[stretch] = (frequencies.index[stretch] & 0xFFFF) | (symbol << 16);
            ++stretch;
        }
        for (; stretch <= last; ++stretch) {
            frequencies.index[stretch] = symbol | (symbol << 16);
        }
    }
    frequencies.indexShift = shift;
    frequencies.isIndexed = true;
}
