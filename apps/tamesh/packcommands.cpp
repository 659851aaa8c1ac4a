#include "tabase/tauniqueid.h"
#include "tacompression/tacompresszip.h"
#include "tamesh/commands.h"
#include "tamesh/document.h"
#include "tamesh/figurelines.h"
#include "tamesh/guard.h"
#include "tamesh/meshfiles.h"
#include "tamesh/meshpacking.h"
#include "tamesh/meshtree.h"
#include "tamesh/progress.h"
#include "tamesh/tameshrecord.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace tamesh {

namespace {

    /// Counts what zlib makes of what is written, in pieces that do not take much memory.
    class ZipMeter final : public TuStreamWriteBinary
    {
    public:
        explicit ZipMeter(Progress& progress)
            : m_progress(progress)
        {
        }

        /// Of all that was written, compressed.
        std::uint64_t Finish()
        {
            compress();
            return m_compressedSize;
        }

    private:
        static constexpr std::size_t kPiece = std::size_t{ 16 } << 20;

        void write(const void* data, unsigned long long size) override
        {
            m_piece.WriteBuffer(data, size);
            m_size += size;
            if (m_piece.GetSize() >= kPiece) {
                compress();
            }
        }
        void compress()
        {
            TaCompressZIP coder;
            if (coder.Compress(m_piece.GetData(), static_cast<unsigned long>(m_piece.GetSize()))
                == 0) {
                throw std::runtime_error("the mesh cannot be compressed");
            }
            m_compressedSize += coder.GetOutputSize();
            m_piece.Clear();
            m_progress.Advance(m_size);
        }

        Progress& m_progress;
        TaStreamWriteBinaryBuffer m_piece;
        std::uint64_t m_size = 0;
        std::uint64_t m_compressedSize = 0;
    };

    std::uint64_t getWorkSize(const Mesh& mesh)
    {
        return std::uint64_t{ mesh.GetVertexCount() } + mesh.GetFaceCount();
    }

    std::uint64_t measureZip(IConsole& console, const Document& document, const std::string& name)
    {
        const std::uint64_t size = TaMeshRecord::GetStoredSize(document.GetMesh());
        Progress progress(console, "comparing sizes for " + name, size);
        ZipMeter meter(progress);
        TaMeshRecord::Write(meter, document.GetMesh());
        return meter.Finish();
    }

    std::uint64_t measurePacked(IConsole& console, const Document& document,
        const CoordinateForm& form, const std::string& name)
    {
        Progress progress(console, "comparing sizes for " + name, getWorkSize(document.GetMesh()));
        return TaPackedMeshRecord(document.GetMesh(), form, &progress).GetStoredSize();
    }

    /// The mesh alone, in each form; what a document has beside it does not depend on them. The
    /// document has been packed already, in one of them.
    void addSizes(FigureLines& lines, IConsole& console, const Document& document,
        const SPackOptions& options, const std::string& name)
    {
        const Mesh& mesh = document.GetMesh();
        const std::uint64_t raw = TaMeshRecord::GetStoredSize(mesh);
        const std::uint64_t packed = document.GetPacked()->GetStoredSize();
        const auto add = [&](std::string_view form, std::uint64_t size) {
            const double percent = 100.0 * static_cast<double>(size) / static_cast<double>(raw);
            lines.Add(form, size, "bytes,", FormatNumber(percent, 3), "%");
        };
        add("raw", raw);
        add("zlib", measureZip(console, document, name));
        const std::string quantized = "quantized, " + std::to_string(options.bits) + " bits";
        if (options.form == SPackOptions::eF_Quantized) {
            const CoordinateForm lossless = CoordinateForm::MakeLossless(mesh);
            add("lossless", measurePacked(console, document, lossless, name));
            add(quantized, packed);
            return;
        }
        add("lossless", packed);
        try {
            const CoordinateForm form = CoordinateForm::MakeQuantized(mesh, options.bits);
            add(quantized, measurePacked(console, document, form, name));
        } catch (const std::range_error& failure) {
            lines.Add("quantized", failure.what());
        }
    }

