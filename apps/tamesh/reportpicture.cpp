#include "tamesh/reportpicture.h"

#include "tabase/tastreamwritebinarybuffer.h"
#include "tamesh/displaytext.h"
#include "tamesh/document.h"
#include "tamesh/htmltext.h"
#include "tamesh/meshdrawing.h"
#include "tamesh/pngwriter.h"
#include "tamesh/resultvalues.h"
#include "tamesh/session/sessiontree.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tamesh {

namespace {

    /// What a document says of a picture, held against what can be drawn.
    class PictureWish
    {
    public:
        explicit PictureWish(const TaParameterSet& parameters)
            : m_parameters(parameters)
        {
        }

        /// Nothing where they make no sense.
        std::optional<SPictureOptions> GetOptions() const
        {
            constexpr SSize kSmallest = SPictureOptions::kSmallest;
            constexpr SSize kLargest = SPictureOptions::kLargest;
            SPictureOptions options;
            options.size = { find(u"width").ToInt(), find(u"height").ToInt() };
            options.toViewer = { find(u"view-x").ToDouble(), find(u"view-y").ToDouble(),
                find(u"view-z").ToDouble() };
            TuVariant up;
            m_parameters.GetParameter(u"up", u"z", up);
            const CString axis = up.ToString();
            options.up = axis == u"x" ? eA_X : axis == u"y" ? eA_Y : eA_Z;
            const SPoint& view = options.toViewer;
            const bool isView = std::isfinite(view.x) && std::isfinite(view.y)
                && std::isfinite(view.z) && view != SPoint();
            const bool isSize = options.size.width >= kSmallest.width
                && options.size.height >= kSmallest.height && options.size.width <= kLargest.width
                && options.size.height <= kLargest.height;
            return isView && isSize ? std::optional(options) : std::nullopt;
        }
        bool HasPath() const { return find(u"path").ToBool(); }

    private:
        /// A number, or null.
        TuVariant find(const char16_t* name) const
        {
            TuVariant value;
            m_parameters.GetParameter(name, value);
            return value.IsNumber() ? value : TuVariant();
        }

        const TaParameterSet& m_parameters;
    };

    /// Nothing where there are none that could be drawn.
    std::optional<SColoring> findColors(const TaNode& root, const char16_t* part, const Mesh& mesh)
    {
        constexpr std::size_t kMostNames = 64;
        const auto data = FindValue<TaColoringData>(root, part);
        if (data.IsNull() || !data->Fits(mesh.GetVertexCount())) {
            return std::nullopt;
        }
        SColoring coloring = data->GetColoring();
        float minimum = 0.0F;
        float maximum = 0.0F;
        coloring.table->GetMinMax(minimum, maximum);
        if (!std::isfinite(minimum) || !std::isfinite(maximum) || !std::isfinite(coloring.lower)
            || !std::isfinite(coloring.upper)) {
            return std::nullopt;
        }
        coloring.title = MakeDisplayText(coloring.title);
        coloring.names.resize(std::min(coloring.names.size(), kMostNames));
        for (std::string& name : coloring.names) {
            name = MakeDisplayText(name);
        }
        return coloring;
    }

    /// Nothing where there is none that could be drawn. A shortest path meets no vertex twice.
    std::vector<std::uint32_t> findPath(const TaNode& root, const Mesh& mesh)
    {
        const auto data = FindValue<TaPathData>(root, SPartNames::kPath);
        const bool isPath = !data.IsNull() && data->Fits(mesh.GetVertexCount())
            && data->GetPath().vertices.size() <= mesh.GetVertexCount();
        return isPath ? data->GetPath().vertices : std::vector<std::uint32_t>();
    }

    void addNote(HtmlText& html, const char* note)
    {
        html.Mark("<p class=\"note\">").Text(note).Mark("</p>\n");
    }

    void addImage(HtmlText& html, const Image& image, const std::string& title)
    {
        TaStreamWriteBinaryBuffer png;
        WritePNG(png, image);
        html.Mark("<img id=\"picture\" alt=\"").Text(title).Mark("\" width=\"");
        html.Number(image.GetSize().width).Mark("\" height=\"");
        html.Number(image.GetSize().height);
        html.Mark("\" src=\"data:image/png;base64,");
        html.Base64({ png.GetData(), png.GetSize() }).Mark("\">\n");
    }

} // namespace

void AddPicture(
    HtmlText& html, IConsole& console, const std::string& name, const Document& document)
{
    const Mesh& mesh = document.GetMesh();
    if (mesh.GetVertexCount() == 0) {
        return;
    }
    const TaNode& root = *document.GetTree().GetRootNode();
    SPictureOptions options;
    std::vector<std::uint32_t> path;
    const auto parameters
        = FindValue<TaParameterData>(root, SPartNames::kPicture, SPartNames::kParameters);
    if (!parameters.IsNull()) {
        const PictureWish wish(parameters->GetParameters());
        if (const auto wished = wish.GetOptions()) {
            options = *wished;
        } else {
            addNote(html, "The stored options make no picture: these are the usual ones.");
        }
        if (wish.HasPath()) {
            path = findPath(root, mesh);
            if (path.empty()) {
                addNote(html, "The path is left out: it does not fit the mesh.");
            }
        }
    }
    std::optional<SColoring> coloring = findColors(root, SPartNames::kPicture, mesh);
    if (!coloring) {
        if (!parameters.IsNull()) {
            addNote(html, "The stored colours do not fit the mesh: these are others.");
        }
        coloring = findColors(root, SPartNames::kColours, mesh);
    }
    if (!coloring) {
        coloring = ColorMesh(console, name, mesh, eC_Height, options.up);
    }
    addImage(html, DrawMesh(console, name, mesh, *coloring, options, path), coloring->title);
}

} // namespace tamesh
