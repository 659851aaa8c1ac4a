#include "platform/registryreport.h"

#include "platform/platformregistry.h"
#include "platform/platformterminal.h"
#include "platform/platformtext.h"

#include <atomic>

namespace platform {
namespace {

    void trace(std::u16string_view text) { WriteTrace(ToUtf8(text) + "\n"); }

    constinit std::atomic<RegistryReport> s_report{ trace };

} // namespace

RegistryReport SetRegistryReport(RegistryReport report) { return s_report.exchange(report); }

void ReportOnRegistry(std::u16string_view text) { s_report.load()(text); }

} // namespace platform
