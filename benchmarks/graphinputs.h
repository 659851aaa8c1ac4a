#pragma once

// The graphs of the benchmark: connections in the order in which they are added.

#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

struct SGraphInput
{
    struct SConnection
    {
        std::uint32_t from;
        std::uint32_t to;
        float weight;
    };

    std::uint32_t nodeCount = 0;
    std::vector<SConnection> connections;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> queries;
};

enum EGraphShape
{
    eGS_Grid, // four neighbours, 3.996 connections a node
    eGS_Random, // eight targets a node
    eGS_Mesh, // six neighbours, by their distance
};

namespace graphinputs {

class Weights
{
public:
    /// 1 to 2.
    float Next() { return 1.0F + static_cast<float>(m_random() >> 8) / 16777216.0F; }
    std::uint32_t Below(std::uint32_t count)
    {
        return static_cast<std::uint32_t>((std::uint64_t{ m_random() } * count) >> 32);
    }

private:
    std::mt19937 m_random{ 1 };
};

inline void addBoth(SGraphInput& input, std::uint32_t a, std::uint32_t b, float weight)
{
    input.connections.push_back({ a, b, weight });
    input.connections.push_back({ b, a, weight });
}

inline SGraphInput makeGrid(std::uint32_t count)
{
    const auto width = static_cast<std::uint32_t>(std::lround(std::sqrt(count)));
    SGraphInput input{ width * width, {}, {} };
    Weights weights;
    for (std::uint32_t i = 0; i != input.nodeCount; ++i) {
        if (i % width + 1 != width) {
            addBoth(input, i, i + 1, weights.Next());
        }
        if (i + width < input.nodeCount) {
            addBoth(input, i, i + width, weights.Next());
        }
    }
    return input;
}

inline SGraphInput makeRandom(std::uint32_t count)
{
    SGraphInput input{ count, {}, {} };
    Weights weights;
    for (std::uint32_t i = 0; i != 8 * count; ++i) {
        const std::uint32_t from = weights.Below(count);
        input.connections.push_back({ from, weights.Below(count), weights.Next() });
    }
    return input;
}

/// A triangulated torus whose vertices have been shifted a little.
inline SGraphInput makeMesh(std::uint32_t count)
{
    const auto width = static_cast<std::uint32_t>(std::lround(std::sqrt(count)));
    SGraphInput input{ width * width, {}, {} };
    Weights weights;
    for (std::uint32_t i = 0; i != input.nodeCount; ++i) {
        const std::uint32_t row = i / width * width;
        const std::uint32_t right = row + (i + 1) % width;
        const std::uint32_t below = (i + width) % input.nodeCount;
        const std::uint32_t belowRight = below / width * width + right % width;
        addBoth(input, i, right, 0.9F + 0.2F * weights.Next());
        addBoth(input, i, below, 0.9F + 0.2F * weights.Next());
        addBoth(input, i, belowRight, 1.3F + 0.2F * weights.Next());
    }
    return input;
}

} // namespace graphinputs

/// The graph of the last shape and size stays: it is made once and not once a measurement.
inline const SGraphInput& GetGraphInput(EGraphShape shape, std::int64_t count)
{
    static std::map<std::pair<int, std::int64_t>, SGraphInput> s_inputs;
    SGraphInput& input = s_inputs[{ shape, count }];
    if (input.nodeCount == 0) {
        const auto nodes = static_cast<std::uint32_t>(count);
        input = shape == eGS_Grid ? graphinputs::makeGrid(nodes)
            : shape == eGS_Random ? graphinputs::makeRandom(nodes)
                                  : graphinputs::makeMesh(nodes);
        input.queries.emplace_back(0, input.nodeCount - 1);
        graphinputs::Weights numbers;
        for (int i = 0; i != 3; ++i) {
            const std::uint32_t from = numbers.Below(input.nodeCount);
            input.queries.emplace_back(from, numbers.Below(input.nodeCount));
        }
    }
    return input;
}
