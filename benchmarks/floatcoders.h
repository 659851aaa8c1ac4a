#pragma once

#include "scans.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tacompression/tafloatingpointquantizationuniform.h"
#include "tacompression/tastreamreadcompressedfloatingpoint.h"
#include "tacompression/tastreamreadpredictivecoder.h"
#include "tacompression/tastreamwritecompressedfloatingpoint.h"
#include "tacompression/tastreamwritepredictivecoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

inline constexpr std::size_t kRun = 512; // values that are handed over at once

/// Floats to unsigned numbers of the same order, for differences that are small where the floats
/// are close.
inline std::uint32_t toOrdered(float value)
{
    const auto bits = std::bit_cast<std::uint32_t>(value);
    return bits ^ (static_cast<std::uint32_t>(static_cast<std::int32_t>(bits) >> 31) | 0x80000000);
}

inline float fromOrdered(std::uint32_t ordered)
{
    const auto isNegative = static_cast<std::uint32_t>(~static_cast<std::int32_t>(ordered) >> 31);
    return std::bit_cast<float>(ordered ^ (isNegative | 0x80000000));
}

// How values become numbers: bit for bit, or as codes of a quantization. Restore gives what the
// reader will have.

struct Exact
{
    using Writer = TaStreamWritePredictiveCoder;
    using Reader = TaStreamReadPredictiveCoder;

    Exact(float /*lower*/, float /*upper*/, float /*scale*/) { }

    std::unique_ptr<Writer> MakeWriter(TuStreamWriteBinary& stream, std::size_t count) const
    {
        return std::make_unique<Writer>(
            stream, kFloatBits, static_cast<std::uint32_t>(count * sizeof(float)));
    }
    std::unique_ptr<Reader> MakeReader(TuStreamReadBinary& stream) const
    {
        return std::make_unique<Reader>(stream, kFloatBits);
    }
    /// `restored` is a copy of the values.
    void Restore(std::span<float> /*restored*/) const { }
    static void Write(
        Writer& writer, std::span<const float> values, std::span<const float> predictions)
    {
        std::array<std::uint32_t, kRun> numbers;
        std::array<std::uint32_t, kRun> predicted;
        for (std::size_t done = 0; done < values.size(); done += kRun) {
            const std::size_t count = std::min(values.size() - done, kRun);
            for (std::size_t i = 0; i < count; ++i) {
                numbers[i] = toOrdered(values[done + i]);
                predicted[i] = toOrdered(predictions[done + i]);
            }
            writer.WriteValues(std::span(numbers).first(count), std::span(predicted).first(count));
        }
    }
    static float Read(Reader& reader, float prediction)
    {
        return fromOrdered(reader.ReadValue(toOrdered(prediction)));
    }
    static double GetTolerance(const SFloats& /*input*/, float /*value*/) { return 0; }

private:
    static constexpr std::uint32_t kFloatBits = 32;
};

struct Quantized
{
    using Writer = TaStreamWriteCompressedFloatingPoint;
    using Reader = TaStreamReadCompressedFloatingPoint;

    Quantized(float lower, float upper, float scale)
        : m_quantization(lower, upper, scale)
    {
    }

    std::unique_ptr<Writer> MakeWriter(TuStreamWriteBinary& stream, std::size_t count) const
    {
        return std::make_unique<Writer>(
            stream, m_quantization, 0, static_cast<std::uint32_t>(count * sizeof(float)));
    }
    std::unique_ptr<Reader> MakeReader(TuStreamReadBinary& stream) const
    {
        return std::make_unique<Reader>(stream, m_quantization, 0);
    }
    void Restore(std::span<float> restored) const
    {
        std::vector<std::uint32_t> codes(restored.size());
        m_quantization.MapValues(restored, codes);
        m_quantization.UnmapValues(codes, restored);
    }
    static void Write(
        Writer& writer, std::span<const float> values, std::span<const float> predictions)
    {
        writer.WriteValues(values, predictions);
    }
    static float Read(Reader& reader, float prediction) { return reader.ReadValue(prediction); }
    /// Half a step, and the rounding of the restored value.
    static double GetTolerance(const SFloats& input, float /*value*/) { return 0.51 / input.scale; }

private:
    TaFloatingPointQuantizationUniform m_quantization;
};

