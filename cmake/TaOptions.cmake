# What a build contains. The presets set these; a project that adds this one as a subdirectory
# gets the libraries alone.

include(GNUInstallDirs)
include(CMakeDependentOption)

option(TABASE_BUILD_APPS "Build the application tamesh" ${PROJECT_IS_TOP_LEVEL})
option(TABASE_BUILD_TESTS "Build tests and examples" ${PROJECT_IS_TOP_LEVEL})
option(TABASE_BUILD_BENCHMARKS "Build the benchmarks (needs Google Benchmark)" OFF)
option(TABASE_BUILD_FUZZERS "Build the libFuzzer targets (needs Clang)" OFF)
option(TABASE_WARNINGS_AS_ERRORS "Refuse to build on a warning" OFF)
set(TABASE_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize=")
option(TABASE_COVERAGE "Count executed lines" OFF)

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_CXX_STANDARD 20)
  set(CMAKE_CXX_STANDARD_REQUIRED ON)
  set(CMAKE_CXX_EXTENSIONS OFF)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  # All programs and libraries lie side by side, so that each is found without a search path.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

  # The compiler cache turns a rebuild of unchanged sources (a fresh clone, say) into a copy.
  find_program(TABASE_CCACHE ccache)
  mark_as_advanced(TABASE_CCACHE)
  if(TABASE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${TABASE_CCACHE})
  endif()

  if(TABASE_SANITIZE)
    add_compile_options(-fsanitize=${TABASE_SANITIZE} -fno-omit-frame-pointer -g1)
    add_link_options(-fsanitize=${TABASE_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
      # The instrumented code confuses this warning; the release build keeps it.
      add_compile_options(-Wno-maybe-uninitialized)
    endif()
    if(TABASE_SANITIZE MATCHES undefined)
      add_compile_options(-fno-sanitize-recover=undefined)
    endif()
  endif()
  if(TABASE_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic)
    add_link_options(--coverage)
  endif()
endif()
