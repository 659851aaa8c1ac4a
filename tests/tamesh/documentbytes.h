#pragma once

#include "support/bufferbytes.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tamesh/document.h"
#include "tamesh/documentsurvey.h"
#include "tamesh/documentwriter.h"

#include <span>
#include <string>

/// As program version 0.1.0 writes it, whatever version this is.
inline std::string SaveToBytes(const tamesh::Document& document)
{
    return BytesOf([&](auto& stream) {
        tamesh::DocumentWriter writer(u"0.1.0");
        writer.AddParts(*document.GetTree().GetRootNode());
        writer.Write(stream);
    });
}

inline void LoadFromBytes(tamesh::Document& document, const std::string& bytes)
{
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    document.Load(stream);
}

inline std::span<const unsigned char> AsBytes(const std::string& text)
{
    return { reinterpret_cast<const unsigned char*>(text.data()), text.size() };
}

/// The document with another payload of one part, and with checksums that are right.
template <class Change>
std::string WithPayload(const std::string& bytes, const CString& name, Change&& change)
{
    const tamesh::DocumentSurvey survey(AsBytes(bytes));
    tamesh::DocumentWriter writer(u"0.1.0");
    std::string changed;
    for (const auto& item : survey.GetItems()) {
        if (item.kind == tamesh::eCK_Part && item.name == name) {
            changed.assign(item.payload.begin(), item.payload.end());
            change(changed);
            writer.AddStored(name, AsBytes(changed));
        } else if (item.kind == tamesh::eCK_Part) {
            writer.AddStored(item.name, item.payload);
        }
    }
    return BytesOf([&](auto& stream) { writer.Write(stream); });
}