/// Points in the order in which the faces name them. Each completes a parallelogram with the face
/// before where that shares an edge with its own, and is otherwise like the point before. Each axis
/// is a block of its own, for its numbers are of another size.
template <class Coding> struct TaMesh
{
    using Input = SMesh;
    using Encoded = TaStreamWriteBinaryBuffer;

    static void Encode(const SMesh& mesh, Encoded& encoded)
    {
        encoded.Clear();
        const Axes<Coding> codings = makeCodings(mesh);
        const std::size_t pointCount = mesh.values.size() / kAxes;
        const auto makeWriter
            = [&](const Coding& coding) { return coding.MakeWriter(encoded, pointCount); };
        const Axes<std::unique_ptr<typename Coding::Writer>> writers{ makeWriter(codings[0]),
            makeWriter(codings[1]), makeWriter(codings[2]) };
        std::vector<float> restored(mesh.values.size());
        std::vector<float> alongAxis(pointCount);
        for (std::size_t axis = 0; axis < kAxes; ++axis) {
            for (std::size_t i = 0; i < pointCount; ++i) {
                alongAxis[i] = mesh.values[kAxes * i + axis];
            }
            codings[axis].Restore(alongAxis);
            for (std::size_t i = 0; i < pointCount; ++i) {
                restored[kAxes * i + axis] = alongAxis[i];
            }
        }
        Axes<std::array<float, kRun>> values;
        Axes<std::array<float, kRun>> predictions;
        std::size_t waiting = 0;
        const auto flush = [&] {
            for (std::size_t axis = 0; axis < kAxes; ++axis) {
                Coding::Write(*writers[axis], std::span(values[axis]).first(waiting),
                    std::span(predictions[axis]).first(waiting));
            }
            waiting = 0;
        };
        visitPoints(mesh.faces, pointCount, restored,
            [&](const float* point, const Axes<float>& prediction) {
                for (std::size_t axis = 0; axis < kAxes; ++axis) {
                    values[axis][waiting] = point[axis];
                    predictions[axis][waiting] = prediction[axis];
                }
                if (++waiting == kRun) {
                    flush();
                }
            });
        flush();
        for (const auto& writer : writers) {
            writer->Finish();
        }
    }

    static void Decode(const Encoded& encoded, const SMesh& mesh, std::span<float> values)
    {
        TaStreamReadBinaryBuffer stream(encoded);
        const Axes<Coding> codings = makeCodings(mesh);
        const Axes<std::unique_ptr<typename Coding::Reader>> readers{ codings[0].MakeReader(stream),
            codings[1].MakeReader(stream), codings[2].MakeReader(stream) };
        visitPoints(mesh.faces, values.size() / kAxes, values,
            [&](float* point, const Axes<float>& prediction) {
                for (std::size_t axis = 0; axis < kAxes; ++axis) {
                    point[axis] = Coding::Read(*readers[axis], prediction[axis]);
                }
            });
    }

    static double GetTolerance(const SFloats& input, float value)
    {
        return Coding::GetTolerance(input, value);
    }

private:
    static constexpr std::size_t kAxes = 3;
    template <class T> using Axes = std::array<T, kAxes>;

    static Axes<Coding> makeCodings(const SMesh& mesh)
    {
        const auto make = [&](std::size_t axis) {
            return Coding(mesh.lower[axis], mesh.upper[axis], mesh.scale);
        };
        return { make(0), make(1), make(2) };
    }

    template <class Values, class Visit>
    static void visitPoints(const std::vector<std::uint32_t>& faces, std::size_t pointCount,
        Values& values, Visit visit)
    {
        std::vector<unsigned char> isKnown(pointCount);
        Axes<float> prediction{};
        std::span<const std::uint32_t> before;
        for (std::size_t i = 0; i < faces.size(); i += 3) {
            const auto face = std::span(faces).subspan(i, 3);
            for (std::size_t corner = 0; corner < 3; ++corner) {
                const std::uint32_t index = face[corner];
                if (isKnown[index] == 0) {
                    isKnown[index] = 1;
                    const std::uint32_t left = face[(corner + 1) % 3];
                    const std::uint32_t right = face[(corner + 2) % 3];
                    if (hasEdge(before, left, right)) {
                        const std::uint32_t opposite
                            = before[0] ^ before[1] ^ before[2] ^ left ^ right;
                        for (std::size_t axis = 0; axis < kAxes; ++axis) {
                            prediction[axis] = values[kAxes * left + axis]
                                + (values[kAxes * right + axis] - values[kAxes * opposite + axis]);
                        }
                    }
                    auto* point = &values[kAxes * index];
                    visit(point, std::as_const(prediction));
                    std::copy_n(point, kAxes, prediction.begin());
                }
            }
            before = face;
        }
    }

    /// Then the face's points are all known, for it came before.
    static bool hasEdge(std::span<const std::uint32_t> face, std::uint32_t a, std::uint32_t b)
    {
        const auto has = [&](std::uint32_t index) {
            return face[0] == index || face[1] == index || face[2] == index;
        };
        return !face.empty() && has(a) && has(b);
    }
};

