# What `cmake --install` lays down: both libraries, their headers, and the files by which
# find_package(TaBase) and pkg-config find them. The prefix may be moved afterwards.

include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/TaBase)

install(TARGETS groundwork tabase EXPORT TaBaseTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT TaBaseTargets NAMESPACE TaBase:: DESTINATION ${package_folder})

# The headers keep their folders below include/tabase, so that they include each other as here.
foreach(library IN ITEMS groundwork tabase)
  get_target_property(headers ${library} TA_HEADERS)
  foreach(header IN LISTS headers)
    cmake_path(GET header PARENT_PATH folder)
    string(REPLACE "talibraries/" "" folder ${folder})
    install(FILES ${PROJECT_SOURCE_DIR}/core/${header}
      DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tabase/${folder})
  endforeach()
endforeach()

configure_package_config_file(cmake/TaBaseConfig.cmake.in TaBaseConfig.cmake
  INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(TaBaseConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/TaBaseConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/TaBaseConfigVersion.cmake
  cmake/TaRecordedTest.cmake cmake/recordedtest.cpp
  DESTINATION ${package_folder})

# pkg-config finds the prefix from where the file lies.
file(RELATIVE_PATH pkgconfig_prefix /x/${CMAKE_INSTALL_LIBDIR}/pkgconfig /x)
configure_file(cmake/tabase.pc.in tabase.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tabase.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET tamesh)
  set_target_properties(tamesh PROPERTIES
    INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS tamesh RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
set_target_properties(tabase PROPERTIES INSTALL_RPATH "$ORIGIN")