    /// And as many vertices.
    bool hasSameFaces(const Mesh& a, const Mesh& b)
    {
        if (a.GetFaceCount() != b.GetFaceCount() || a.GetVertexCount() != b.GetVertexCount()
            || !std::ranges::equal(a.GetCorners(), b.GetCorners())) {
            return false;
        }
        for (std::uint32_t i = 0; i < a.GetFaceCount(); ++i) {
            if (a.GetFace(i).size() != b.GetFace(i).size()) {
                return false;
            }
        }
        return true;
    }

    /// How far a coordinate has moved at most; nothing where all have the same bits.
    std::optional<double> findLargestError(const Mesh& original, const Mesh& restored)
    {
        double error = 0.0;
        bool isSame = true;
        for (std::uint32_t i = 0; i < original.GetVertexCount(); ++i) {
            const SPoint& from = original.GetVertex(i);
            const SPoint& to = restored.GetVertex(i);
            for (const auto coordinate : { &SPoint::x, &SPoint::y, &SPoint::z }) {
                isSame = isSame
                    && std::bit_cast<std::uint64_t>(from.*coordinate)
                        == std::bit_cast<std::uint64_t>(to.*coordinate);
                error = std::max(error, std::abs(from.*coordinate - to.*coordinate));
            }
        }
        return isSame ? std::nullopt : std::optional(error);
    }

    /// Reads what was written, and compares it with what it was made of.
    void addErrors(FigureLines& lines, IConsole& console, const Mesh& original,
        const CoordinateForm& form, const std::string& name)
    {
        Document restored;
        ReadDocumentFile(console, name, restored);
        const bool isWhole = hasSameFaces(original, restored.GetMesh());
        const auto error = isWhole ? findLargestError(original, restored.GetMesh()) : std::nullopt;
        const double bound = error ? form.GetLargestError(FindBounds(original)) : 0.0;
        const bool mayMove = form.GetKind() == CoordinateForm::eK_Quantized;
        if (!isWhole || (error && (!mayMove || *error > bound))) {
            throw MeshFailure(TU_HERE, name, 0, "does not restore the mesh as it should");
        }
        if (error) {
            lines.Add("step", FormatNumber(form.GetStep(), 0));
            lines.Add(
                "largest error", FormatNumber(*error, 0), "of at most", FormatNumber(bound, 0));
        } else {
            lines.Add("largest error", "none: all bits are the same");
        }
    }

} // namespace

EExitCode PackMesh(IConsole& console, const std::string& meshFile, const std::string& documentFile,
    const SPackOptions& options)
{
    const bool isPacked = options.form != SPackOptions::eF_Plain;
    Document document;
    std::optional<CoordinateForm> form;
    const EExitCode code = Guard(console, meshFile, [&] {
        document = Document(ReadMeshFile(console, meshFile));
        NameMesh(document.GetTree(), meshFile, TaUniqueID());
        if (isPacked) {
            const Mesh& mesh = document.GetMesh();
            form = MakeCoordinateForm(mesh, options);
            Progress progress(console, "packing " + meshFile, getWorkSize(mesh));
            document.Pack(*form, &progress);
        }
    });
    return code != eEC_Done ? code : Guard(console, documentFile, [&] {
        WriteDocumentFile(console, documentFile, document);
        if (isPacked) {
            FigureLines lines;
            addSizes(lines, console, document, options, documentFile);
            addErrors(lines, console, document.GetMesh(), *form, documentFile);
            WriteResult(console, documentFile + " (packed)\n" + lines.GetText());
        }
    });
}

EExitCode UnpackDocument(
    IConsole& console, const std::string& documentFile, const std::string& meshFile)
{
    Document document;
    const EExitCode code = Guard(console, documentFile, [&] {
        ReadDocumentFile(console, documentFile, document);
        if (!document.HasMesh()) {
            throw MeshFailure(TU_HERE, documentFile, 0, "the document holds no mesh");
        }
    });
    return code != eEC_Done
        ? code
        : Guard(console, meshFile, [&] { WriteMeshFile(console, meshFile, document.GetMesh()); });
}

} // namespace tamesh
