#pragma once

#include "groundwork/tustreamreadbinary.h"
#include "tamesh/progress.h"

namespace tamesh {

/// Passes bytes of another stream on, until the user wants the program to stop. A value that does
/// long work with what it has read finds here whom to ask meanwhile.
///
/// Failure: Interrupted, in the middle of whatever is read.
class InterruptibleReader final : public TuStreamReadBinary
{
public:
    /// `source`, and `progress` where there is one, outlive the reader.
    InterruptibleReader(TuStreamReadBinary& source, const Progress* progress)
        : m_source(source)
        , m_progress(progress)
    {
    }

    const Progress* GetProgress() const { return m_progress; }

private:
    unsigned long long read(void* data, unsigned long long size) override
    {
        if (m_progress != nullptr) {
            m_progress->CheckInterrupt();
        }
        return m_source.ReadBuffer(data, size);
    }

    TuStreamReadBinary& m_source;
    const Progress* m_progress;
};

} // namespace tamesh
