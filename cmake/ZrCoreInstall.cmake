# Installs the public headers, the library and, if it was built, the host kit; the files for find_package(ZrCore) and for
# pkg-config (zrcore, zrhost); and the gdb pretty-printers.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(libraries zrcore)
if(TARGET zrhost)
  list(APPEND libraries zrhost)
endif()
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/ZrCore")

install(DIRECTORY include/zrcore include/zr TYPE INCLUDE FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
if(TARGET zrhost)
  install(DIRECTORY include/zrhost TYPE INCLUDE FILES_MATCHING PATTERN "*.h")
endif()
foreach(library IN LISTS libraries)
  target_include_directories(${library} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()
install(TARGETS ${libraries} zr EXPORT ZrCoreTargets
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

# The paths in the pkg-config files are relative to their own folder, so that an installation can be moved. A path that was
# given as absolute stays absolute.
foreach(dir IN ITEMS LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(pc_${dir} "${CMAKE_INSTALL_${dir}}")
  else()
    set(pc_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
file(RELATIVE_PATH pc_to_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
foreach(library IN LISTS libraries)
  configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/${library}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endforeach()

# gdb finds the printers of a library by the library's full path below gdb/auto-load. That path depends on the prefix,
# which is known only at installation.
if(NOT WIN32)
  include(cmake/ZrCoreDebugger.cmake)
  install(CODE "
    set(libdir \"${CMAKE_INSTALL_LIBDIR}\")
    cmake_path(ABSOLUTE_PATH libdir BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
    file(INSTALL \"${CMAKE_CURRENT_BINARY_DIR}/zrcore_gdb.py\" RENAME libzrcore.so.${PROJECT_VERSION}-gdb.py
      DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/gdb/auto-load\${libdir}\")")
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/zrcore_lldb.py" DESTINATION "${CMAKE_INSTALL_DATADIR}/zrcore")
endif()
