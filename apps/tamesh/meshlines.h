#pragma once

#include "tabase/tastreamreadascii.h"
#include "tamesh/meshinput.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tamesh {

/// Some programs begin every text with a byte order mark, though UTF-8 needs none.
std::string_view WithoutByteOrderMark(std::string_view text);

/// The lines of a text mesh, with their numbers.
///
/// It supplies the library's text reader with bytes and makes one LF of each line end, be it LF,
/// CR LF or CR alone: the reader's own line rule drops the byte behind a CR whatever it is, and
/// would eat into the next line of a file with CR alone.
class MeshLines final : private TaStreamReadASCII
{
public:
    /// `begun` are bytes that were already taken from the input.
    explicit MeshLines(const SMeshInput& input, std::string_view begun = {});
    MeshLines(const MeshLines&) = delete;
    MeshLines& operator=(const MeshLines&) = delete;

    enum EComments
    {
        eC_None,
        eC_Hash, // from # to the end of the line
    };

    /// Goes to the next line that holds more than blanks and a comment; false at the end.
    bool Next(EComments comments = eC_Hash);
    /// Goes to the very next line, be it blank, as to one that the current line goes on in: it
    /// keeps the number.
    bool Continue(EComments comments = eC_Hash);

    /// Without line end, comment and outer blanks.
    std::string_view GetLine() const { return m_view; }
    /// Counts from 1. Behind the end it is that of the last line.
    std::uint64_t GetNumber() const { return m_number; }

    /// Throws MeshFailure for the current line.
    [[noreturn]] void Fail(std::string_view text) const;

private:
    bool read(char& c) override;
    bool fill();

    SMeshInput m_input;
    CStringA m_line;
    std::string_view m_view;
    std::uint64_t m_number = 0;
    std::uint64_t m_readNumber = 0; // of the line read last; above m_number where that goes on

    std::array<char, 65536> m_buffer{};
    std::size_t m_position = 0;
    std::size_t m_end = 0;
    std::uint64_t m_taken = 0; // bytes, from the start of the input
    std::uint64_t m_lineBegin = 0; // what had been taken when the line was begun
    bool m_afterReturn = false; // an LF that comes now belongs to the CR before it
};

} // namespace tamesh
