#pragma once

#include "groundwork/tuexceptions.h"
#include "groundwork/tuloglistenermanager.h"
#include "groundwork/tustreamwritebinary.h"

#include <string>
#include <utility>

/// A target that fails when it is given more than `room` bytes, and again at every later attempt.
class FullSink : public TuStreamWriteBinary
{
public:
    explicit FullSink(unsigned long long room)
        : m_room(room)
    {
    }

    int GetFailureCount() const { return m_failureCount; }

private:
    void write(const void*, unsigned long long size) override
    {
        if (size > m_room) {
            m_room = 0;
            ++m_failureCount;
            throw TuExceptionStream(TU_HERE, u"");
        }
        m_room -= size;
    }

    unsigned long long m_room;
    int m_failureCount = 0;
};

/// While it lives, lines of the log come here instead of to standard error.
class QuietLog
{
public:
    QuietLog()
    {
        m_manager.RemoveListener(*m_manager.GetDefaultListener());
        m_manager.AddListener(m_collector);
    }
    ~QuietLog()
    {
        m_manager.RemoveListener(*m_collector);
        m_manager.AddListener(m_manager.GetDefaultListener());
    }
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

    /// What has come since the last time.
    std::string TakeText() const { return std::exchange(m_collector->text, std::string()); }

private:
    struct Collector : TuLogListener
    {
        void onLog(const SLogLine& line) override { text += line.text.ToUtf8(); }
        std::string text;
    };

    TuLogListenerManager& m_manager = TuLogListenerManager::GetInstance();
    const TuSmartPointer<Collector> m_collector = TuMake<Collector>();
};
