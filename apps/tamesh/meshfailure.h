#pragma once

#include "groundwork/tuexception.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tamesh {

/// What is wrong with a file that the user named: the text that the user reads, with the line where
/// there is one.
class MeshFailure : public TuException
{
    TU_DECLARE_RTTI

public:
    /// `line` counts from 1; 0 stands for the file as a whole.
    MeshFailure(const CString& source, unsigned int sourceLine, std::string_view fileName,
        std::uint64_t line, std::string_view text);

    /// "FILE:LINE: what is wrong", or without line "FILE: what is wrong".
    const std::string& GetReport() const { return m_report; }
    std::uint64_t GetMeshLine() const { return m_line; }

private:
    MeshFailure(
        const CString& source, unsigned int sourceLine, std::uint64_t line, std::string report);
    static IObject* CloneByFactory(const IObject& object);

    std::uint64_t m_line;
    std::string m_report;
};

/// A piece of a file, in quotes, fit to be shown: cut where it is long, and with a question mark
/// for each byte that would do something to a terminal.
std::string Quote(std::string_view text);

} // namespace tamesh
