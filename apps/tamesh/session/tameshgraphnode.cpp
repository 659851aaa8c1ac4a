#include "tamesh/session/tameshgraphnode.h"

namespace tamesh {

TU_DEFINE_RTTI(TaMeshGraphNode, TaNode, nullptr, nullptr);

} // namespace tamesh
