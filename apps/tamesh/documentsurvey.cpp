#include "tamesh/documentsurvey.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tamesh/document.h"
#include "tamesh/documentwriter.h"
#include "tamesh/framewalk.h"
#include "tamesh/interruptiblereader.h"

#include <algorithm>
#include <array>
#include <new>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace tamesh {

namespace {

    constexpr const char16_t* kEndName = u"end";
    constexpr const char16_t* kWholeName = u"document";

    /// What a reader of a chunk throws, as the state of the chunk.
    template <class Read> void judge(DocumentSurvey::SItem& item, Read&& read)
    {
        const auto set = [&item](DocumentSurvey::EState state, const std::string& fault) {
            item.state = state;
            item.fault = fault;
        };
        const std::string kNoMemory = "there is not enough memory to read it";
        try {
            read();
        } catch (const TuExceptionStream& failure) {
            set(DocumentSurvey::eS_Damaged,
                "its checksum is right, but " + ReasonOf(failure).ToUtf8());
        } catch (const TuExceptionOutOfMemory&) {
            set(DocumentSurvey::eS_Unknown, kNoMemory);
        } catch (const TuException& failure) {
            set(DocumentSurvey::eS_Unknown, ReasonOf(failure).ToUtf8());
        } catch (const std::bad_alloc&) {
            set(DocumentSurvey::eS_Unknown, kNoMemory);
        }
    }

    CString nameByNumber(const SFrame& frame)
    {
        return frame.kind == eCK_Head ? CString(kHeadName)
            : frame.kind == eCK_End   ? CString(kEndName)
                                      : CString::FromUtf8("part " + std::to_string(frame.number));
    }

    struct SNames
    {
        CString program;
        std::vector<CString> chunks; // all; none where they are not known
    };

    /// From the directory where it is sound, else from the head.
    SNames findNames(const FrameWalk& walk)
    {
        SNames names;
        std::vector<SChunkEntry> directory;
        for (const FrameWalk::SPlace& place : walk.GetPlaces()) {
            if (place.state != FrameWalk::SPlace::eS_Frame || place.frame.kind == eCK_Part) {
                continue;
            }
            try {
                if (place.frame.kind == eCK_End) {
                    directory = ReadDirectory(walk.GetPayload(place.frame));
                } else if (names.chunks.empty()) {
                    SDocumentHead head = SDocumentHead::Read(walk.GetPayload(place.frame));
                    names.program = head.program + u" " + head.version;
                    names.chunks = std::move(head.parts);
                    names.chunks.insert(names.chunks.begin(), kHeadName);
                }
            } catch (const TuException&) {
                continue; // what is wrong with it is told later
            }
        }
        if (!directory.empty()) {
            names.chunks.clear();
            for (SChunkEntry& entry : directory) {
                names.chunks.push_back(std::move(entry.name));
            }
        }
        if (!names.chunks.empty()) {
            names.chunks.push_back(kEndName);
        }
        return names;
    }

} // namespace

/// Makes items of the places where frames were found, or were once.
class DocumentSurvey::Listing
{
public:
    /// `names` are those of all chunks, where they are known.
    Listing(const FrameWalk& walk, const std::vector<CString>& names, std::vector<SItem>& items)
        : m_walk(walk)
        , m_names(names)
        , m_items(items)
    {
        for (const FrameWalk::SPlace& place : walk.GetPlaces()) {
            if (place.state == FrameWalk::SPlace::eS_Frame) {
                m_sound.insert(place.frame.number);
            }
        }
        m_isThere = m_sound;
        for (const FrameWalk::SPlace& place : walk.GetPlaces()) {
            if (place.state == FrameWalk::SPlace::eS_Broken) {
                m_isThere.insert(place.frame.number);
            }
        }
    }

