#include "support/documentfuzz.h"
#include "tamesh/document.h"
#include "tamesh/documentsurvey.h"

#include <algorithm>
#include <cstdlib>

namespace {

using tamesh::DocumentSurvey;

void demand(bool isTrue)
{
    if (!isTrue) {
        std::abort();
    }
}

/// A part that is.
bool hasUnknown(const DocumentSurvey& survey)
{
    return std::ranges::any_of(survey.GetItems(), [](const auto& item) {
        return item.IsRescued() && item.state == DocumentSurvey::eS_Unknown;
    });
}

bool canBeLoaded(const std::vector<std::uint8_t>& bytes)
{
    TaStreamReadBinaryBuffer stream(bytes.data(), bytes.size());
    try {
        tamesh::Document().Load(stream);
        return true;
    } catch (const TuException&) {
        return false;
    }
}

/// What is said to be sound loads, and nothing else does; what is salvaged is sound.
void salvage(const std::vector<std::uint8_t>& bytes)
{
    const DocumentSurvey survey(bytes);
    demand(canBeLoaded(bytes) == (survey.IsSound() && !hasUnknown(survey)));
    if (!survey.IsAnythingLeft()) {
        return;
    }
    const std::vector<std::uint8_t> written
        = WriteToVector([&](auto& stream) { WriteSalvaged(stream, survey); });
    const DocumentSurvey salvaged(written);
    demand(salvaged.IsSound() && hasUnknown(salvaged) == hasUnknown(survey));
    demand(canBeLoaded(written) != hasUnknown(salvaged));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<std::uint8_t> bytes(data, data + size);
    salvage(bytes);
    salvage(WithRightChecksums(bytes));
    return 0;
}
