#pragma once

#include "bytecodecs.h"
#include "floatcoders.h"
#include "scans.h"

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

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

/// The coordinates of one axis after the other, as codecs of arrays want them.
inline std::vector<float> splitAxes(std::span<const float> values, std::size_t axes)
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

inline void joinAxes(std::span<const float> split, std::size_t axes, std::span<float> values)
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
    static constexpr bool kReordersPoints = true;

    static void Encode(const SMesh& mesh, Encoded& encoded)
    {
        constexpr int kBits = 16;
        static const SMesh* s_input = nullptr;
        static std::unique_ptr<draco::Mesh> s_mesh;
        if (s_input != &mesh || s_mesh->num_points() != mesh.values.size() / 3) {
            s_mesh = convertMesh(mesh);
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
    static std::unique_ptr<draco::Mesh> convertMesh(const SMesh& mesh)
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
