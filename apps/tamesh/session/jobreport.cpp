#include "tamesh/session/jobreport.h"

namespace tamesh {

TU_DEFINE_RTTI(JobReport, TaMessage, nullptr, nullptr);

} // namespace tamesh
