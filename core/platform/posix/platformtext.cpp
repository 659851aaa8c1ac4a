#include "platform/platformtext.h"

namespace platform {

std::string ToCodePage(std::u16string_view text) { return ToUtf8(text); }

std::u16string FromCodePage(std::string_view text) { return FromUtf8(text); }

} // namespace platform
