#pragma once

#include "tabase/tamessage.h"
#include "tamesh/exitcode.h"

#include <string>
#include <utility>

namespace tamesh {

/// What a handler tells the main thread of the command that it carries out.
class JobReport final : public TaMessage
{
    TU_DECLARE_RTTI

public:
    enum EKind
    {
        eK_Output, // a result
        eK_Notice, // progress, or what went wrong
        eK_Ended, // the last report of a job
    };

    JobReport(unsigned int job, EKind kind, std::string text, EExitCode code = eEC_Done)
        : m_job(job)
        , m_kind(kind)
        , m_code(code)
        , m_text(std::move(text))
    {
    }

    unsigned int GetJob() const { return m_job; }
    EKind GetKind() const { return m_kind; }
    const std::string& GetText() const { return m_text; }
    /// How the job ended.
    EExitCode GetCode() const { return m_code; }

private:
    unsigned int m_job;
    EKind m_kind;
    EExitCode m_code;
    std::string m_text;
};

} // namespace tamesh
