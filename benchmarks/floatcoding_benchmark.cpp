// The floats of a scanned mesh and of a smooth field, bit for bit and at 16 bits, both ways. What
// makes the predictions belongs to the time, as it does for the peers. The counter "bytes" is per
// float, and every decoder's result is compared with the input.

#include "bytecodecs.h"
#include "scans.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tacompression/tafloatingpointquantizationuniform.h"
#include "tacompression/tastreamreadcompressedfloatingpoint.h"
#include "tacompression/tastreamreadpredictivecoder.h"
#include "tacompression/tastreamwritecompressedfloatingpoint.h"
#include "tacompression/tastreamwritepredictivecoder.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_DRACO)
#include <draco/compression/decode.h>
#include <draco/compression/encode.h>
#include <draco/mesh/mesh.h>
#endif
#if defined(TA_PEER_FPZIP)
#include <fpzip.h>
#endif
#if defined(TA_PEER_MESHOPTIMIZER)
#include <meshoptimizer.h>
#endif
#if defined(TA_PEER_ZFP)
#include <zfp.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kRun = 512; // values that are handed over at once

/// Floats to unsigned numbers of the same order, for differences that are small where the floats
/// are close.
std::uint32_t toOrdered(float value)
{
    const auto bits = std::bit_cast<std::uint32_t>(value);
    return bits ^ (static_cast<std::uint32_t>(static_cast<std::int32_t>(bits) >> 31) | 0x80000000);
}

float fromOrdered(std::uint32_t ordered)
{
    const auto isNegative = static_cast<std::uint32_t>(~static_cast<std::int32_t>(ordered) >> 31);
    return std::bit_cast<float>(ordered ^ (isNegative | 0x80000000));
}

