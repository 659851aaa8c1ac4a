#pragma once

#include "tamesh/image.h"
#include "tamesh/mesh.h"

#include <optional>
#include <string_view>

namespace tamesh {

enum EAxis
{
    eA_X,
    eA_Y,
    eA_Z,
};

inline double GetCoordinate(const SPoint& point, EAxis axis)
{
    return axis == eA_X ? point.x : axis == eA_Y ? point.y : point.z;
}

/// How a picture is taken.
struct SPictureOptions
{
    static constexpr SSize kSmallest{ 200, 150 };
    static constexpr SSize kLargest{ 4000, 4000 };

    SSize size{ 1200, 900 };
    SPoint toViewer{ 1.0, -2.0, 1.5 }; // from the mesh; finite, and not zero
    EAxis up = eA_Z;
};

/// Of "1200x900"; nothing for what is none, or is not within the limits.
std::optional<SSize> ParseSize(std::string_view text);
/// Of "1,-2,1.5"; nothing for what is none, and for no direction at all.
std::optional<SPoint> ParseDirection(std::string_view text);
/// Of "1,-2,1.5"; nothing for what is none, or not finite.
std::optional<SPoint> ParsePoint(std::string_view text);

} // namespace tamesh
