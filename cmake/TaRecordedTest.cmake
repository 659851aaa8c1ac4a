# ta_recorded_test(NAME ALGORITHM FILE [LIBS targets...])
# A CTest case from a recording that an algorithm has made of one of its runs (docs/algorithms.md):
# it reads the input, computes, and compares with the output. ALGORITHM is the class name, and LIBS
# are the libraries that hold it; FILE is relative to the current folder.

set(TaRecordedTest_SOURCE ${CMAKE_CURRENT_LIST_DIR}/recordedtest.cpp)

function(ta_recorded_test name algorithm file)
  cmake_parse_arguments(PARSE_ARGV 3 arg "" "" "LIBS")
  # One program for all tests with the same libraries.
  string(MAKE_C_IDENTIFIER "recordedtest_${arg_LIBS}" program)
  if(NOT TARGET ${program})
    add_executable(${program} ${TaRecordedTest_SOURCE})
    target_link_libraries(${program} PRIVATE TaBase::TaBase)
    # Nothing refers to the class but its name: its library must be linked whole, and at all.
    foreach(library IN LISTS arg_LIBS)
      target_link_libraries(${program} PRIVATE $<LINK_LIBRARY:WHOLE_ARCHIVE,${library}>)
    endforeach()
    if(UNIX AND NOT APPLE)
      target_link_options(${program} PRIVATE -Wl,--no-as-needed)
    endif()
  endif()
  cmake_path(ABSOLUTE_PATH file NORMALIZE)
  add_test(NAME ${name} COMMAND ${program} ${algorithm} ${file})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300)
endfunction()
