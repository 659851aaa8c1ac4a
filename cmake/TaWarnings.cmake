# Warnings of our own targets. They are errors in our presets only: a user's compiler may know
# warnings that ours does not.

add_library(TaWarnings INTERFACE)
target_compile_options(TaWarnings INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
  -Wold-style-cast -Wcast-align -Wformat=2
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety -Wno-gnu-zero-variadic-macro-arguments>
  $<$<BOOL:${TABASE_WARNINGS_AS_ERRORS}>:-Werror>)
