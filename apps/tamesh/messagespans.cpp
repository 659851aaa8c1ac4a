#include "tamesh/messagespans.h"

#include "tabase/tamessagetrace.h"

#include <algorithm>
#include <map>
#include <span>
#include <utility>

namespace tamesh {

namespace {

    class SpanFinder
    {
    public:
        SpanFinder(const SMessageHistory& history, std::size_t most)
            : m_history(history)
            , m_most(most)
        {
            for (const SMessageHistory::SCommandText& command : history.commands) {
                m_commands[command.messageID] = &command.text;
            }
        }

        void Take(const SMessageHistory::SStep& step)
        {
            m_end = std::max(m_end, step.microseconds);
            const bool isNew = step.step == SMessageTrace::eS_Queued;
            if (isNew && !step.isSend) {
                endPassedOn(step);
            }
            SMessageSpan* const span = isNew ? open(step) : find(step);
            if (span == nullptr) {
                return;
            }
            if (span->handler.empty()) {
                span->handler = m_history.texts[step.handler];
            }
            switch (step.step) {
            case SMessageTrace::eS_Queued:
                span->queued = step.microseconds;
                break;
            case SMessageTrace::eS_Delivered:
                span->delivered = step.microseconds;
                span->threadID = step.threadID;
                break;
            default:
                span->ended = step.microseconds;
                span->isDropped = step.step == SMessageTrace::eS_Dropped;
                span->isPassedOn = false;
            }
        }

        std::vector<SMessageSpan> TakeSpans()
        {
            for (SMessageSpan& span : m_spans) {
                span.traceEnd = m_end;
            }
            return std::move(m_spans);
        }

    private:
        /// The dispatcher, which does not answer, queues the message that it handles once more.
        void endPassedOn(const SMessageHistory::SStep& step)
        {
            const auto [begin, end] = m_open.equal_range(step.messageID);
            for (auto place = begin; place != end; ++place) {
                SMessageSpan& span = m_spans[place->second];
                if (!span.isSend && span.delivered && !span.ended
                    && span.threadID == step.threadID) {
                    span.ended = step.microseconds;
                    span.isPassedOn = true;
                }
            }
        }
        /// The one that the step goes on with: of the same message, and of the same handler where
        /// both are known. Null where there is none, and no room for another.
        SMessageSpan* find(const SMessageHistory::SStep& step)
        {
            const std::string& handler = m_history.texts[step.handler];
            const auto [begin, end] = m_open.equal_range(step.messageID);
            for (auto place = begin; place != end; ++place) {
                SMessageSpan& span = m_spans[place->second];
                const bool isHere
                    = span.handler.empty() || handler.empty() || span.handler == handler;
                const bool isNext = step.step == SMessageTrace::eS_Delivered ? !span.delivered
                    : step.step == SMessageTrace::eS_Answered ? span.delivered.has_value()
                                                              : true;
                if (isHere && isNext) {
                    if (step.step != SMessageTrace::eS_Delivered) {
                        m_open.erase(place); // it ends
                    }
                    return &span;
                }
            }
            return open(step);
        }
        SMessageSpan* open(const SMessageHistory::SStep& step)
        {
            if (m_spans.size() >= m_most) {
                return nullptr;
            }
            SMessageSpan span;
            span.messageID = step.messageID;
            span.messageClass = m_history.texts[step.messageClass];
            span.isSend = step.isSend;
            if (const auto command = m_commands.find(step.messageID); command != m_commands.end()) {
                span.command = *command->second;
            }
            if (step.step <= SMessageTrace::eS_Delivered) {
                m_open.emplace(step.messageID, m_spans.size());
            }
            m_spans.push_back(std::move(span));
            return &m_spans.back();
        }

        const SMessageHistory& m_history;
        const std::size_t m_most;
        std::map<std::uint32_t, const std::string*> m_commands;
        std::vector<SMessageSpan> m_spans;
        std::multimap<std::uint32_t, std::size_t> m_open; // places of those without an answer
        std::uint64_t m_end = 0; // of the trace
    };

} // namespace

std::vector<SMessageSpan> FindMessageSpans(const SMessageHistory& history, std::size_t most)
{
    SpanFinder finder(history, most);
    const std::span steps(history.steps);
    for (const auto& step : steps.first(std::min(steps.size(), kMostTracedSteps))) {
        finder.Take(step);
    }
    return finder.TakeSpans();
}

} // namespace tamesh
