#include "tamesh/htmlreport.h"

#include "tamesh/displaytext.h"
#include "tamesh/document.h"
#include "tamesh/reportpicture.h"
#include "tamesh/reportstyle.h"
#include "tamesh/reporttables.h"
#include "tamesh/reporttree.h"
#include "tamesh/session/sessiontree.h"
#include "tamesh/tatracedata.h"
#include "tamesh/timeline.h"

namespace tamesh {

namespace {

    /// Nothing where it would be empty.
    template <std::size_t kSize>
    void addSection(HtmlText& html, const char (&title)[kSize], const HtmlText& contents)
    {
        if (!contents.IsEmpty()) {
            html.Mark("<section id=\"").Mark(title).Mark("\"><h2>").Mark(title).Mark("</h2>\n");
            html.Add(contents).Mark("</section>\n");
        }
    }

    HtmlText makeTable(const Document& document, const char16_t* name)
    {
        HtmlText table;
        const auto part = document.GetTree().FindChild(name);
        if (!part.IsNull()) {
            AddPartTable(table, *part, document.GetMesh().GetVertexCount());
        }
        return table;
    }

    void addHead(HtmlText& html, const std::string& title)
    {
        html.Mark("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
                  "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                  "img-src data:; style-src 'unsafe-inline'; script-src "
                  "'sha256-XbhrO1xUxBS0Qtqmx7IzDcp2s4l1Fho/6c8Ig+nPdpg='; "
                  "base-uri 'none'; form-action 'none'\">\n"
                  "<meta name=\"viewport\" content=\"width=device-width\">\n<title>");
        html.Text(title).Mark("</title>\n<style>").Mark(kReportStyle);
        html.Mark("</style>\n</head>\n<body>\n<h1>").Text(title).Mark("</h1>\n");
    }

    void addAbout(HtmlText& html, const Document& document)
    {
        html.Mark("<p class=\"about\">");
        if (!document.GetProgram().IsEmpty()) {
            html.Mark("Document by ").Text(document.GetProgram().ToUtf8()).Mark(". ");
        }
        html.Mark("Report by tamesh ").Text(TAMESH_VERSION).Mark(".</p>\n");
    }

    HtmlText makeParts(const Document& document)
    {
        HtmlText parts;
        const auto add = [&](const auto& title, const char16_t* name) {
            addSection(parts, title, makeTable(document, name));
        };
        add("Mesh", SPartNames::kMesh);
        add("Figures", SPartNames::kFigures);
        add("Components", SPartNames::kComponents);
        add("Path", SPartNames::kPath);
        add("Distance", SPartNames::kDistance);
        add("Colours", SPartNames::kColours);
        add("Drawing", SPartNames::kPicture);
        add("Settings", SPartNames::kSettings);
        return parts;
    }

    HtmlText makeTimeline(const Document& document)
    {
        HtmlText timeline;
        const auto trace
            = FindValue<TaTraceData>(*document.GetTree().GetRootNode(), SPartNames::kTrace);
        if (!trace.IsNull()) {
            AddTimeline(timeline, trace->GetHistory());
        }
        return timeline;
    }

} // namespace

HtmlText MakeReport(IConsole& console, const std::string& name, const Document& document)
{
    HtmlText html;
    addHead(html, MakeDisplayName(name));
    addAbout(html, document);

    HtmlText picture;
    AddPicture(picture, console, name, document);
    addSection(html, "Picture", picture);
    html.Mark("<div class=\"parts\">\n").Add(makeParts(document)).Mark("</div>\n");
    addSection(html, "Messages", makeTimeline(document));
    HtmlText tree;
    tree.Mark("<div id=\"tree\">\n");
    AddTree(tree, *document.GetTree().GetRootNode());
    tree.Mark("</div>\n");
    addSection(html, "Tree", tree);

    html.Mark("<script>").Mark(kReportScript).Mark("</script>\n</body>\n</html>\n");
    return html;
}

} // namespace tamesh
