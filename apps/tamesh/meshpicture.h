#pragma once

#include "tamesh/coloring.h"
#include "tamesh/pictureoptions.h"
#include "tamesh/progress.h"
#include "tamesh/raster.h"
#include "tamesh/view.h"

#include <span>
#include <vector>

namespace tamesh {

/// A mesh, coloured by the values of its vertices, with a title and a colour bar.
///
///     MeshPicture picture(mesh, coloring, options);
///     picture.DrawMesh();
///     picture.DrawPath(vertices);
///     WritePNG(stream, picture.MakeImage());
///
/// It is lit from the upper left of the viewer. A side looks smooth where it differs from the mean
/// of those around by less than about 30 degrees. Faces of more than three corners are fanned out
/// from their first one. The arithmetic is that of IEEE 754: the picture is the same on every
/// system.
///
/// Ownership: refers to the mesh and its colouring, which outlive it.
/// Failure:   Interrupted, where there is a progress; std::bad_alloc.
class MeshPicture
{
public:
    /// The mesh has a vertex, and its coordinates are finite.
    MeshPicture(const Mesh& mesh, const SColoring& coloring, const SPictureOptions& options,
        Progress* progress = nullptr);

    /// What progress comes to.
    static std::uint64_t CountSteps(const Mesh& mesh);

    /// To be drawn first.
    void DrawMesh();
    /// A thick line along vertices of the mesh, thin and dashed where the mesh hides it. Its start
    /// is marked by a white disc, its end by a white square.
    void DrawPath(std::span<const std::uint32_t> vertices);

    Image MakeImage() const;

private:
    enum EPass
    {
        eP_Fill,
        eP_Trace, // what may be lost otherwise
    };

    void drawFace(std::uint32_t face, std::span<const SPoint> normals, EPass pass);
    void drawIsolatedVertices();
    template <class Take> void walk(std::span<const std::uint32_t> vertices, Take&& take) const;
    TaColor colorOf(float value) const;
    SFrame getFrame() const;
    float valueOf(std::uint32_t vertex) const;

    const Mesh& m_mesh;
    const SColoring& m_coloring;
    const SPictureOptions m_options;
    const int m_textScale; // of what is not the mesh: lines, letters
    Progress* const m_progress;
    ProgressSteps m_steps;
    std::vector<SPoint> m_positions; // of the vertices, in samples
    Raster m_raster;
    std::int64_t m_unpolledSamples = 0;
};

} // namespace tamesh
