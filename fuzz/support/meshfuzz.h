#pragma once

#include "tabase/tastreamreadbinarybuffer.h"
#include "tamesh/meshanalysis.h"
#include "tamesh/meshfailure.h"
#include "tamesh/meshreader.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// Whether a reader kept its promise: what comes back is sound, whatever came in.
inline void CheckMesh(const tamesh::Mesh& mesh)
{
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        const tamesh::SPoint& point = mesh.GetVertex(i);
        if (!std::isfinite(point.x) || !std::isfinite(point.y) || !std::isfinite(point.z)) {
            std::abort();
        }
    }
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        if (mesh.GetFace(i).size() < 3) {
            std::abort();
        }
        for (const std::uint32_t corner : mesh.GetFace(i)) {
            if (corner >= mesh.GetVertexCount()) {
                std::abort();
            }
        }
    }
    static_cast<void>(tamesh::FormatFigures(tamesh::AnalyseMesh(mesh)));
}

/// Input that is no mesh must be refused with a MeshFailure, and nothing else.
template <class Reader> void FuzzMeshReader(Reader read, const std::uint8_t* data, std::size_t size)
{
    TaStreamReadBinaryBuffer stream(data, size);
    try {
        CheckMesh(read({ "mesh", stream, size }));
    } catch (const tamesh::MeshFailure&) {
        return;
    }
}
