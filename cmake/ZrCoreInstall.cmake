# The installed package: headers, library, find_package(ZrCore), pkg-config zrcore, and how gdb shows the values.

include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/ZrCore")

install(DIRECTORY include/zrcore TYPE INCLUDE FILES_MATCHING PATTERN "*.h")
install(TARGETS zrcore EXPORT ZrCoreTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT ZrCoreTargets NAMESPACE ZrCore:: DESTINATION ${package_dir})

configure_package_config_file(cmake/ZrCoreConfig.cmake.in "${CMAKE_CURRENT_BINARY_DIR}/ZrCoreConfig.cmake"
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file("${CMAKE_CURRENT_BINARY_DIR}/ZrCoreConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES
  "${CMAKE_CURRENT_BINARY_DIR}/ZrCoreConfig.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/ZrCoreConfigVersion.cmake"
  cmake/ZrCoreModule.cmake
  cmake/zrcore_module.def
  cmake/zrcore_module.map
  DESTINATION ${package_dir})

# pkg-config's paths follow the prefix, so that a moved installation still works; a path that was given absolute stays.
foreach(dir IN ITEMS LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(pc_${dir} "${CMAKE_INSTALL_${dir}}")
  else()
    set(pc_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
file(RELATIVE_PATH pc_to_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
configure_file(cmake/zrcore.pc.in zrcore.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/zrcore.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# gdb looks for a library's printers by the library's whole path, which the prefix of the installation decides.
if(NOT WIN32)
  install(CODE "
    set(libdir \"${CMAKE_INSTALL_LIBDIR}\")
    cmake_path(ABSOLUTE_PATH libdir BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
    file(INSTALL \"${PROJECT_SOURCE_DIR}/debugger/zrcore_gdb.py\" RENAME libzrcore.so.${PROJECT_VERSION}-gdb.py
      DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${libdir}\")")
endif()
