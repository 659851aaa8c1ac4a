#pragma once

#include "groundwork/cstring.h"

#include <memory>

class TaAlgorithm;
class TaStreamWriteBinaryFile;

/// The recording of one run of an algorithm: its input, and behind it its output where the run
/// succeeded. What goes wrong is logged, and the recording dropped; the run never hears of it.
class TaAlgorithmRecording
{
public:
    TaAlgorithmRecording();
    /// Closes. Of a run that failed the input stays, to be looked at.
    ~TaAlgorithmRecording();
    TaAlgorithmRecording(const TaAlgorithmRecording&) = delete;
    TaAlgorithmRecording& operator=(const TaAlgorithmRecording&) = delete;

    /// `id` names the file; where it is empty, a new identifier does.
    void Begin(const TaAlgorithm& algorithm, const CString& id) noexcept;
    /// Removes what has been written: of a run that was ended on purpose nobody wants any.
    void Remove() noexcept;
    /// Does nothing unless the recording has begun, and was neither dropped nor removed.
    void End(const TaAlgorithm& algorithm) noexcept;

    /// The name of a recording's file: ".dat" comes before a last ".x86" or ".x64", else at the
    /// end.
    static CString MakeFileName(const CString& id);

private:
    template <class Write> void guard(Write&& write) noexcept;
    void drop(const char* reason);

    std::unique_ptr<TaStreamWriteBinaryFile> m_stream;
    CString m_path;
};
