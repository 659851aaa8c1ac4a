#pragma once

#include "groundwork/cstring.h"
#include "tamesh/documentchunks.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

class TuStreamWriteBinary;

namespace tamesh {

class FrameWalk;
class Progress;

/// What is found in the bytes of a document, whatever has become of them: nothing in them is
/// trusted, each chunk stands for itself.
///
/// Frames are searched by their markers wherever the one before does not lead to the next. What is
/// missing is known by its name from the directory at the end, or else from the head, or else by
/// its place.
///
/// Ownership: refers to the bytes, which outlive it.
/// Failure:   memory that runs out, and Interrupted. What is wrong with the bytes is what it tells.
class DocumentSurvey
{
public:
    enum EForm
    {
        eF_None, // nothing says that it is a document
        eF_Later, // of a version that this program does not know
        eF_Old, // of version 0 or 1, which have no chunks
        eF_Chunks,
    };
    enum EState
    {
        eS_Sound,
        eS_Unknown, // its bytes are sound, but hold what this program cannot read
        eS_Damaged, // or missing
        eS_Foreign, // bytes that belong to no chunk
    };
    struct SItem
    {
        EState state = eS_Foreign;
        std::optional<EChunkKind> kind; // not of foreign bytes
        CString name; // "head", that of the part, or "end"
        std::uint64_t offset = 0;
        std::uint64_t size = 0; // in the file
        std::string fault; // UTF-8; empty where it is sound
        std::span<const unsigned char> payload; // where its bytes are sound

        /// Whether it is a part that WriteSalvaged writes, or one that it cannot.
        bool IsRescued() const
        {
            return kind == eCK_Part && (state == eS_Sound || state == eS_Unknown);
        }
        bool IsLost() const { return kind == eCK_Part && state == eS_Damaged; }
    };

    /// `progress` is only asked whether the user wants the program to stop.
    explicit DocumentSurvey(
        std::span<const unsigned char> bytes, const Progress* progress = nullptr);

    EForm GetForm() const { return m_form; }
    /// Of the format; what the start of the file says.
    unsigned int GetVersion() const { return m_version; }
    /// What has written it; empty where that is not known.
    const CString& GetProgram() const { return m_program; }
    /// In the order of the file. Of an old version, one for the whole.
    const std::vector<SItem>& GetItems() const { return m_items; }
    /// What is wrong beyond single items; empty where nothing is. UTF-8.
    const std::string& GetFault() const { return m_fault; }
    /// Whether the document would load where all that it holds is known.
    bool IsSound() const;
    /// Whether it is known which parts the document had; else more may be lost than is listed.
    bool IsPartsKnown() const { return m_isPartsKnown; }
    /// Whether anything is left to be saved: see WriteSalvaged.
    bool IsAnythingLeft() const;

private:
    class Listing;

    std::string surveyOld(const Progress* progress);
    void surveyChunks(bool isStartSound, const Progress* progress);
    std::string findFault(const FrameWalk& walk) const;

    std::span<const unsigned char> m_bytes;
    EForm m_form = eF_None;
    unsigned int m_version = 0;
    CString m_program;
    std::vector<SItem> m_items;
    std::string m_fault;
    bool m_isPartsKnown = false;
};

/// Writes a new document of all parts whose bytes are sound, byte for byte; one of an old version
/// is converted.
void WriteSalvaged(
    TuStreamWriteBinary& stream, const DocumentSurvey& survey, Progress* progress = nullptr);

} // namespace tamesh
