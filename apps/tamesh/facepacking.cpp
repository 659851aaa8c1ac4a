#include "tamesh/facepacking.h"

#include "groundwork/tuexceptions.h"
#include "tacompression/tastreamreadpredictivecoder.h"
#include "tacompression/tastreamwritepredictivecoder.h"
#include "tamesh/progress.h"

#include <algorithm>
#include <utility>

namespace tamesh {

namespace {

    constexpr std::uint32_t kAllBits = 32;
    constexpr std::uint32_t kFewestCorners = 3;
    constexpr std::uint32_t kSizeHint = kPackedBlock * sizeof(std::uint32_t);

    /// What a number is predicted from: the one before of its kind. It goes on from block to block.
    struct SBefore
    {
        std::uint32_t cornerCount = kFewestCorners;
        std::uint32_t first = 0;
    };

    /// The coders of a block. They stand in the stream in this order, whatever the order in which
    /// the numbers come.
    struct SWriters
    {
        explicit SWriters(TuStreamWriteBinary& stream)
            : counts(stream, kAllBits, kSizeHint)
            , firsts(stream, kAllBits, kSizeHint)
            , seconds(stream, kAllBits, kSizeHint)
            , others(stream, kAllBits, kSizeHint)
        {
        }
        void Finish()
        {
            counts.Finish();
            firsts.Finish();
            seconds.Finish();
            others.Finish();
        }

        TaStreamWritePredictiveCoder counts;
        TaStreamWritePredictiveCoder firsts;
        TaStreamWritePredictiveCoder seconds;
        TaStreamWritePredictiveCoder others;
    };

    struct SReaders
    {
        explicit SReaders(TuStreamReadBinary& stream)
            : counts(stream, kAllBits)
            , firsts(stream, kAllBits)
            , seconds(stream, kAllBits)
            , others(stream, kAllBits)
        {
        }

        TaStreamReadPredictiveCoder counts;
        TaStreamReadPredictiveCoder firsts;
        TaStreamReadPredictiveCoder seconds;
        TaStreamReadPredictiveCoder others;
    };

    void packFace(SWriters& writers, std::span<const std::uint32_t> face, SBefore& before)
    {
        const auto count = static_cast<std::uint32_t>(face.size());
        writers.counts.WriteValue(count, std::exchange(before.cornerCount, count));
        writers.firsts.WriteValue(face[0], std::exchange(before.first, face[0]));
        writers.seconds.WriteValue(face[1], face[0]);
        for (std::size_t i = 2; i < face.size(); ++i) {
            writers.others.WriteValue(face[i], face[i - 1]);
        }
    }

    /// Appends the face's corners.
    void unpackFace(SReaders& readers, SBefore& before, std::uint32_t vertexCount,
        TuArray<std::uint32_t>& corners, const Progress* progress)
    {
        const std::uint32_t count = before.cornerCount
            = readers.counts.ReadValue(before.cornerCount);
        if (count < kFewestCorners || count > Mesh::kMaximumCount - corners.GetSize()) {
            throw TuExceptionStream(TU_HERE, u"a face has a wrong number of corners");
        }
        const auto add = [&](std::uint32_t vertex) {
            if (vertex >= vertexCount) {
                throw TuExceptionStream(TU_HERE, u"a face names a vertex that is not there");
            }
            corners.Add(vertex);
            return vertex;
        };
        std::uint32_t corner = before.first = add(readers.firsts.ReadValue(before.first));
        corner = add(readers.seconds.ReadValue(corner));
        for (std::uint32_t i = 2; i < count; ++i) {
            corner = add(readers.others.ReadValue(corner));
            if (i % kPackedBlock == 0 && progress != nullptr) { // one face may have billions
                progress->CheckInterrupt();
            }
        }
    }

} // namespace

void PackFaces(TuStreamWriteBinary& stream, const Mesh& mesh, Progress* progress)
{
    ProgressSteps steps(progress);
    SBefore before;
    for (std::uint32_t face = 0; face < mesh.GetFaceCount();) {
        const std::uint32_t end = face + std::min(kPackedBlock, mesh.GetFaceCount() - face);
        SWriters writers(stream);
        for (; face < end; ++face) {
            packFace(writers, mesh.GetFace(face), before);
            steps.Advance();
        }
        writers.Finish();
    }
}

Mesh UnpackFaces(TuStreamReadBinary& stream, std::uint32_t faceCount, std::uint32_t vertexCount,
    const Progress* progress)
{
    TuArray<std::uint32_t> ends;
    TuArray<std::uint32_t> corners;
    SBefore before;
    for (std::uint32_t face = 0; face < faceCount;) {
        const std::uint32_t end = face + std::min(kPackedBlock, faceCount - face);
        SReaders readers(stream);
        for (; face < end; ++face) {
            unpackFace(readers, before, vertexCount, corners, progress);
            ends.Add(corners.GetSize());
        }
        if (progress != nullptr) {
            progress->CheckInterrupt();
        }
    }
    return { TuArray<SPoint>(), std::move(ends), std::move(corners) };
}

} // namespace tamesh
