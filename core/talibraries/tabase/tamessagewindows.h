#pragma once

#include "tabase/tamessageworkflowaction.h"

#include <cstdint>

/// A window message: its number and its two parameters.
class TABASE_API TaMessageWindows : public TaMessageWorkflowAction
{
    TU_DECLARE_RTTI

public:
    TaMessageWindows(unsigned int messageId, unsigned long long wParam, long long lParam)
        : m_messageId(messageId)
        , m_wParam(wParam)
        , m_lParam(lParam)
    {
    }

    unsigned int GetMessageID() const { return m_messageId; }
    unsigned long long GetWParam() const { return m_wParam; }
    long long GetLParam() const { return m_lParam; }

    using TaMessage::Dump;
    void Dump(TuStreamWriteASCII& stream) const override;

    using TaMessageWorkflowAction::operator==;
    /// Whether `other` is a window message, too, with the same number and parameters.
    bool operator==(const TaMessageWorkflowAction& other) const override;
    /// The same, for objects of this class and of derived ones: without it, the language could not
    /// choose between the two directions of the comparison.
    bool operator==(const TaMessageWindows& other) const
    {
        return *this == static_cast<const TaMessageWorkflowAction&>(other);
    }

private:
    static IObject* CloneByFactory(const IObject& message);

    std::uint32_t m_messageId;
    std::uint64_t m_wParam;
    std::int64_t m_lParam;
};
