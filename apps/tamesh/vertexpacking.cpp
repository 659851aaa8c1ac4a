#include "tamesh/vertexpacking.h"

#include "groundwork/tuexceptions.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tacompression/tastreamreadpredictivecoder.h"
#include "tacompression/tastreamwritepredictivecoder.h"
#include "tamesh/facepacking.h"
#include "tamesh/progress.h"
#include "tamesh/vertexwalk.h"

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace tamesh {

namespace {

    constexpr std::size_t kAxes = 3;
    constexpr std::array<double SPoint::*, kAxes> kCoordinates{ &SPoint::x, &SPoint::y,
        &SPoint::z };
    constexpr std::uint32_t kSizeHint = kPackedBlock * sizeof(std::uint32_t);
    constexpr std::size_t kLeastCoderSize = 16; // of a coder that nothing was written to

    /// Words of the first axis, then of the second, then of the third.
    using Writers = std::vector<std::unique_ptr<TaStreamWritePredictiveCoder>>;
    using Readers = std::vector<std::unique_ptr<TaStreamReadPredictiveCoder>>;

    std::size_t countCoders(const CoordinateForm& form) { return kAxes * form.GetWordCount(); }

    /// Of one coordinate of the vertex where the walk has come to. The first vertex is predicted to
    /// lie where all numbers are 0.
    CoordinateForm::Words predict(const CoordinateForm& form, const TuArray<SPoint>& numbers,
        const VertexWalk::SStop& stop, double SPoint::*coordinate)
    {
        if (stop.a == VertexWalk::kNone) {
            return form.Split(0.0);
        }
        return form.Split(form.Predict(
            numbers[stop.a].*coordinate, numbers[stop.b].*coordinate, numbers[stop.c].*coordinate));
    }

    void packVertex(const Writers& writers, const CoordinateForm& form,
        const TuArray<SPoint>& numbers, const VertexWalk::SStop& stop)
    {
        auto writer = writers.begin();
        for (const auto coordinate : kCoordinates) {
            const CoordinateForm::Words predictions = predict(form, numbers, stop, coordinate);
            const CoordinateForm::Words words = form.Split(numbers[stop.vertex].*coordinate);
            for (std::size_t i = 0; i < form.GetWordCount(); ++i) {
                (*writer++)->WriteValue(words[i], predictions[i]);
            }
        }
    }

    void unpackVertex(const Readers& readers, const CoordinateForm& form, TuArray<SPoint>& numbers,
        const VertexWalk::SStop& stop)
    {
        auto reader = readers.begin();
        for (const auto coordinate : kCoordinates) {
            CoordinateForm::Words words = predict(form, numbers, stop, coordinate);
            for (std::size_t i = 0; i < form.GetWordCount(); ++i) {
                words[i] = (*reader++)->ReadValue(words[i]);
            }
            numbers[stop.vertex].*coordinate = form.Join(words);
        }
    }

} // namespace

void PackVertices(TuStreamWriteBinary& stream, const Mesh& mesh, const CoordinateForm& form,
    Progress* progress, std::uint64_t done)
{
    const std::uint32_t vertexCount = mesh.GetVertexCount();
    TuArray<SPoint> numbers;
    numbers.Reserve(vertexCount);
    for (std::uint32_t i = 0; i < vertexCount; ++i) {
        numbers.Add(form.ToNumbers(mesh.GetVertex(i)));
    }
    VertexWalk walk(mesh, vertexCount);
    for (std::uint32_t packed = 0; packed < vertexCount;) {
        const std::uint32_t end = packed + std::min(kPackedBlock, vertexCount - packed);
        Writers writers(countCoders(form));
        for (auto& writer : writers) {
            writer = std::make_unique<TaStreamWritePredictiveCoder>(
                stream, form.GetWordBits(), kSizeHint);
        }
        for (; packed < end; ++packed) {
            packVertex(writers, form, numbers, walk.Next());
        }
        for (const auto& writer : writers) {
            writer->Finish();
        }
        if (progress != nullptr) {
            progress->Advance(done + packed);
        }
    }
}

TuArray<SPoint> UnpackVertices(TaStreamReadBinaryBuffer& stream, const Mesh& faces,
    std::uint32_t vertexCount, const CoordinateForm& form, const Progress* progress)
{
    // The vertices come in any order, so that there must be room for all. A count is not believed
    // where there are not even the bytes that the coders of as many vertices have in any case.
    const std::uint64_t blocks = (std::uint64_t{ vertexCount } + kPackedBlock - 1) / kPackedBlock;
    if (blocks > stream.GetRemaining() / (countCoders(form) * kLeastCoderSize)) {
        throw TuExceptionStream(TU_HERE, u"the packed vertices end early");
    }
    TuArray<SPoint> numbers;
    numbers.SetSize(vertexCount);
    VertexWalk walk(faces, vertexCount);
    for (std::uint32_t unpacked = 0; unpacked < vertexCount;) {
        const std::uint32_t end = unpacked + std::min(kPackedBlock, vertexCount - unpacked);
        Readers readers(countCoders(form));
        for (auto& reader : readers) {
            reader = std::make_unique<TaStreamReadPredictiveCoder>(stream, form.GetWordBits());
        }
        for (; unpacked < end; ++unpacked) {
            unpackVertex(readers, form, numbers, walk.Next());
        }
        if (progress != nullptr) {
            progress->CheckInterrupt();
        }
    }
    for (SPoint& point : numbers) {
        point = form.FromNumbers(point);
    }
    return numbers;
}

} // namespace tamesh
