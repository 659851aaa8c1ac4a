#pragma once

#include "tabase/tastreamreadbinarybuffer.h"
#include "tamesh/meshanalysis.h"
#include "tamesh/meshreader.h"

#include <string>

/// Reads a mesh from memory, as if it were a file of this name.
inline tamesh::Mesh ReadMeshText(const std::string& name, const std::string& content)
{
    TaStreamReadBinaryBuffer stream(content.data(), content.size());
    return tamesh::ReadMesh({ name, stream, content.size() });
}

/// The bytes of a binary STL file.
class STLBytes
{
public:
    explicit STLBytes(const std::string& head)
        : m_bytes(head)
    {
        m_bytes.resize(84, ' ');
        SetCount(0);
    }

    void AddTriangle(const float (&corners)[9])
    {
        m_bytes.append(12, '\0'); // a normal
        for (const float value : corners) {
            unsigned char bytes[sizeof(float)];
            TuStoreLittleEndian(bytes, value);
            m_bytes.append(reinterpret_cast<const char*>(bytes), sizeof(bytes));
        }
        m_bytes.append(2, '\0'); // an attribute
        SetCount(++m_count);
    }
    void SetCount(unsigned int count)
    {
        TuStoreLittleEndian(reinterpret_cast<unsigned char*>(m_bytes.data()) + 80, count);
    }
    const std::string& GetBytes() const { return m_bytes; }

private:
    std::string m_bytes;
    unsigned int m_count = 0;
};
