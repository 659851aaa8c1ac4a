#pragma once

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamwritebinary.h"

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
            throw TuExceptionStream(TU_HERE, u"the target is full");
        }
        m_room -= size;
    }

    unsigned long long m_room;
    int m_failureCount = 0;
};
