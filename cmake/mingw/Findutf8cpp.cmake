# The headers of the native package, for a target that has no package of its own.
include(TaMingwHeaders)
ta_mingw_headers(utf8cpp utf8cpp utf8cpp/utf8.h utf8cpp)