/// Each sample from the seven before it in its cell, and from how wrong that would have been in the
/// row above. This is summed up along the rows: by how much a sample exceeds the one before is
/// known for a whole row at once, but for what the row itself adds, and the small numbers meet
/// before the large one. Outside, all is 0.
template <class Coding> struct TaField
{
    using Input = SField;
    using Encoded = TaStreamWriteBinaryBuffer;

    static void Encode(const SField& field, Encoded& encoded)
    {
        encoded.Clear();
        const Coding coding(field.lower[0], field.upper[0], field.scale);
        const auto writer = coding.MakeWriter(encoded, field.values.size());
        std::vector<float> restored = field.values;
        coding.Restore(restored);
        visitRows(std::span(restored), field.rowLength,
            [&](std::span<float> row, std::span<float> changes) {
                for (std::size_t x = 1; x < row.size(); ++x) {
                    changes[x] += row[x - 1];
                }
                Coding::Write(*writer, row, changes);
            });
        writer->Finish();
    }

    static void Decode(const Encoded& encoded, const SField& field, std::span<float> values)
    {
        TaStreamReadBinaryBuffer stream(encoded);
        const Coding coding(field.lower[0], field.upper[0], field.scale);
        const auto reader = coding.MakeReader(stream);
        visitRows(
            values, field.rowLength, [&](std::span<float> row, std::span<const float> changes) {
                float value = 0;
                for (std::size_t x = 0; x < row.size(); ++x) {
                    value = Coding::Read(*reader, value + changes[x]);
                    row[x] = value;
                }
            });
    }

    static double GetTolerance(const SFloats& input, float value)
    {
        return Coding::GetTolerance(input, value);
    }

private:
    using Row = std::span<const float>;

    /// Gives each row, and by how much each of its values is expected to exceed the one before.
    template <class Visit>
    static void visitRows(std::span<float> values, std::size_t side, Visit visit)
    {
        std::vector<float> changes(side);
        std::vector<float> slopes(side);
        const std::vector<float> zeros(side);
        const Row outside(zeros);
        const auto getRow = [&](std::size_t z, std::size_t y) {
            return Row(values.subspan((z * side + y) * side, side));
        };
        for (std::size_t z = 0; z < side; ++z) {
            for (std::size_t y = 0; y < side; ++y) {
                const Row up = y == 0 ? outside : getRow(z, y - 1);
                const Row back = z == 0 ? outside : getRow(z - 1, y);
                const Row upBack = y == 0 || z == 0 ? outside : getRow(z - 1, y - 1);
                predictChanges(up, back, upBack, changes);
                if (z > 0 && y > 1) {
                    addErrorAbove(
                        up, getRow(z, y - 2), upBack, getRow(z - 1, y - 2), slopes, changes);
                }
                visit(values.subspan((z * side + y) * side, side), changes);
            }
        }
    }

    static void predictChanges(Row up, Row back, Row upBack, std::span<float> changes)
    {
        changes[0] = up[0] + (back[0] - upBack[0]);
        for (std::size_t x = 1; x < changes.size(); ++x) {
            changes[x]
                = (up[x] - up[x - 1]) + ((back[x] - back[x - 1]) - (upBack[x] - upBack[x - 1]));
        }
    }

    /// The mean of the errors at some samples around: it is the difference of two sums that have
    /// most of their terms in common.
    static void addErrorAbove(Row up, Row upUp, Row upBack, Row upUpBack, std::span<float> slopes,
        std::span<float> changes)
    {
        for (std::size_t x = 0; x < slopes.size(); ++x) {
            slopes[x] = (up[x] - upUp[x]) - (upBack[x] - upUpBack[x]);
        }
        constexpr std::size_t kReach = 4;
        for (std::size_t x = kReach + 1; x + kReach < slopes.size(); ++x) {
            changes[x] += (slopes[x + kReach] - slopes[x - 1 - kReach]) / (2 * kReach + 1);
        }
    }
};