// How values become numbers: bit for bit, or as codes of a quantization. Restore gives what the
// reader will have, in place or in the buffer.

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
    float Restore(float value) const { return value; }
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
    float Restore(float value) const { return m_quantization.Unmap(m_quantization.Map(value)); }
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
        for (std::size_t i = 0; i < restored.size(); i += kAxes) {
            for (std::size_t axis = 0; axis < kAxes; ++axis) {
                restored[i + axis] = codings[axis].Restore(mesh.values[i + axis]);
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
        std::vector<float> restored(field.values.size());
        std::transform(field.values.begin(), field.values.end(), restored.begin(),
            [&](float value) { return coding.Restore(value); });
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

/// The coordinates of one axis after the other, as codecs of arrays want them.
std::vector<float> splitAxes(std::span<const float> values, std::size_t axes)
{
    std::vector<float> split(values.size());
    for (std::size_t axis = 0; axis < axes; ++axis) {
        for (std::size_t i = axis, to = axis * (values.size() / axes); i < values.size();
             i += axes, ++to) {
            split[to] = values[i];
        }
    }
    return split;
}

void joinAxes(std::span<const float> split, std::size_t axes, std::span<float> values)
{
    for (std::size_t axis = 0; axis < axes; ++axis) {
        for (std::size_t i = axis, from = axis * (values.size() / axes); i < values.size();
             i += axes, ++from) {
            values[i] = split[from];
        }
    }
}

/// An array as peers see it: so many fields of three extents.
struct SExtents
{
    std::size_t fields = 1;
    std::size_t nx = 1;
    std::size_t ny = 1;
    std::size_t nz = 1;
};

/// Points one after the other, as a codec sees them that knows nothing of the faces.
struct InSequence
{
    using Input = SMesh;
    static SExtents Get(const SMesh& mesh) { return { 3, mesh.values.size() / 3, 1, 1 }; }
};

/// Points as the grid that they are here, which few meshes are.
struct InRows
{
    using Input = SMesh;
    static SExtents Get(const SMesh& mesh) { return { 3, mesh.rowLength, mesh.rowLength, 1 }; }
};

struct InCube
{
    using Input = SField;
    static SExtents Get(const SField& field)
    {
        return { 1, field.rowLength, field.rowLength, field.rowLength };
    }
};

#if defined(TA_PEER_FPZIP)
/// With so many leading bits of each float.
template <class Layout, int kBits> struct Fpzip
{
    using Input = typename Layout::Input;
    using Encoded = EncodedBytes;

    static void Encode(const Input& input, Encoded& encoded)
    {
        const SExtents extents = Layout::Get(input);
        const ByteSpan room = encoded.Provide(2 * std::span(input.values).size_bytes() + 1024);
        FPZ* fpz = fpzip_write_to_buffer(room.data(), room.size());
        describe(*fpz, extents);
        const std::size_t size = extents.fields == 1
            ? fpzip_write(fpz, input.values.data())
            : fpzip_write(fpz, splitAxes(input.values, extents.fields).data());
        fpzip_write_close(fpz);
        requirePeer(size != 0, "fpzip does not encode");
        encoded.SetSize(size);
    }
    static void Decode(const Encoded& encoded, const Input& input, std::span<float> values)
    {
        const SExtents extents = Layout::Get(input);
        FPZ* fpz = fpzip_read_from_buffer(encoded.Get().data());
        describe(*fpz, extents);
        std::size_t size = 0;
        if (extents.fields == 1) {
            size = fpzip_read(fpz, values.data());
        } else {
            std::vector<float> split(values.size());
            size = fpzip_read(fpz, split.data());
            joinAxes(split, extents.fields, values);
        }
        fpzip_read_close(fpz);
        requirePeer(size != 0, "fpzip does not decode");
    }
    static double GetTolerance(const SFloats& /*input*/, float value)
    {
        constexpr int kSignAndExponent = 9;
        return kBits == 32 ? 0 : std::ldexp(std::abs(value), kSignAndExponent - kBits);
    }

private:
    static void describe(FPZ& fpz, const SExtents& extents)
    {
        fpz.type = FPZIP_TYPE_FLOAT;
        fpz.prec = kBits;
        fpz.nx = static_cast<int>(extents.nx);
        fpz.ny = static_cast<int>(extents.ny);
        fpz.nz = static_cast<int>(extents.nz);
        fpz.nf = static_cast<int>(extents.fields);
    }
};
#endif

#if defined(TA_PEER_ZFP)
/// With errors of half a step at most.
template <class Layout> struct Zfp
{
    using Input = typename Layout::Input;
    using Encoded = EncodedBytes;

    static void Encode(const Input& input, Encoded& encoded)
    {
        const SExtents extents = Layout::Get(input);
        std::vector<float> split = splitAxes(input.values, extents.fields);
        const ByteSpan room = encoded.Provide(2 * std::span(split).size_bytes() + 1024);
        encoded.SetSize(run(input, extents, room,
            [&](zfp_stream* stream, zfp_field* field, std::size_t axis, std::size_t count) {
                zfp_field_set_pointer(field, split.data() + axis * count);
                requirePeer(zfp_compress(stream, field) != 0, "zfp does not encode");
            }));
    }
    static void Decode(const Encoded& encoded, const Input& input, std::span<float> values)
    {
        const SExtents extents = Layout::Get(input);
        std::vector<float> split(values.size());
        run(input, extents, encoded.Get(),
            [&](zfp_stream* stream, zfp_field* field, std::size_t axis, std::size_t count) {
                zfp_field_set_pointer(field, split.data() + axis * count);
                requirePeer(zfp_decompress(stream, field) != 0, "zfp does not decode");
            });
        joinAxes(split, extents.fields, values);
    }
    static double GetTolerance(const SFloats& input, float /*value*/) { return 0.5 / input.scale; }

private:
    template <class Code>
    static std::size_t run(
        const Input& input, const SExtents& extents, ConstByteSpan bytes, Code code)
    {
        bitstream* bits = stream_open(const_cast<unsigned char*>(bytes.data()), bytes.size());
        zfp_stream* stream = zfp_stream_open(bits);
        zfp_stream_set_accuracy(stream, GetTolerance(input, 0));
        zfp_field* field = extents.nz > 1
            ? zfp_field_3d(nullptr, zfp_type_float, extents.nx, extents.ny, extents.nz)
            : zfp_field_2d(nullptr, zfp_type_float, extents.nx, extents.ny);
        for (std::size_t axis = 0; axis < extents.fields; ++axis) {
            code(stream, field, axis, extents.nx * extents.ny * extents.nz);
        }
        zfp_field_free(field);
        zfp_stream_close(stream);
        const std::size_t size = stream_size(bits);
        stream_close(bits);
        return size;
    }
};
#endif

/// A general codec on the floats themselves.
template <class Codec, class Data> struct Raw
{
    using Input = Data;
    using Encoded = EncodedBytes;

    static void Encode(const Input& input, Encoded& encoded)
    {
        const auto bytes = std::as_bytes(std::span(input.values));
        Codec::Encode(
            { reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size() }, encoded);
    }
    static void Decode(const Encoded& encoded, const Input& /*input*/, std::span<float> values)
    {
        const auto bytes = std::as_writable_bytes(values);
        Codec::Decode(
            encoded.Get(), { reinterpret_cast<unsigned char*>(bytes.data()), bytes.size() });
    }
    static double GetTolerance(const SFloats& /*input*/, float /*value*/) { return 0; }
};

/// Floats to codes of 16 bits and back, as the quantized coders do it. A point takes `stride`
/// codes.
template <class Input> class Codes
{
public:
    Codes(const Input& input, std::size_t stride)
        : m_stride(stride)
        , m_codes(input.values.size() / input.lower.size() * stride)
    {
        for (std::size_t axis = 0; axis < input.lower.size(); ++axis) {
            m_quantizations.emplace_back(input.lower[axis], input.upper[axis], input.scale);
        }
    }

    void Map(const Input& input)
    {
        const std::size_t axes = m_quantizations.size();
        for (std::size_t i = 0, to = 0; i < input.values.size(); i += axes, to += m_stride) {
            for (std::size_t axis = 0; axis < axes; ++axis) {
                m_codes[to + axis]
                    = static_cast<std::uint16_t>(m_quantizations[axis].Map(input.values[i + axis]));
            }
        }
    }
    void Unmap(std::span<float> values) const
    {
        const std::size_t axes = m_quantizations.size();
        for (std::size_t i = 0, from = 0; i < values.size(); i += axes, from += m_stride) {
            for (std::size_t axis = 0; axis < axes; ++axis) {
                values[i + axis] = m_quantizations[axis].Unmap(m_codes[from + axis]);
            }
        }
    }
    ByteSpan GetBytes()
    {
        const auto bytes = std::as_writable_bytes(std::span(m_codes));
        return { reinterpret_cast<unsigned char*>(bytes.data()), bytes.size() };
    }

private:
    std::size_t m_stride;
    std::vector<std::uint16_t> m_codes;
    std::vector<TaFloatingPointQuantizationUniform> m_quantizations;
};

/// A general codec on the codes.
template <class Codec, class Data> struct OnCodes
{
    using Input = Data;
    using Encoded = EncodedBytes;

    static void Encode(const Input& input, Encoded& encoded)
    {
        Codes<Input> codes(input, input.lower.size());
        codes.Map(input);
        Codec::Encode(codes.GetBytes(), encoded);
    }
    static void Decode(const Encoded& encoded, const Input& input, std::span<float> values)
    {
        Codes<Input> codes(input, input.lower.size());
        Codec::Decode(encoded.Get(), codes.GetBytes());
        codes.Unmap(values);
    }
    static double GetTolerance(const SFloats& input, float value)
    {
        return Quantized::GetTolerance(input, value);
    }
};

#if defined(TA_PEER_MESHOPTIMIZER) && defined(TA_PEER_ZSTD)
/// The codes in vertices of eight bytes, which a general codec then makes smaller.
struct Meshoptimizer
{
    using Input = SMesh;
    using Encoded = EncodedBytes;

    static void Encode(const SMesh& mesh, Encoded& encoded)
    {
        Codes<SMesh> codes(mesh, kStride);
        codes.Map(mesh);
        const std::size_t count = mesh.values.size() / 3;
        EncodedBytes vertices;
        const ByteSpan room = vertices.Provide(meshopt_encodeVertexBufferBound(count, kVertex));
        vertices.SetSize(meshopt_encodeVertexBuffer(
            room.data(), room.size(), codes.GetBytes().data(), count, kVertex));
        Zstd3::Encode(vertices.Get(), encoded);
    }
    static void Decode(const Encoded& encoded, const SMesh& mesh, std::span<float> values)
    {
        const std::size_t count = mesh.values.size() / 3;
        std::vector<unsigned char> vertices(
            ZSTD_getFrameContentSize(encoded.Get().data(), encoded.GetSize()));
        Zstd3::Decode(encoded.Get(), vertices);
        Codes<SMesh> codes(mesh, kStride);
        requirePeer(meshopt_decodeVertexBuffer(
                        codes.GetBytes().data(), count, kVertex, vertices.data(), vertices.size())
                == 0,
            "meshoptimizer does not decode");
        codes.Unmap(values);
    }
    static double GetTolerance(const SFloats& input, float value)
    {
        return Quantized::GetTolerance(input, value);
    }

private:
    static constexpr std::size_t kStride = 4;
    static constexpr std::size_t kVertex = kStride * sizeof(std::uint16_t);
};
#endif

#if defined(TA_PEER_DRACO)
/// With the connectivity, which is a small part of it in such a regular mesh. The points come back
/// in another order.
struct Draco
{
    using Input = SMesh;
    using Encoded = draco::EncoderBuffer;

    static void Encode(const SMesh& mesh, Encoded& encoded)
    {
        constexpr int kBits = 16;
        static const SMesh* s_input = nullptr;
        static std::unique_ptr<draco::Mesh> s_mesh;
        if (s_input != &mesh || s_mesh->num_points() != mesh.values.size() / 3) {
            s_mesh = makeMesh(mesh);
            s_input = &mesh;
        }
        encoded.Clear();
        draco::Encoder encoder;
        encoder.SetAttributeQuantization(draco::GeometryAttribute::POSITION, kBits);
        requirePeer(encoder.EncodeMeshToBuffer(*s_mesh, &encoded).ok(), "Draco does not encode");
    }
    static void Decode(const Encoded& encoded, const SMesh& mesh, std::span<float> values)
    {
        draco::DecoderBuffer buffer;
        buffer.Init(encoded.data(), encoded.size());
        draco::Decoder decoder;
        auto decoded = decoder.DecodeMeshFromBuffer(&buffer);
        requirePeer(decoded.ok() && decoded.value()->num_points() == mesh.values.size() / 3,
            "Draco does not decode");
        const draco::PointAttribute& positions
            = *decoded.value()->GetNamedAttribute(draco::GeometryAttribute::POSITION);
        for (std::uint32_t i = 0; i < mesh.values.size() / 3; ++i) {
            positions.GetMappedValue(draco::PointIndex(i), &values[std::size_t{ i } * 3]);
        }
    }
    static double GetTolerance(const SFloats& input, float value)
    {
        return Quantized::GetTolerance(input, value);
    }

private:
    static std::unique_ptr<draco::Mesh> makeMesh(const SMesh& mesh)
    {
        auto result = std::make_unique<draco::Mesh>();
        const auto count = static_cast<std::uint32_t>(mesh.values.size() / 3);
        result->set_num_points(count);
        draco::GeometryAttribute description;
        description.Init(draco::GeometryAttribute::POSITION, nullptr, 3, draco::DT_FLOAT32, false,
            3 * sizeof(float), 0);
        draco::PointAttribute& positions
            = *result->attribute(result->AddAttribute(description, true, count));
        for (std::uint32_t i = 0; i < count; ++i) {
            positions.SetAttributeValue(
                draco::AttributeValueIndex(i), &mesh.values[std::size_t{ i } * 3]);
        }
        for (std::size_t i = 0; i < mesh.faces.size(); i += 3) {
            result->AddFace({ draco::PointIndex(mesh.faces[i]),
                draco::PointIndex(mesh.faces[i + 1]), draco::PointIndex(mesh.faces[i + 2]) });
        }
        return result;
    }
};
#endif

template <class Input> Input makeInput(std::int64_t points)
{
    if constexpr (std::is_same_v<Input, SMesh>) {
        return makeMesh(static_cast<std::uint32_t>(std::lround(std::sqrt(points))));
    } else {
        return makeField(static_cast<std::uint32_t>(std::lround(std::cbrt(points))));
    }
}

/// The input of the last size stays, so that it is made once and not once a measurement.
template <class Input> const Input& getInput(std::int64_t points)
{
    static std::int64_t s_points = 0;
    static Input s_input;
    if (s_points != points) {
        s_input = {};
        s_input = makeInput<Input>(points);
        s_points = points;
    }
    return s_input;
}

/// Whether each value came back as well as the codec promises. Points may come in another order,
/// so the values of each axis are compared in theirs.
template <class Codec>
bool isRight(const typename Codec::Input& input, const std::vector<float>& decoded)
{
    const std::size_t axes = input.lower.size();
    const std::size_t count = decoded.size() / axes;
    std::vector<float> expected = splitAxes(input.values, axes);
    std::vector<float> found = splitAxes(decoded, axes);
    for (std::size_t i = 0; i < decoded.size(); i += count) {
        std::sort(&expected[i], &expected[i] + count);
        std::sort(&found[i], &found[i] + count);
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!(std::abs(double{ found[i] } - expected[i])
                <= Codec::GetTolerance(input, expected[i]))) {
            return false;
        }
    }
    return true;
}

std::size_t getSize(const TaStreamWriteBinaryBuffer& encoded) { return encoded.GetSize(); }
std::size_t getSize(const EncodedBytes& encoded) { return encoded.GetSize(); }
#if defined(TA_PEER_DRACO)
std::size_t getSize(const draco::EncoderBuffer& encoded) { return encoded.size(); }
#endif

template <class Input>
void setCounters(benchmark::State& state, const Input& input, std::size_t encodedSize)
{
    const std::size_t count = input.values.size();
    state.counters["bytes"] = static_cast<double>(encodedSize) / static_cast<double>(count);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(count * sizeof(float)));
}

