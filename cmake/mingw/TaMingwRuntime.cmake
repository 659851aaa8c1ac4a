# ta_mingw_runtime(FOLDER): copies the libraries that every program built with MinGW-w64 needs beside
# the programs. A copy that lies there is found by whatever starts the program.
function(ta_mingw_runtime folder)
  foreach(name IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll zlib1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT EXISTS ${path})
      message(FATAL_ERROR "${name} is not there: run tools/setup.sh --windows")
    endif()
    configure_file(${path} ${folder}/${name} COPYONLY)
  endforeach()
endfunction()
