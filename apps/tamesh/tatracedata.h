#pragma once

#include "groundwork/iserializable.h"
#include "groundwork/tureferencecounted.h"
#include "tabase/tadatanode.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tamesh {

/// What happened to the messages of a session, in the order in which it did.
struct SMessageHistory
{
    /// One step of a message on its way; see SMessageTrace.
    struct SStep
    {
        std::uint64_t microseconds = 0; // since the session began
        std::uint8_t step = 0; // SMessageTrace::EStep
        bool isSend = false; // else it was posted
        std::uint32_t messageID = 0;
        std::uint32_t threadID = 0;
        std::uint32_t messageClass = 0; // this one and the next: numbers of texts
        std::uint32_t handler = 0;

        friend bool operator==(const SStep&, const SStep&) = default;
    };
    /// What the user asked for by one message.
    struct SCommandText
    {
        std::uint32_t messageID = 0;
        std::string text;

        friend bool operator==(const SCommandText&, const SCommandText&) = default;
    };

    std::vector<std::string> texts;
    std::vector<SStep> steps;
    std::vector<SCommandText> commands;

    friend bool operator==(const SMessageHistory&, const SMessageHistory&) = default;
};

/// The same as a value of the data tree. docs/format.md states its record byte by byte.
///
/// Ownership: counted.
/// Failure:   reading throws TuExceptionStream for a damaged record and TuExceptionWrongFileVersion
///            for one of a later version; the value is then as it was. What has been read names
///            only texts that are there.
class TaTraceData final : public TuReferenceCounted, public ISerializable
{
    TU_DECLARE_RTTI

public:
    TaTraceData() = default;
    explicit TaTraceData(SMessageHistory history)
        : m_history(std::move(history))
    {
    }

    TU_DECLARE_EXTENSIONS;
    void Serialize(TuStreamWriteBinary& stream) const override;
    void Serialize(TuStreamReadBinary& stream) override;

    const SMessageHistory& GetHistory() const { return m_history; }

private:
    static IObject* CreateByFactory();

    SMessageHistory m_history;
};

TA_DECLARE_DATA_NODE(, TaTraceNode, TaTraceData);

} // namespace tamesh
