#include "tamesh/meshlines.h"

#include "groundwork/tustreamreadbinary.h"
#include "tamesh/meshfailure.h"
#include "tamesh/progress.h"

#include <algorithm>

namespace tamesh {

namespace {

    constexpr std::string_view kBlanks = " \t\f\v\r";

    // A line is held as a whole; no mesh has one of this length, but a file of zeros is one line.
    constexpr std::uint64_t kLongestLine = std::uint64_t{ 64 } << 20;

    std::string_view trim(std::string_view text)
    {
        const std::size_t begin = text.find_first_not_of(kBlanks);
        return begin == text.npos ? std::string_view()
                                  : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
    }

} // namespace

std::string_view WithoutByteOrderMark(std::string_view text)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return text.substr(text.starts_with(kMark) ? kMark.size() : 0);
}

MeshLines::MeshLines(const SMeshInput& input, std::string_view begun)
    : m_input(input)
    , m_end(std::min(begun.size(), m_buffer.size()))
    , m_taken(m_end)
{
    std::copy_n(begun.begin(), m_end, m_buffer.begin());
}

bool MeshLines::Continue(EComments comments)
{
    if (IsEndOfStream()) {
        m_view = {};
        return false;
    }
    m_lineBegin = m_taken;
    *this >> m_line;
    m_view = m_line;
    if (m_readNumber == 0) {
        m_view = WithoutByteOrderMark(m_view);
    }
    if (m_view.empty() && IsEndOfStream()) {
        return false; // what looks like a last, empty line is the end behind a line end
    }
    if (m_view.ends_with('\n')) {
        m_view.remove_suffix(1);
    }
    m_view = trim(comments == eC_Hash ? m_view.substr(0, m_view.find('#')) : m_view);
    ++m_readNumber;
    return true;
}

bool MeshLines::Next(EComments comments)
{
    bool more = true;
    do {
        more = Continue(comments);
    } while (more && m_view.empty());
    m_number = m_readNumber;
    return more;
}

void MeshLines::Fail(std::string_view text) const
{
    // An empty file fails on its first line, which is missing.
    throw MeshFailure(TU_HERE, m_input.name, std::max(m_number, std::uint64_t{ 1 }), text);
}

bool MeshLines::read(char& c)
{
    for (;;) {
        if (m_position == m_end && !fill()) {
            return true;
        }
        const char unit = m_buffer[m_position++];
        if (unit == '\n' && m_afterReturn) {
            m_afterReturn = false;
            continue;
        }
        m_afterReturn = unit == '\r';
        c = m_afterReturn ? '\n' : unit;
        return false;
    }
}

bool MeshLines::fill()
{
    if (m_taken - m_lineBegin > kLongestLine) {
        m_number = m_readNumber + 1;
        Fail("the line is longer than 64 MiB; this is no text mesh");
    }
    m_position = 0;
    m_end = static_cast<std::size_t>(m_input.stream.ReadBuffer(m_buffer.data(), m_buffer.size()));
    m_taken += m_end;
    if (m_input.progress != nullptr) {
        m_input.progress->Advance(m_taken);
    }
    return m_end != 0;
}

} // namespace tamesh
