#include "tamesh/tatracedata.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "tabase/tamessagetrace.h"

namespace tamesh {

namespace {

    constexpr unsigned int kVersion = 0;

    std::string readText(TuStreamReadBinary& stream)
    {
        CString text;
        stream >> text;
        return text.ToUtf8();
    }

    /// Calls read() as often as the stream says; memory grows as records arrive.
    template <class Read> void readAll(TuStreamReadBinary& stream, Read&& read)
    {
        std::uint32_t left = 0;
        for (stream >> left; left != 0; --left) {
            read();
        }
    }

    template <class Values> void writeCount(TuStreamWriteBinary& stream, const Values& values)
    {
        stream << static_cast<std::uint32_t>(values.size());
    }

} // namespace

TU_DEFINE_RTTI_ROOT(TaTraceData, &TaTraceData::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(TaTraceData, ISerializable)

IObject* TaTraceData::CreateByFactory() { return new TaTraceData; }

void TaTraceData::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kVersion);
    writeCount(stream, m_history.texts);
    for (const std::string& text : m_history.texts) {
        stream << CString::FromUtf8(text);
    }
    writeCount(stream, m_history.steps);
    for (const SMessageHistory::SStep& step : m_history.steps) {
        stream << static_cast<unsigned long long>(step.microseconds) << step.step << step.isSend
               << step.messageID << step.threadID << step.messageClass << step.handler;
    }
    writeCount(stream, m_history.commands);
    for (const SMessageHistory::SCommandText& command : m_history.commands) {
        stream << command.messageID << CString::FromUtf8(command.text);
    }
}

void TaTraceData::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kVersion);
    SMessageHistory history;
    readAll(stream, [&] { history.texts.push_back(readText(stream)); });
    readAll(stream, [&] {
        SMessageHistory::SStep step;
        unsigned long long microseconds = 0;
        stream >> microseconds >> step.step >> step.isSend >> step.messageID >> step.threadID
            >> step.messageClass >> step.handler;
        step.microseconds = microseconds;
        if (step.step > SMessageTrace::eS_Dropped || step.messageClass >= history.texts.size()
            || step.handler >= history.texts.size()) {
            throw TuExceptionStream(TU_HERE, u"the message trace has a step that makes no sense");
        }
        history.steps.push_back(step);
    });
    readAll(stream, [&] {
        SMessageHistory::SCommandText command;
        stream >> command.messageID;
        command.text = readText(stream);
        history.commands.push_back(std::move(command));
    });
    m_history = std::move(history);
}

TA_DEFINE_DATA_NODE(TaTraceNode, TaTraceData)

} // namespace tamesh
