#include "tamesh/meshfailure.h"

#include "groundwork/tucheckedcast.h"

#include <utility>

namespace tamesh {

namespace {

    std::string makeReport(std::string_view fileName, std::uint64_t line, std::string_view text)
    {
        std::string report(fileName);
        if (line != 0) {
            report += ':' + std::to_string(line);
        }
        return report.append(": ").append(text);
    }

} // namespace

TU_DEFINE_RTTI(MeshFailure, TuException, nullptr, &MeshFailure::CloneByFactory);

MeshFailure::MeshFailure(const CString& source, unsigned int sourceLine, std::string_view fileName,
    std::uint64_t line, std::string_view text)
    : MeshFailure(source, sourceLine, line, makeReport(fileName, line, text))
{
}

MeshFailure::MeshFailure(
    const CString& source, unsigned int sourceLine, std::uint64_t line, std::string report)
    : TuException(source, sourceLine, CString::FromUtf8(report), RTTI)
    , m_line(line)
    , m_report(std::move(report))
{
}

IObject* MeshFailure::CloneByFactory(const IObject& object)
{
    return new MeshFailure(TuCheckedCast<MeshFailure>(object));
}

std::string Quote(std::string_view text)
{
    constexpr std::size_t kLongest = 40;
    std::string quoted = "\"";
    for (const char unit : text.substr(0, kLongest)) {
        const auto byte = static_cast<unsigned char>(unit);
        quoted += byte < 0x20 || byte >= 0x7F ? '?' : unit;
    }
    return quoted += text.size() > kLongest ? "...\"" : "\"";
}

} // namespace tamesh
