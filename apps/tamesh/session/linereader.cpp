#include "tamesh/session/linereader.h"

#include "groundwork/tuarray.h"
#include "groundwork/tuexception.h"
#include "tabase/tamessagedispatcher.h"
#include "tamesh/session/coordinator.h"

namespace tamesh {

LineReader::LineReader(ILineSource& source, const TaMessageHandlerBase& target)
    : m_source(source)
    , m_target(target)
{
}

LineReader::~LineReader()
{
    m_stop.Set();
    m_thread.WaitUntilTerminate(TuEvent::kInfinite).MarkRead();
}

TuCheckReturn<bool> LineReader::read()
{
    const TuArray<const TuEvent*> either{ &m_stop, &m_asked };
    for (;;) {
        unsigned int which = 0;
        if (TuEvent::WaitForMultipleEvents(either, TuEvent::kInfinite, &which)
                != TuEvent::eWR_Signaled
            || which == 0) {
            return true;
        }
        std::optional<std::string> line;
        try {
            line = m_source.ReadLine(kPrompt);
        } catch (const std::exception&) {
            line.reset(); // without memory for a line the input is at its end
        }
        TaMessageDispatcher::PostMessage(TU_HERE_IN("apps/tamesh/session/linereader"),
            TuMake<ShellLine>(std::move(line)), m_target);
    }
}

} // namespace tamesh
