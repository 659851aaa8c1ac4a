#pragma once

#include "tamesh/mesh.h"

namespace tamesh {

/// Places a mesh around the origin, with coordinates from -1 to 1: whatever they were, what is
/// computed from them then does not overflow.
class UnitBox
{
public:
    /// Of a mesh with one vertex or more, whose coordinates are finite.
    explicit UnitBox(const Mesh& mesh);

    SPoint Place(const SPoint& point) const;
    /// What is placed at the origin.
    const SPoint& GetCenter() const { return m_center; }
    /// The length in the mesh of what has length 1 here.
    double GetUnit() const { return m_unit; }

private:
    SPoint m_center;
    double m_unit = 1.0;
};

} // namespace tamesh
