#include "tabase/tadatanode.h"

const TuRTTI TaDataNodeRecord::RTTI(u"TaDataNode", TaNode::RTTI, nullptr, nullptr);

// Windows exports the constants of a class where a source repeats them.
constexpr const char16_t* TaDataNodeRecord::kSource;
