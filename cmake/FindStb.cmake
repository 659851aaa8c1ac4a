# Headers with their code, of which each is used where it is included: the target Stb::Stb.
include(FindPackageHandleStandardArgs)

find_path(Stb_HEADERS stb/stb_image_write.h)
mark_as_advanced(Stb_HEADERS)
find_package_handle_standard_args(Stb REQUIRED_VARS Stb_HEADERS)
if(Stb_FOUND AND NOT TARGET Stb::Stb)
  add_library(Stb::Stb INTERFACE IMPORTED GLOBAL)
  set_target_properties(Stb::Stb PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${Stb_HEADERS})
endif()
