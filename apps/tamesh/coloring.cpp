#include "tamesh/coloring.h"

#include "tabase/tacolortables.h"
#include "tabase/taunionfind.h"
#include "tamesh/meancurvature.h"
#include "tamesh/progress.h"
#include "tamesh/unitbox.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <utility>

namespace tamesh {

namespace {

    constexpr unsigned long kTableSize = 256;

    // The palette of Okabe and Ito, "Color Universal Design" (2008), which people tell apart who do
    // not see red and green apart; without its black.
    constexpr std::array kComponentColors{ TaColor::FromDword(0xFF56B4E9u),
        TaColor::FromDword(0xFFE69F00u), TaColor::FromDword(0xFF009E73u),
        TaColor::FromDword(0xFFF0E442u), TaColor::FromDword(0xFF0072B2u),
        TaColor::FromDword(0xFFD55E00u), TaColor::FromDword(0xFFCC79A7u) };
    constexpr TaColor kOtherComponents = TaColor::FromDword(0xFFC0C0C0u);

    /// The larger absolute value of the two between which all but the outermost 2 % at either end
    /// lie; 0 where there is no number.
    double findQuantileBound(const std::vector<double>& values)
    {
        std::vector<double> numbers;
        std::ranges::copy_if(
            values, std::back_inserter(numbers), [](double value) { return !std::isnan(value); });
        if (numbers.empty()) {
            return 0.0;
        }
        const auto left = static_cast<std::ptrdiff_t>(numbers.size() / 50);
        const auto lower = numbers.begin() + left;
        const auto upper = numbers.end() - 1 - left;
        std::nth_element(numbers.begin(), lower, numbers.end());
        std::nth_element(lower, upper, numbers.end());
        return std::max(std::abs(*lower), std::abs(*upper));
    }

    /// The sets of which there are colours, the largest first.
    std::vector<std::uint32_t> findLargest(const std::vector<std::uint32_t>& sizes)
    {
        std::vector<std::uint32_t> sets(sizes.size());
        std::iota(sets.begin(), sets.end(), 0u);
        const std::size_t count = std::min(sets.size(), kComponentColors.size());
        std::ranges::partial_sort(
            sets, sets.begin() + static_cast<std::ptrdiff_t>(count), {}, [&](std::uint32_t set) {
                return std::pair(~sizes[set], set); // of equal ones the one that comes first
            });
        sets.resize(count);
        return sets;
    }

} // namespace

SColoring ColorByHeight(const Mesh& mesh, EAxis axis, Progress* progress)
{
    ProgressSteps steps(progress);
    const SBounds bounds = FindBounds(mesh);
    SColoring coloring;
    coloring.title = "height";
    coloring.lower = GetCoordinate(bounds.lower, axis);
    coloring.upper = GetCoordinate(bounds.upper, axis);
    coloring.table = TaColorTables::CreateViridis(kTableSize);
    // Shares of the range, because floats hold few digits of a height above some far level, and
    // halved, because the range may be too large for a double.
    const double range = coloring.upper * 0.5 - coloring.lower * 0.5;
    coloring.values.reserve(mesh.GetVertexCount());
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        const double height = GetCoordinate(mesh.GetVertex(i), axis) * 0.5 - coloring.lower * 0.5;
        const double share = range > 0.0 ? std::clamp(height / range, 0.0, 1.0) : 0.5;
        coloring.values.push_back(static_cast<float>(share));
        steps.Advance();
    }
    return coloring;
}

SColoring ColorByCurvature(const Mesh& mesh, Progress* progress)
{
    constexpr double kFlat = 1e-6; // a radius of a million meshes: nothing but rounding
    ProgressSteps steps(progress);
    const UnitBox box(mesh);
    const std::vector<double> curvatures = FindMeanCurvatures(mesh, box, steps);
    const double widest = std::max(kFlat, findQuantileBound(curvatures));

    SColoring coloring;
    coloring.title = "mean curvature";
    coloring.upper = widest / box.GetUnit();
    coloring.lower = -coloring.upper;
    coloring.table = TaColorTables::CreateCoolWarm(kTableSize, -1.0f, 1.0f);
    coloring.values.reserve(curvatures.size());
    for (const double curvature : curvatures) {
        coloring.values.push_back(static_cast<float>(std::clamp(curvature / widest, -1.0, 1.0)));
    }
    return coloring;
}

SColoring ColorByComponent(const Mesh& mesh, Progress* progress)
{
    ProgressSteps steps(progress);
    TaUnionFind sets(mesh.GetVertexCount());
    for (std::uint32_t i = 0; i < mesh.GetFaceCount(); ++i) {
        const std::span<const std::uint32_t> face = mesh.GetFace(i);
        for (const std::uint32_t corner : face) {
            sets.AddPair(face.front(), corner);
        }
        steps.Advance();
    }
    std::vector<std::uint32_t> sizes(sets.CreateSetNumbers());
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        ++sizes[sets.GetSetNumber(i)];
    }
    const std::vector<std::uint32_t> largest = findLargest(sizes);
    const bool hasOthers = largest.size() < sizes.size();
    const std::size_t colorCount = largest.size() + (hasOthers ? 1 : 0);

    SColoring coloring;
    coloring.title = "components: " + std::to_string(sizes.size()) + ", by number of vertices";
    coloring.upper = static_cast<double>(colorCount);
    coloring.table = TuMake<TaColorTable>(
        static_cast<unsigned long>(colorCount), 0.0f, static_cast<float>(colorCount));
    // The last entry is that of the largest, so that it stands at the top of the bar.
    std::vector<float> valueOfSet(sizes.size(), 0.5f);
    if (hasOthers) {
        coloring.names.emplace_back("others");
        coloring.table->SetEntryColor(0, kOtherComponents);
    }
    for (std::size_t i = largest.size(); i-- > 0;) {
        const auto entry = static_cast<std::uint32_t>(coloring.names.size());
        valueOfSet[largest[i]] = static_cast<float>(entry) + 0.5f;
        coloring.table->SetEntryColor(entry, kComponentColors[i]);
        coloring.names.push_back(std::to_string(sizes[largest[i]]));
    }
    coloring.values.reserve(mesh.GetVertexCount());
    for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
        coloring.values.push_back(valueOfSet[sets.GetSetNumber(i)]);
        steps.Advance();
    }
    return coloring;
}

} // namespace tamesh
