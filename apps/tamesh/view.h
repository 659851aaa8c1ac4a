#pragma once

#include "tamesh/mesh.h"
#include "tamesh/pictureoptions.h"

#include <vector>

namespace tamesh {

class ProgressSteps;

/// Part of a picture.
struct SFrame
{
    double left = 0.0;
    double top = 0.0;
    double width = 0.0;
    double height = 0.0;
};

/// Looks at a mesh from far away, so that parallels stay parallel: orthographic projection.
class View
{
public:
    /// `toViewer` points from the mesh to who looks at it. It is finite and not zero; its length
    /// does not matter. `up` points upward in the picture, as far as it is not seen end-on.
    View(const SPoint& toViewer, EAxis up);

    /// Where the vertices are seen: x from left to right, y from top to bottom, z toward the
    /// viewer, all by one scale, the largest with which the mesh fits into the frame. As many steps
    /// as the mesh has vertices, of which there is at least one.
    std::vector<SPoint> Project(const Mesh& mesh, const SFrame& frame, ProgressSteps& steps) const;

private:
    SPoint m_right;
    SPoint m_up;
    SPoint m_toViewer;
};

} // namespace tamesh
