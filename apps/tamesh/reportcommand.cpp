#include "tamesh/reportcommand.h"

#include "tamesh/document.h"
#include "tamesh/guard.h"
#include "tamesh/htmlreport.h"
#include "tamesh/meshfiles.h"

namespace tamesh {

EExitCode ReportDocument(
    IConsole& console, const std::string& documentFile, const std::string& pageFile)
{
    HtmlText page;
    const EExitCode code = Guard(console, documentFile, [&] {
        Document document;
        ReadDocumentFile(console, documentFile, document);
        page = MakeReport(console, documentFile, document);
    });
    return code != eEC_Done ? code : GuardOutput(console, pageFile, [&](OutputFile& file) {
        file.GetStream().WriteBuffer(page.Get().data(), page.Get().size());
    });
}

} // namespace tamesh
