#include "tamesh/documentcommands.h"

#include "tabase/tastreamwritebinarybuffer.h"
#include "tamesh/displaytext.h"
#include "tamesh/documentsurvey.h"
#include "tamesh/figurelines.h"
#include "tamesh/guard.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <span>

namespace tamesh {

namespace {

    /// A whole file, in memory that grows as it comes.
    class FileBytes
    {
    public:
        FileBytes(IConsole& console, const std::string& name)
        {
            InputFile file(name);
            Progress progress(console, "reading " + name, file.GetSize());
            std::array<unsigned char, 65536> bytes;
            for (unsigned long long count = bytes.size(); count == bytes.size();) {
                count = file.GetStream().ReadBuffer(bytes.data(), bytes.size());
                m_bytes.WriteBuffer(bytes.data(), count);
                progress.Advance(m_bytes.GetSize());
            }
        }
        std::span<const unsigned char> Get() const
        {
            return { m_bytes.GetData(), m_bytes.GetSize() };
        }

    private:
        TaStreamWriteBinaryBuffer m_bytes;
    };

    using Survey = DocumentSurvey;

    std::string nameOf(const Survey::SItem& item)
    {
        return item.state == Survey::eS_Foreign ? "bytes" : MakeDisplayText(item.name.ToUtf8());
    }

    std::string describe(const Survey& survey)
    {
        switch (survey.GetForm()) {
        case Survey::eF_Old:
            return "document of version " + std::to_string(survey.GetVersion());
        case Survey::eF_Chunks:
            return survey.GetProgram().IsEmpty()
                ? "document"
                : "document by " + MakeDisplayText(survey.GetProgram().ToUtf8());
        case Survey::eF_Later:
            return "document of a later version";
        case Survey::eF_None:
            break;
        }
        return "no document";
    }

    /// Nothing where there are documents' bytes to be looked at.
    std::string findRefusal(const Survey& survey)
    {
        switch (survey.GetForm()) {
        case Survey::eF_None:
            return "this is no document, and holds no chunk of one";
        case Survey::eF_Later:
            return "the document is of a later version than this program knows";
        case Survey::eF_Old:
        case Survey::eF_Chunks:
            break;
        }
        return {};
    }

    std::string listChunks(const std::string& name, const Survey& survey)
    {
        FigureLines lines;
        for (const Survey::SItem& item : survey.GetItems()) {
            const std::string what
                = item.state == Survey::eS_Sound ? "sound" : MakeDisplayText(item.fault);
            lines.Add(nameOf(item), item.size, "bytes,", what);
        }
        return name + " (" + describe(survey) + ")\n" + lines.GetText();
    }

    /// Of the items that `isListed` takes, as an enumeration.
    template <class IsListed> std::string listNames(const Survey& survey, const IsListed& isListed)
    {
        std::string names;
        for (const Survey::SItem& item : survey.GetItems()) {
            if (isListed(item)) {
                names += (names.empty() ? "" : ", ") + nameOf(item);
            }
        }
        return MakeDisplayText(names);
    }

    /// Empty for a document that is sound and known.
    std::string findVerdict(const Survey& survey)
    {
        const auto isUnknown = [](const auto& item) { return item.state == Survey::eS_Unknown; };
        const auto isDamaged = [](const auto& item) {
            return item.state == Survey::eS_Damaged || item.state == Survey::eS_Foreign;
        };
        if (!survey.IsSound()) {
            const std::string& fault = survey.GetFault();
            return "damaged: "
                + (fault.empty() ? listNames(survey, isDamaged) : MakeDisplayText(fault));
        }
        const std::string unknown = listNames(survey, isUnknown);
        return unknown.empty() ? "" : "sound, but this program cannot read all of it: " + unknown;
    }

    void check(IConsole& console, const std::string& name)
    {
        const FileBytes bytes(console, name);
        const Progress progress(console, "checking " + name, 1);
        const Survey survey(bytes.Get(), &progress);
        if (const std::string refusal = findRefusal(survey); !refusal.empty()) {
            throw MeshFailure(TU_HERE, name, 0, refusal);
        }
        const std::string verdict = findVerdict(survey);
        WriteResult(console,
            listChunks(name, survey) + "  verdict: " + (verdict.empty() ? "sound" : verdict)
                + "\n");
        if (!verdict.empty()) {
            throw MeshFailure(TU_HERE, name, 0, "the document is " + verdict);
        }
    }

