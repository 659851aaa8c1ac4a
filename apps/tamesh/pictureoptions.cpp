#include "tamesh/pictureoptions.h"

#include <charconv>
#include <cmath>

namespace tamesh {

namespace {

    /// Takes a number, and what has to follow it, from the start of the text.
    template <class Number> bool takeNumber(std::string_view& text, Number& number, char follower)
    {
        const char* const end = text.data() + text.size();
        const auto result = std::from_chars(text.data(), end, number);
        const bool isLast = follower == '\0';
        if (result.ec != std::errc() || (result.ptr == end) != isLast
            || (!isLast && *result.ptr != follower)) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()) + (isLast ? 0 : 1));
        return true;
    }

} // namespace

std::optional<SSize> ParseSize(std::string_view text)
{
    constexpr SSize kSmallest = SPictureOptions::kSmallest;
    constexpr SSize kLargest = SPictureOptions::kLargest;
    SSize size;
    const bool isSize = takeNumber(text, size.width, 'x') && takeNumber(text, size.height, '\0')
        && size.width >= kSmallest.width && size.width <= kLargest.width
        && size.height >= kSmallest.height && size.height <= kLargest.height;
    return isSize ? std::optional(size) : std::nullopt;
}

std::optional<SPoint> ParseDirection(std::string_view text)
{
    const std::optional<SPoint> direction = ParsePoint(text);
    return direction != SPoint() ? direction : std::nullopt;
}

std::optional<SPoint> ParsePoint(std::string_view text)
{
    SPoint point;
    const bool isPoint = takeNumber(text, point.x, ',') && takeNumber(text, point.y, ',')
        && takeNumber(text, point.z, '\0') && std::isfinite(point.x) && std::isfinite(point.y)
        && std::isfinite(point.z);
    return isPoint ? std::optional(point) : std::nullopt;
}

} // namespace tamesh