    void List(const Progress* progress)
    {
        for (const FrameWalk::SPlace& place : m_walk.GetPlaces()) {
            if (progress != nullptr) {
                progress->CheckInterrupt();
            }
            if (place.state == FrameWalk::SPlace::eS_Gap) {
                listGap(place);
            } else {
                listMissing(place.frame.number, place.offset);
                listFrame(place, progress);
            }
        }
        const std::uint64_t end = m_walk.GetPlaces().empty()
            ? kDocumentStartSize
            : m_walk.GetPlaces().back().offset + m_walk.GetPlaces().back().size;
        listMissing(m_names.size(), end);
    }

private:
    void listGap(const FrameWalk::SPlace& place)
    {
        // The start of the document where it is damaged: it is no chunk.
        const std::uint64_t start
            = place.offset == 0 ? std::min<std::uint64_t>(kDocumentStartSize, place.size) : 0;
        if (place.size != start) {
            m_gap = m_items.size();
            m_items.push_back({ eS_Foreign, {}, {}, place.offset + start, place.size - start,
                "belongs to no chunk", {} });
        }
    }

    /// Those before chunk `number` that were found nowhere: the gap that came last is theirs.
    void listMissing(std::size_t number, std::uint64_t offset)
    {
        for (; m_next < std::min(number, m_names.size()); ++m_next) {
            if (m_isThere.contains(static_cast<std::uint32_t>(m_next))) {
                continue;
            }
            SItem item{ eS_Damaged, kindOf(m_next), m_names[m_next], offset, 0, "missing", {} };
            if (m_gap) {
                item.offset = m_items[*m_gap].offset;
                item.size = m_items[*m_gap].size;
                item.fault = "its header is damaged";
                m_items[*m_gap] = std::move(item);
                m_gap.reset();
            } else {
                m_items.push_back(std::move(item));
            }
        }
        m_next = std::max<std::size_t>(m_next, number + 1);
    }

    void listFrame(const FrameWalk::SPlace& place, const Progress* progress)
    {
        const SFrame& frame = place.frame;
        SItem item{ eS_Sound, frame.kind, nameByNumber(frame), place.offset, place.size, {}, {} };
        if (frame.number < m_names.size() && kindOf(frame.number) == frame.kind) {
            item.name = m_names[frame.number];
        }
        if (place.state == FrameWalk::SPlace::eS_Frame) {
            const auto [known, isNew] = m_checksums.emplace(frame.number, frame.checksum);
            if (!isNew && known->second == frame.checksum) {
                item.state = eS_Foreign;
                item.fault = "a copy of another chunk";
            } else {
                item.payload = m_walk.GetPayload(frame);
                readPayload(item, progress);
            }
        } else if (m_sound.contains(frame.number)) {
            item.state = eS_Foreign;
            item.fault = "a damaged copy of another chunk";
        } else {
            item.state = eS_Damaged;
            const bool isWhole
                = place.size >= kFrameOverhead && frame.length == place.size - kFrameOverhead;
            item.fault
                = isWhole ? "its checksum is wrong" : "bytes of it are missing, or others added";
        }
        m_items.push_back(std::move(item));
    }

    static void readPayload(SItem& item, const Progress* progress)
    {
        judge(item, [&] {
            switch (*item.kind) {
            case eCK_Head:
                SDocumentHead::Read(item.payload);
                break;
            case eCK_Part: {
                TaStreamReadBinaryBuffer stream(item.payload.data(), item.payload.size());
                item.name = ReadPartName(stream);
                ReadPart(item.payload, progress);
                break;
            }
            case eCK_End:
                ReadDirectory(item.payload);
                break;
            }
        });
    }

    EChunkKind kindOf(std::size_t number) const
    {
        return number == 0 ? eCK_Head : number + 1 < m_names.size() ? eCK_Part : eCK_End;
    }

    const FrameWalk& m_walk;
    const std::vector<CString>& m_names;
    std::vector<SItem>& m_items;
    std::unordered_set<std::uint32_t> m_sound; // the numbers of frames
    std::unordered_set<std::uint32_t> m_isThere; // of those that are broken, too
    std::unordered_map<std::uint32_t, std::uint32_t> m_checksums; // by number, of those listed
    std::size_t m_next = 0; // the chunk that should come
    std::optional<std::size_t> m_gap; // an item
};

