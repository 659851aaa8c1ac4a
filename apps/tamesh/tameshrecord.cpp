#include "tamesh/tameshrecord.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tulittleendian.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tamesh {

namespace {

    constexpr unsigned int kVersion = 0;
    constexpr unsigned int kFewestCorners = 3;

    /// Numbers go to and from the stream in blocks of this many: one call for thousands, and never
    /// more memory than data that has arrived, but for one block.
    constexpr std::uint32_t kBlock = 8192;

    /// `getNumber(i)` is number i of `count`.
    template <class Number, class Get>
    void writeNumbers(TuStreamWriteBinary& stream, std::uint64_t count, Get&& getNumber)
    {
        std::array<unsigned char, kBlock * sizeof(Number)> bytes;
        for (std::uint64_t done = 0; done < count;) {
            const std::uint64_t step = std::min<std::uint64_t>(kBlock, count - done);
            for (std::uint64_t i = 0; i < step; ++i) {
                TuStoreLittleEndian<Number>(bytes.data() + i * sizeof(Number), getNumber(done + i));
            }
            stream.WriteBuffer(bytes.data(), step * sizeof(Number));
            done += step;
        }
    }

    /// Hands `count` numbers to `take`, one after the other.
    template <class Number, class Take>
    void readNumbers(TuStreamReadBinary& stream, std::uint64_t count, Take&& take)
    {
        std::array<unsigned char, kBlock * sizeof(Number)> bytes;
        for (std::uint64_t done = 0; done < count;) {
            const std::uint64_t step = std::min<std::uint64_t>(kBlock, count - done);
            stream.ReadExactly(bytes.data(), step * sizeof(Number));
            for (std::uint64_t i = 0; i < step; ++i) {
                take(TuLoadLittleEndian<Number>(bytes.data() + i * sizeof(Number)));
            }
            done += step;
        }
    }

    TuArray<SPoint> readVertices(TuStreamReadBinary& stream, std::uint32_t count)
    {
        TuArray<SPoint> vertices;
        std::array<double, 3> point{};
        std::size_t axis = 0;
        readNumbers<double>(stream, std::uint64_t{ count } * point.size(), [&](double value) {
            if (!std::isfinite(value)) {
                throw TuExceptionStream(TU_HERE, u"a coordinate is not a finite number");
            }
            point[axis++] = value;
            if (axis == point.size()) {
                vertices.Add({ point[0], point[1], point[2] });
                axis = 0;
            }
        });
        return vertices;
    }

    TuArray<std::uint32_t> readFaceEnds(TuStreamReadBinary& stream, std::uint32_t count)
    {
        TuArray<std::uint32_t> ends;
        std::uint64_t end = 0;
        readNumbers<std::uint32_t>(stream, count, [&](std::uint32_t corners) {
            end += corners;
            if (corners < kFewestCorners || end > Mesh::kMaximumCount) {
                throw TuExceptionStream(TU_HERE, u"a face has a wrong number of corners");
            }
            ends.Add(static_cast<std::uint32_t>(end));
        });
        return ends;
    }

    TuArray<std::uint32_t> readCorners(
        TuStreamReadBinary& stream, std::uint32_t count, std::uint32_t vertexCount)
    {
        TuArray<std::uint32_t> corners;
        readNumbers<std::uint32_t>(stream, count, [&](std::uint32_t vertex) {
            if (vertex >= vertexCount) {
                throw TuExceptionStream(TU_HERE, u"a face names a vertex that is not there");
            }
            corners.Add(vertex);
        });
        return corners;
    }

} // namespace

TU_DEFINE_RTTI_ROOT(TaMeshRecord, &TaMeshRecord::CreateByFactory, nullptr);
TU_DEFINE_EXTENSIONS(TaMeshRecord, ISerializable)

void TaMeshRecord::Serialize(TuStreamWriteBinary& stream) const { Write(stream, m_mesh); }

void TaMeshRecord::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kVersion);
    std::uint32_t vertexCount = 0;
    std::uint32_t faceCount = 0;
    stream >> vertexCount >> faceCount;
    TuArray<SPoint> vertices = readVertices(stream, vertexCount);
    TuArray<std::uint32_t> ends = readFaceEnds(stream, faceCount);
    TuArray<std::uint32_t> corners
        = readCorners(stream, ends.IsEmpty() ? 0 : ends.GetLast(), vertexCount);
    m_mesh = Mesh(std::move(vertices), std::move(ends), std::move(corners));
}

void TaMeshRecord::Write(TuStreamWriteBinary& stream, const Mesh& mesh)
{
    const std::uint32_t vertexCount = mesh.GetVertexCount();
    const std::uint32_t faceCount = mesh.GetFaceCount();
    stream.WriteVersion(kVersion);
    stream << vertexCount << faceCount;
    writeNumbers<double>(stream, std::uint64_t{ vertexCount } * 3, [&mesh](std::uint64_t i) {
        const SPoint& point = mesh.GetVertex(static_cast<std::uint32_t>(i / 3));
        return i % 3 == 0 ? point.x : i % 3 == 1 ? point.y : point.z;
    });
    writeNumbers<std::uint32_t>(stream, faceCount, [&mesh](std::uint64_t i) {
        return static_cast<std::uint32_t>(mesh.GetFace(static_cast<std::uint32_t>(i)).size());
    });
    writeNumbers<std::uint32_t>(
        stream, mesh.GetCornerCount(), [&mesh](std::uint64_t i) { return mesh.GetCorners()[i]; });
}

std::uint64_t TaMeshRecord::GetStoredSize(const Mesh& mesh)
{
    return sizeof kVersion + 2 * sizeof(std::uint32_t)
        + std::uint64_t{ mesh.GetVertexCount() } * sizeof(SPoint)
        + (std::uint64_t{ mesh.GetFaceCount() } + mesh.GetCornerCount()) * sizeof(std::uint32_t);
}

IObject* TaMeshRecord::CreateByFactory() { return new TaMeshRecord; }

} // namespace tamesh
