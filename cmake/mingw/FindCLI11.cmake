# The headers of the native package, for a target that has no package of its own.
include(TaMingwHeaders)
ta_mingw_headers(CLI11 CLI11::CLI11 CLI/CLI.hpp)
