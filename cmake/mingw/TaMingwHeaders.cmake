# ta_mingw_headers(PACKAGE TARGET HEADER [FOLDER])
# An imported target for a package of headers only, which is the same for every system: a link to
# its folder in the build tree. /usr/include itself would bring the native C library along. HEADER
# is a header of it below /usr/include, FOLDER what user code's includes start from.
include(FindPackageHandleStandardArgs)

function(ta_mingw_headers package target header)
  find_path(${package}_HEADERS ${header} PATHS /usr/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
  mark_as_advanced(${package}_HEADERS)
  find_package_handle_standard_args(${package} REQUIRED_VARS ${package}_HEADERS)
  set(${package}_FOUND ${${package}_FOUND} PARENT_SCOPE)
  if(NOT ${package}_FOUND OR TARGET ${target})
    return()
  endif()
  set(links ${PROJECT_BINARY_DIR}/include)
  cmake_path(GET header PARENT_PATH folder)
  file(MAKE_DIRECTORY ${links})
  file(CREATE_LINK ${${package}_HEADERS}/${folder} ${links}/${folder} SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED GLOBAL)
  set_target_properties(${target} PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES ${links}/${ARGV3})
endfunction()