DocumentSurvey::DocumentSurvey(std::span<const unsigned char> bytes, const Progress* progress)
    : m_bytes(bytes)
{
    TaStreamReadBinaryBuffer start(bytes.data(), bytes.size());
    std::array<char, kDocumentMarker.size()> marker{};
    const bool isMarked = start.ReadBuffer(marker.data(), marker.size()) == marker.size()
        && marker == kDocumentMarker && start.GetRemaining() >= sizeof m_version;
    if (isMarked) {
        static_cast<TuStreamReadBinary&>(start) >> m_version;
    }
    const bool isOld = isMarked && m_version < kDocumentVersion;
    const std::string oldFault = isOld ? surveyOld(progress) : std::string();
    if (m_form == eF_Old) {
        return;
    }
    // A version that has changed hides what comes behind it, so that is looked at anyway.
    const bool isStartSound = isMarked && m_version == kDocumentVersion;
    surveyChunks(isStartSound, progress);
    if (m_form == eF_None && isMarked) {
        m_form = isOld ? eF_Old : eF_Later;
        m_items = { { eS_Damaged, {}, kWholeName, 0, bytes.size(), oldFault, {} } };
    }
}

bool DocumentSurvey::IsSound() const
{
    return m_form != eF_None && m_form != eF_Later && m_fault.empty()
        && std::ranges::all_of(m_items,
            [](const SItem& item) { return item.state == eS_Sound || item.state == eS_Unknown; });
}

bool DocumentSurvey::IsAnythingLeft() const
{
    if (m_form != eF_Chunks) {
        return m_form == eF_Old && IsSound();
    }
    return std::ranges::any_of(m_items, &SItem::IsRescued)
        || (m_isPartsKnown && std::ranges::none_of(m_items, &SItem::IsLost));
}

/// Returns what is wrong. A sound one is all that makes it of that form here.
std::string DocumentSurvey::surveyOld(const Progress* progress)
{
    TaStreamReadBinaryBuffer buffer(m_bytes.data(), m_bytes.size());
    InterruptibleReader stream(buffer, progress);
    SItem whole{ eS_Sound, {}, kWholeName, 0, m_bytes.size(), {}, m_bytes };
    judge(whole, [&] { Document().Load(stream); });
    if (whole.state == eS_Sound) {
        m_form = eF_Old;
        m_items.push_back(whole);
    }
    return whole.fault;
}

void DocumentSurvey::surveyChunks(bool isStartSound, const Progress* progress)
{
    const std::size_t begin = isStartSound ? kDocumentStartSize : 0;
    const FrameWalk walk(m_bytes, begin);
    const SNames names = findNames(walk);
    m_program = names.program;
    m_isPartsKnown = !names.chunks.empty();
    Listing(walk, names.chunks, m_items).List(progress);
    const auto isLater
        = [](const SItem& item) { return item.kind == eCK_Head && item.state == eS_Unknown; };
    if (m_program.IsEmpty() && std::ranges::any_of(m_items, isLater)) {
        m_form = eF_Later;
    } else if (isStartSound
        || std::ranges::any_of(m_items, [](const SItem& item) { return item.kind.has_value(); })) {
        m_form = eF_Chunks;
        m_fault = isStartSound ? findFault(walk) : "its marker or its version is damaged";
    }
}

/// What is wrong beyond what is wrong with single chunks.
std::string DocumentSurvey::findFault(const FrameWalk& walk) const
{
    if (!m_isPartsKnown) {
        return "its head and its end are damaged, so it may have held more";
    }
    if (!IsSound()) {
        return {};
    }
    ChunkBook book;
    try {
        for (const FrameWalk::SPlace& place : walk.GetPlaces()) {
            book.Add(place.frame, walk.GetPayload(place.frame));
        }
    } catch (const TuException& failure) {
        return book.DescribeNext().ToUtf8() + ": " + ReasonOf(failure).ToUtf8();
    }
    return book.IsComplete() ? std::string() : book.DescribeNext().ToUtf8() + " is missing";
}

void WriteSalvaged(TuStreamWriteBinary& stream, const DocumentSurvey& survey, Progress* progress)
{
    if (survey.GetForm() == DocumentSurvey::eF_Old) {
        const auto& bytes = survey.GetItems().front().payload;
        TaStreamReadBinaryBuffer source(bytes.data(), bytes.size());
        InterruptibleReader interruptible(source, progress);
        Document document;
        document.Load(interruptible);
        document.Save(stream, progress);
        return;
    }
    DocumentWriter document;
    for (const DocumentSurvey::SItem& item : survey.GetItems()) {
        if (item.IsRescued()) {
            document.AddStored(item.name, item.payload);
        }
    }
    document.Write(stream, progress);
}

} // namespace tamesh
