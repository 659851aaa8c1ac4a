#include "tamesh/networkmesh.h"

#include "groundwork/tustreamreadbinary.h"
#include "tabase/tanetworkaddress.h"
#include "tabase/tastreamreadasciihttp.h"
#include "tabase/tastreamreadasciistring.h"
#include "tabase/tastreamreadasciitcpip.h"
#include "tamesh/console.h"
#include "tamesh/meshfailure.h"
#include "tamesh/meshreader.h"
#include "tamesh/progress.h"

#include <limits>

namespace tamesh {

namespace {

    /// The bytes of one of the library's text sources, for the readers of meshes. A byte that comes
    /// together with the end is left out, as words leave it out.
    template <class Source> class SourceBytes final : public TuStreamReadBinary
    {
    public:
        template <class... Arguments>
        explicit SourceBytes(Arguments&&... arguments)
            : m_source(std::forward<Arguments>(arguments)...)
        {
        }

        const Source& GetSource() const { return m_source; }

    private:
        /// Takes single bytes from the source, which keeps that to itself.
        struct SOpened final : Source
        {
            using Source::Source;
            bool Take(char& c) { return this->read(c); }
        };

        unsigned long long read(void* data, unsigned long long size) override
        {
            char* bytes = static_cast<char*>(data);
            unsigned long long count = 0;
            while (count < size && !m_isAtEnd) {
                char c = '\0';
                m_isAtEnd = m_source.Take(c);
                if (!m_isAtEnd) {
                    bytes[count++] = c;
                }
            }
            return count;
        }

        SOpened m_source;
        bool m_isAtEnd = false;
    };

    /// A source that ended early is the reason for all that follows.
    void checkEnd(IConsole& console, const std::string& name, const SNetworkEnd& end)
    {
        if (end.kind == eNE_Interrupted) {
            CheckInterrupt(console);
        }
        if (end.kind != eNE_None && !end.IsWhole()) {
            throw MeshFailure(TU_HERE, name, 0, end.text.ToUtf8());
        }
    }

    Mesh readSource(
        IConsole& console, const std::string& name, TuStreamReadBinary& stream, std::uint64_t size)
    {
        // Where the size is not known, the bar stays empty.
        Progress progress(console, "reading " + name,
            size != 0 ? size : std::numeric_limits<std::uint64_t>::max());
        return ReadMesh({ name, stream, size, &progress, true });
    }

    Mesh readTCPIP(IConsole& console, const std::string& name, const TaNetworkAddress& address,
        const SNetworkWait& wait)
    {
        SourceBytes<TaStreamReadASCIITCPIP> stream(address.GetHost(), address.GetPort(), wait);
        try {
            Mesh mesh = readSource(console, name, stream, 0);
            checkEnd(console, name, stream.GetSource().GetEnd());
            return mesh;
        } catch (const MeshFailure&) {
            checkEnd(console, name, stream.GetSource().GetEnd());
            throw;
        }
    }

    Mesh readHTTP(IConsole& console, const std::string& name, const SNetworkWait& wait)
    {
        using Fetched = SourceBytes<TaStreamReadASCIIHTTP>;
        Fetched stream = [&] {
            Progress progress(console, "fetching " + name, 1);
            return Fetched(CString::FromUtf8(name), wait, &progress);
        }();
        checkEnd(console, name, stream.GetSource().GetEnd());
        const CString& text = stream.GetSource().GetText();
        const std::size_t size = text.GetLength();
        if (size != 0 && (text[size - 1] == u'\n' || text[size - 1] == u'\r')) {
            return readSource(console, name, stream, size);
        }
        // The source would report its end together with the last byte of the last word.
        CStringA bytes;
        bytes.SetLength(size);
        for (std::size_t i = 0; i < size; ++i) {
            bytes.GetBuffer()[i] = static_cast<char>(text[i]);
        }
        SourceBytes<TaStreamReadASCIIString> whole(bytes);
        return readSource(console, name, whole, size);
    }

} // namespace

bool IsNetworkName(const std::string& name)
{
    return TaNetworkAddress::IsMeant(CString::FromUtf8(name));
}

Mesh ReadNetworkMesh(IConsole& console, const std::string& name)
{
    CheckInterrupt(console);
    CheckMeshFormat(name); // before anybody is asked
    if (CString::FromUtf8(name).ToUtf8() != name) {
        throw MeshFailure(TU_HERE, name, 0, "the name is not valid UTF-8");
    }
    const SNetworkWait wait{ console.GetNetworkTimeout(), &console.GetInterrupt() };
    try {
        const TaNetworkAddress address(CString::FromUtf8(name));
        return address.GetScheme() == TaNetworkAddress::eS_TCP
            ? readTCPIP(console, name, address, wait)
            : readHTTP(console, name, wait);
    } catch (const TuExceptionStream& failure) {
        CheckInterrupt(console);
        if (failure.GetCauseText().IsEmpty()) {
            throw;
        }
        throw MeshFailure(TU_HERE, name, 0, failure.GetCauseText().ToUtf8());
    }
}

} // namespace tamesh
