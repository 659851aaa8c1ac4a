#include "tamesh/vertexname.h"

#include "tamesh/pictureoptions.h"
#include "tamesh/unitbox.h"
#include "tamesh/vectors.h"

#include <charconv>
#include <limits>

namespace tamesh {

std::optional<VertexName> ParseVertexName(std::string_view text)
{
    if (const std::optional<SPoint> point = ParsePoint(text)) {
        return point;
    }
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    const bool isNumber = result.ec == std::errc() && result.ptr == end;
    return isNumber ? std::optional<VertexName>(number) : std::nullopt;
}

std::optional<std::uint32_t> FindVertex(const Mesh& mesh, const VertexName& name)
{
    const std::uint32_t count = mesh.GetVertexCount();
    if (const auto* number = std::get_if<std::uint32_t>(&name)) {
        return *number < count ? std::optional(*number) : std::nullopt;
    }
    if (count == 0) {
        return std::nullopt;
    }
    const UnitBox box(mesh); // so that distances are no infinite numbers
    const SPoint point = box.Place(std::get<SPoint>(name));
    std::uint32_t nearest = 0;
    double smallest = std::numeric_limits<double>::infinity();
    for (std::uint32_t i = 0; i != count; ++i) {
        const SPoint offset = box.Place(mesh.GetVertex(i)) - point;
        const double distance = Dot(offset, offset);
        if (distance < smallest) {
            nearest = i;
            smallest = distance;
        }
    }
    return nearest;
}

} // namespace tamesh