template <class Codec> void BM_EncodeFloats(benchmark::State& state)
{
    const auto& input = getInput<typename Codec::Input>(state.range(0));
    typename Codec::Encoded encoded;
    for (auto _ : state) {
        Codec::Encode(input, encoded);
    }
    setCounters(state, input, getSize(encoded));
}

template <class Codec> void BM_DecodeFloats(benchmark::State& state)
{
    const auto& input = getInput<typename Codec::Input>(state.range(0));
    typename Codec::Encoded encoded;
    Codec::Encode(input, encoded);
    std::vector<float> decoded(input.values.size());
    for (auto _ : state) {
        Codec::Decode(encoded, input, decoded);
    }
    if (!isRight<Codec>(input, decoded)) {
        state.SkipWithError("other floats came back");
    }
    setCounters(state, input, getSize(encoded));
}

constexpr std::array<std::int64_t, 4> kMeshPoints{ 100 * 100, 224 * 224, 708 * 708, 2236 * 2236 };
constexpr std::array<std::int64_t, 3> kFieldPoints{ 32 * 32 * 32, 128 * 128 * 128,
    256 * 256 * 256 };

template <class Codec> bool registerCodec(const std::string& name)
{
    const auto add = [](const std::string& full, void (*function)(benchmark::State&)) {
        auto* added = benchmark::RegisterBenchmark(full.c_str(), function);
        added->Unit(benchmark::kMillisecond);
        if constexpr (std::is_same_v<typename Codec::Input, SMesh>) {
            std::for_each(kMeshPoints.begin(), kMeshPoints.end(),
                [added](std::int64_t points) { added->Arg(points); });
        } else {
            std::for_each(kFieldPoints.begin(), kFieldPoints.end(),
                [added](std::int64_t points) { added->Arg(points); });
        }
    };
    add("BM_" + name + "Encode", BM_EncodeFloats<Codec>);
    add("BM_" + name + "Decode", BM_DecodeFloats<Codec>);
    return true;
}

