#include "tamesh/files.h"

#include "groundwork/tuexceptions.h"
#include "tamesh/displaytext.h"
#include "tamesh/meshfailure.h"

#include <cstring>
#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>

namespace tamesh {

namespace {

    /// Paths are texts to the library. A name that is none would come back as that of another file.
    CString pathOf(const std::string& name)
    {
        CString path = CString::FromUtf8(name);
        if (path.ToUtf8() != name) {
            throw MeshFailure(TU_HERE, name, 0, "the name is not valid UTF-8");
        }
        return path;
    }

    /// Pipes and devices have no size, which tells the forms of STL apart.
    std::uint64_t findSize(const std::string& name)
    {
        const std::filesystem::path path(pathOf(name).GetView());
        std::error_code error;
        const std::filesystem::file_status status = std::filesystem::status(path, error);
        if (!std::filesystem::exists(status)) {
            return 0; // opening it finds out why
        }
        if (!std::filesystem::is_regular_file(status)) {
            throw MeshFailure(TU_HERE, name, 0,
                std::filesystem::is_directory(status) ? "is a folder, not a file"
                                                      : "is not an ordinary file");
        }
        const std::uintmax_t size = std::filesystem::file_size(path, error);
        return error ? 0 : size;
    }

    /// A file stream's own text names the path, which the report begins with anyway: "cannot open",
    /// but "cannot create a temporary file beside it".
    std::string withoutPath(std::string text, const std::string& name)
    {
        const std::string path = " \"" + name + '"';
        const std::size_t place = text.find(path);
        if (place == text.npos) {
            return text;
        }
        const bool needsObject = std::string_view(text).substr(0, place).ends_with("beside");
        return text.replace(place, path.size(), needsObject ? " it" : "");
    }

} // namespace

InputFile::InputFile(const std::string& name)
    : m_size(findSize(name))
    , m_stream(pathOf(name))
{
}

OutputFile::OutputFile(const std::string& name)
    : m_stream(pathOf(name), TaStreamWriteBinaryFile::eWM_Safe)
{
}

void OutputText::write(const char* text) { m_stream.WriteBuffer(text, std::strlen(text)); }

void OutputText::write(const char16_t* text) { write(CString(text).ToCodePage().c_str()); }

std::string ReportFailure(const std::string& name, const std::exception& failure)
{
    if (const auto* mesh = dynamic_cast<const MeshFailure*>(&failure)) {
        return mesh->GetReport();
    }
    if (dynamic_cast<const TuExceptionOutOfMemory*>(&failure) != nullptr
        || dynamic_cast<const std::bad_alloc*>(&failure) != nullptr) {
        return name + ": there is not enough memory for it";
    }
    const auto* ours = dynamic_cast<const TuException*>(&failure);
    if (ours != nullptr && ours->GetFile() == u"core/talibraries/tabase/tastreamfilebase") {
        return name + ": " + withoutPath(ours->GetCauseText().ToUtf8(), name);
    }
    // A document decides on parts of it: the name of the class it claims to hold, for example.
    return name + ": " + MakeDisplayText(failure.what());
}

} // namespace tamesh
