#pragma once

#include "groundwork/tustreamwriteascii.h"
#include "tabase/tastreamreadbinaryfile.h"
#include "tabase/tastreamwritebinaryfile.h"

#include <cstdint>
#include <exception>
#include <string>

namespace tamesh {

/// A file that the user named, opened for reading.
///
/// Failure: MeshFailure for what is no ordinary file; TuExceptionStream when it cannot be opened.
class InputFile
{
public:
    explicit InputFile(const std::string& name);

    TuStreamReadBinary& GetStream() { return m_stream; }
    /// In bytes.
    std::uint64_t GetSize() const { return m_size; }

private:
    std::uint64_t m_size;
    TaStreamReadBinaryFile m_stream;
};

/// A file that the user named, to be written. What was there before stays until Commit().
///
/// Failure: TuExceptionStream, at the latest from Commit().
class OutputFile
{
public:
    explicit OutputFile(const std::string& name);

    TuStreamWriteBinary& GetStream() { return m_stream; }
    void Commit() { m_stream.Commit(); }

private:
    TaStreamWriteBinaryFile m_stream;
};

/// Text that goes to an output file as it comes, in the system code page.
class OutputText final : public TuStreamWriteASCII
{
public:
    /// `file` outlives the text.
    explicit OutputText(OutputFile& file)
        : TuStreamWriteASCII(false)
        , m_stream(file.GetStream())
    {
    }

private:
    void write(const char* text) override;
    void write(const char16_t* text) override;

    TuStreamWriteBinary& m_stream;
};

/// What the user is told of a failure while working on the file `name`: the reason as it is for
/// files that cannot be opened, read or written, and else the class and place of the exception.
std::string ReportFailure(const std::string& name, const std::exception& failure);

} // namespace tamesh