[[maybe_unused]] const bool s_ours = registerCodec<TaMesh<Exact>>("TaPredictiveCoder_ExactMesh")
    && registerCodec<TaField<Exact>>("TaPredictiveCoder_ExactField")
    && registerCodec<TaMesh<Quantized>>("TaCompressedFloats_Mesh")
    && registerCodec<TaField<Quantized>>("TaCompressedFloats_Field");
#if defined(TA_PEER_FPZIP)
[[maybe_unused]] const bool s_fpzip = registerCodec<Fpzip<InSequence, 32>>("Fpzip_ExactMesh")
    && registerCodec<Fpzip<InRows, 32>>("FpzipInRows_ExactMesh")
    && registerCodec<Fpzip<InCube, 32>>("Fpzip_ExactField")
    && registerCodec<Fpzip<InSequence, 24>>("Fpzip_Mesh")
    && registerCodec<Fpzip<InRows, 24>>("FpzipInRows_Mesh")
    && registerCodec<Fpzip<InCube, 24>>("Fpzip_Field");
#endif
#if defined(TA_PEER_ZFP)
[[maybe_unused]] const bool s_zfp
    = registerCodec<Zfp<InRows>>("ZfpInRows_Mesh") && registerCodec<Zfp<InCube>>("Zfp_Field");
