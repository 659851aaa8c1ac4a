# The headers of the native package, for a target that has no package of its own.
include(TaMingwHeaders)
ta_mingw_headers(Stb Stb::Stb stb/stb_image_write.h)
