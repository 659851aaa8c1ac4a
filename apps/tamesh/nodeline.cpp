#include "tamesh/nodeline.h"

#include "groundwork/tustreamwriteascii.h"
#include "tabase/tanode.h"

#include <exception>

namespace tamesh {

namespace {

    /// Takes the first line of a dump, and ends it there: what follows may be large.
    class FirstLine final : public TuStreamWriteASCII
    {
    public:
        struct Enough : std::exception
        {
        };

        FirstLine()
            : TuStreamWriteASCII(false)
        {
        }
        const CString& Get() const { return m_line; }

    private:
        void write(const char* text) override { write(CString::FromUtf8(text).GetString()); }
        void write(const char16_t* text) override
        {
            m_line += text;
            if (m_line.GetView().ends_with(u'\n')) {
                throw Enough();
            }
        }

        CString m_line;
    };

    CString getFirstLine(const TaNode& node)
    {
        FirstLine line;
        try {
            node.Dump(line);
        } catch (const FirstLine::Enough&) {
            return line.Get();
        }
        return line.Get();
    }

} // namespace

SNodeLine DescribeNode(const TaNode& node)
{
    SNodeLine described{ node.GetName().ToUtf8(), CString(node.GetClassName()).ToUtf8(), {} };
    if (!node.IsSerializable()) {
        return described; // it has no value
    }
    const CString line = getFirstLine(node);
    const CString start = CString(u" (") + node.GetClassName() + u") = ";
    std::u16string_view value = line.GetView();
    // Behind the name, which is at least as long as it is in the node.
    const std::size_t place = value.find(start.GetView(), node.GetName().GetLength());
    if (place != std::u16string_view::npos) {
        value.remove_prefix(place + start.GetLength());
        value.remove_suffix(value.ends_with(u'\n') ? 1 : 0);
        described.value = CString(value).ToUtf8();
    }
    return described;
}

} // namespace tamesh