#endif
#if defined(TA_PEER_MESHOPTIMIZER) && defined(TA_PEER_ZSTD)
[[maybe_unused]] const bool s_meshoptimizer = registerCodec<Meshoptimizer>("Meshoptimizer_Mesh");
#endif
#if defined(TA_PEER_DRACO)
[[maybe_unused]] const bool s_draco = registerCodec<Draco>("Draco_Mesh");
#endif
#if defined(TA_PEER_ZSTD)
[[maybe_unused]] const bool s_zstd = registerCodec<Raw<Zstd3, SMesh>>("Zstd3_ExactMesh")
    && registerCodec<Raw<Zstd3, SField>>("Zstd3_ExactField")
    && registerCodec<OnCodes<Zstd3, SMesh>>("Zstd3_Mesh")
    && registerCodec<OnCodes<Zstd3, SField>>("Zstd3_Field");
#endif
#if defined(TA_PEER_ZLIB)
[[maybe_unused]] const bool s_zlib = registerCodec<Raw<Zlib6, SMesh>>("Zlib6_ExactMesh")
    && registerCodec<Raw<Zlib6, SField>>("Zlib6_ExactField")
    && registerCodec<OnCodes<Zlib6, SMesh>>("Zlib6_Mesh")
    && registerCodec<OnCodes<Zlib6, SField>>("Zlib6_Field");
#endif

} // namespace
