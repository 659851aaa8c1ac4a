# One word per class: these functions turn the lists in the CMakeLists.txt files into targets.

# ta_classes(OUT FOLDER [CLASSES names...] [HEADERS names...] [PLATFORM names...])
# The sources of a module: CLASSES have a header and a source, HEADERS a header only, and PLATFORM
# a neutral header with a source of the same name in the folder of the operating system.
function(ta_classes out folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "CLASSES;HEADERS;PLATFORM")
  if(WIN32)
    set(system win32)
  else()
    set(system posix)
  endif()
  set(headers ${arg_CLASSES} ${arg_HEADERS} ${arg_PLATFORM})
  list(TRANSFORM headers PREPEND ${folder}/)
  list(TRANSFORM headers APPEND .h)
  list(TRANSFORM arg_CLASSES REPLACE "(.+)" "${folder}/\\1.cpp")
  list(TRANSFORM arg_PLATFORM REPLACE "(.+)" "${folder}/${system}/\\1.cpp")
  set(${out}_HEADERS ${${out}_HEADERS} ${headers} PARENT_SCOPE)
  set(${out}_SOURCES ${${out}_SOURCES} ${arg_CLASSES} ${arg_PLATFORM} PARENT_SCOPE)
endfunction()

# ta_library(NAME EXPORT_NAME DEFINE PUBLIC targets... PRIVATE targets...)
# A shared library from the modules that ta_classes(NAME ...) has collected, and the object
# library NAME_headers, which proves that each of its headers compiles on its own and twice.
function(ta_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORT_NAME;DEFINE" "PUBLIC;PRIVATE")
  add_library(${name} SHARED ${${name}_SOURCES})
  add_library(TaBase::${arg_EXPORT_NAME} ALIAS ${name})
  set_target_properties(${name} PROPERTIES
    EXPORT_NAME ${arg_EXPORT_NAME}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  if(WIN32)
    set_target_properties(${name} PROPERTIES
      PREFIX "" # groundwork.dll, as is usual there
      VISIBILITY_INLINES_HIDDEN OFF) # user code refers to the library's copies, constants above all
  endif()
  target_compile_features(${name} PUBLIC cxx_std_20)
  # The same file must come out on every processor: no fused multiply-add, here or in a user's
  # code that instantiates our templates.
  target_compile_options(${name} PUBLIC -ffp-contract=off)
  # __FILE__ is the path from the source root: an exception names its place with it.
  target_compile_options(${name} PRIVATE
    "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
  # Within a library, an exported function is the library's own: it may be inlined, and called
  # without a detour by way of the table for other libraries.
  if(NOT WIN32)
    target_link_options(${name} PRIVATE -Wl,-Bsymbolic-functions)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
      target_compile_options(${name} PRIVATE -fno-semantic-interposition)
    endif()
  endif()
  target_compile_definitions(${name} PRIVATE ${arg_DEFINE})
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/core>
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/core/talibraries>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/tabase>)
  target_link_libraries(${name} PUBLIC ${arg_PUBLIC} PRIVATE $<BUILD_INTERFACE:TaWarnings>)
  foreach(dependency IN LISTS arg_PRIVATE)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:${dependency}>)
  endforeach()
  set_target_properties(${name} PROPERTIES TA_HEADERS "${${name}_HEADERS}")

  set(alone ${CMAKE_CURRENT_BINARY_DIR}/${name}_headers)
  set(sources)
  foreach(header IN LISTS ${name}_HEADERS)
    cmake_path(ABSOLUTE_PATH header)
    string(MAKE_C_IDENTIFIER ${header} stem)
    cmake_path(GET header STEM stem)
    file(CONFIGURE OUTPUT ${alone}/${stem}.cpp CONTENT
      "#include \"@header@\"\n#include \"@header@\"\n" @ONLY)
    list(APPEND sources ${alone}/${stem}.cpp)
  endforeach()
  add_library(${name}_headers OBJECT EXCLUDE_FROM_ALL ${sources})
  target_link_libraries(${name}_headers PRIVATE ${name} TaWarnings)
endfunction()

# ta_program(NAME sources... LIBS targets...): what the next four functions share.
function(ta_program name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBS")
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  target_compile_options(${name} PRIVATE "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
  target_link_libraries(${name} PRIVATE ${arg_LIBS} TaWarnings)
endfunction()

# ta_test(FOLDER names... [PROPERTIES names...] [LIBS targets...])
# One program FOLDER_tests from the files NAME_test.cpp (and, with RapidCheck, the property tests
# NAME_properties.cpp); every test in it is a CTest case with a time limit.
function(ta_test folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "PROPERTIES;LIBS")
  set(sources ${arg_UNPARSED_ARGUMENTS})
  list(TRANSFORM sources APPEND _test.cpp)
  if(TARGET TaRapidCheck)
    list(TRANSFORM arg_PROPERTIES APPEND _properties.cpp)
    list(APPEND sources ${arg_PROPERTIES})
    list(APPEND arg_LIBS TaRapidCheck)
  elseif(arg_PROPERTIES)
    message(STATUS "Left out of ${folder}_tests, for RapidCheck is missing: ${arg_PROPERTIES}")
  endif()
  ta_program(${folder}_tests ${sources} LIBS ${arg_LIBS} ta_test_support)
  gtest_discover_tests(${folder}_tests
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    NO_PRETTY_VALUES
    TEST_PREFIX ${folder}/
    PROPERTIES TIMEOUT 300 LABELS ${folder})
endfunction()

# ta_benchmark(NAME LIBS targets...): the program NAME_benchmark; a short run of it is a test.
function(ta_benchmark name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBS")
  ta_program(${name}_benchmark ${name}_benchmark.cpp LIBS ${arg_LIBS} benchmark::benchmark_main)
endfunction()

# ta_fuzzer(NAME LIBS targets...): the libFuzzer program NAME_fuzz, with its corpus in corpus/NAME.
function(ta_fuzzer name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBS")
  ta_program(${name}_fuzz ${name}_fuzz.cpp LIBS ${arg_LIBS})
  target_link_options(${name}_fuzz PRIVATE -fsanitize=fuzzer)
endfunction()

# ta_example(NAME LIBS targets...): the program example_NAME, built and run by the tests.
function(ta_example name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBS")
  ta_program(example_${name} ${name}.cpp LIBS ${arg_LIBS})
  add_test(NAME examples/${name} COMMAND example_${name})
  set_tests_properties(examples/${name} PROPERTIES TIMEOUT 60 LABELS examples)
endfunction()