    bool isSameFile(const std::string& a, const std::string& b)
    {
        std::error_code error; // what is not there is another file
        return a == b
            || std::filesystem::equivalent(std::filesystem::path(CString::FromUtf8(a).GetView()),
                std::filesystem::path(CString::FromUtf8(b).GetView()), error);
    }

    std::string getFate(const Survey::SItem& item)
    {
        const std::string fault = MakeDisplayText(item.fault);
        if (item.IsRescued()) {
            return item.state == Survey::eS_Sound
                ? "kept"
                : "kept as it is, though this program cannot read it: " + fault;
        }
        return (item.IsLost() ? "lost: " : "made anew: ") + fault;
    }

    std::string listFates(const Survey& survey)
    {
        FigureLines lines;
        for (const Survey::SItem& item : survey.GetItems()) {
            if (survey.GetForm() == Survey::eF_Old) {
                lines.Add(nameOf(item), item.size, "bytes, converted");
            } else if (item.state == Survey::eS_Foreign) {
                lines.Add("bytes", item.size, "at", item.offset, "left out:", item.fault);
            } else if (item.kind == eCK_Part || item.state == Survey::eS_Damaged) {
                lines.Add(nameOf(item), item.size, "bytes,", getFate(item));
            }
        }
        if (survey.GetForm() == Survey::eF_Chunks && !survey.GetFault().empty()) {
            lines.Add("put right:", MakeDisplayText(survey.GetFault()));
        }
        return lines.GetText();
    }

    /// Empty where nothing is.
    std::string findLoss(const Survey& survey)
    {
        std::string names
            = listNames(survey, [](const Survey::SItem& item) { return item.IsLost(); });
        if (survey.GetForm() == Survey::eF_Chunks && !survey.IsPartsKnown()) {
            return (names.empty() ? "" : names + ", and ")
                + std::string("whatever else it held: its head and its end are damaged");
        }
        return names;
    }

    void checkCanBeSalvaged(const Survey& survey, const std::string& name)
    {
        std::string refusal = findRefusal(survey);
        if (refusal.empty() && !survey.IsAnythingLeft()) {
            refusal = survey.GetForm() == Survey::eF_Old
                ? "the document has one checksum for all, so nothing in it is known to be intact: "
                    + MakeDisplayText(survey.GetItems().front().fault)
                : "no part of the document is intact";
        }
        if (!refusal.empty()) {
            throw MeshFailure(TU_HERE, name, 0, refusal);
        }
    }

} // namespace

EExitCode CheckDocuments(IConsole& console, const std::vector<std::string>& documentFiles)
{
    return GuardEach(
        console, documentFiles, [&](const std::string& name) { check(console, name); });
}

EExitCode SalvageDocument(
    IConsole& console, const std::string& documentFile, const std::string& newFile)
{
    if (isSameFile(documentFile, newFile)) {
        console.WriteError(newFile + ": is the document itself; name another file to be written\n");
        return eEC_WrongUsage;
    }
    std::optional<FileBytes> bytes;
    std::optional<Survey> survey;
    EExitCode code = Guard(console, documentFile, [&] {
        bytes.emplace(console, documentFile);
        const Progress progress(console, "checking " + documentFile, 1);
        survey.emplace(bytes->Get(), &progress);
        checkCanBeSalvaged(*survey, documentFile);
    });
    if (code == eEC_Done) {
        code = GuardOutput(console, newFile, [&](OutputFile& file) {
            Progress progress(console, "writing " + newFile, bytes->Get().size());
            WriteSalvaged(file.GetStream(), *survey, &progress);
        });
    }
    return code != eEC_Done ? code : Guard(console, documentFile, [&] {
        WriteResult(
            console, newFile + " (salvaged from " + documentFile + ")\n" + listFates(*survey));
        if (const std::string loss = findLoss(*survey); !loss.empty()) {
            throw MeshFailure(TU_HERE, documentFile, 0, "lost: " + loss);
        }
    });
}

} // namespace tamesh
