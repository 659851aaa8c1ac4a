#pragma once

#include "tamesh/documentchunks.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

class TaNode;
class TuStreamWriteBinary;

namespace tamesh {

class Progress;

/// Writes a document of parts that lie elsewhere: nodes of a tree, or payloads that were read.
///
///     DocumentWriter document;
///     document.AddParts(top);
///     Progress progress(console, "writing a.tadoc", document.GetSize());
///     document.Write(stream, &progress);
///
/// The length of a part comes before it, so all values are asked twice to write themselves: once to
/// be counted. No part is ever held in memory.
///
/// Ownership: refers to the parts, which outlive it.
/// Threads:   one thread at a time, and nobody changes the parts meanwhile.
/// Failure:   what the values and the stream throw, and Interrupted.
class DocumentWriter
{
public:
    /// The version is that of the program that writes.
    explicit DocumentWriter(const CString& version = u"" TAMESH_VERSION);

    /// The children of `top`. Those with nothing below them to be stored are left out. Throws
    /// TuException for one that has a value itself, and for values that cannot be stored.
    void AddParts(const TaNode& top, const Progress* progress = nullptr);
    /// The payload of a part, as it was in a document.
    void AddStored(const CString& name, std::span<const unsigned char> payload);

    /// In bytes.
    std::uint64_t GetSize() const;
    void Write(TuStreamWriteBinary& stream, Progress* progress = nullptr) const;

private:
    struct SPart
    {
        std::uint64_t length;
        std::function<void(TuStreamWriteBinary&)> write;
    };

    SDocumentHead m_head;
    std::vector<SPart> m_parts;
};

} // namespace tamesh
