# GoogleTest for the target, from the sources of the native package; part of the build tree only.
include(FindPackageHandleStandardArgs)

find_path(GTest_SOURCES src/gtest-all.cc PATHS /usr/src/googletest/googletest
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(GTest_SOURCES)
find_package_handle_standard_args(GTest REQUIRED_VARS GTest_SOURCES)
if(GTest_FOUND AND NOT TARGET GTest::gtest)
  add_library(ta_gtest STATIC ${GTest_SOURCES}/src/gtest-all.cc)
  target_compile_features(ta_gtest PUBLIC cxx_std_20)
  target_include_directories(ta_gtest SYSTEM PUBLIC ${GTest_SOURCES}/include PRIVATE ${GTest_SOURCES})
  add_library(GTest::gtest ALIAS ta_gtest)
endif()
