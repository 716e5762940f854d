# zrcore_header_library(TARGET PACKAGE HEADER) finds a library that consists of headers only, and defines its target. A
# cross build doesn't find the packages of this machine, but headers are the same for every system.
function(zrcore_header_library target package header)
  find_package(${package} QUIET)
  if(TARGET ${target})
    return()
  endif()
  cmake_path(GET header PARENT_PATH folder)
  find_path(ZRCORE_${package}_INCLUDE ${header} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  mark_as_advanced(ZRCORE_${package}_INCLUDE)
  # A folder with a link to these headers: /usr/include also has the system headers of this machine.
  file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/headers")
  file(CREATE_LINK "${ZRCORE_${package}_INCLUDE}/${folder}" "${CMAKE_CURRENT_BINARY_DIR}/headers/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} SYSTEM INTERFACE "${CMAKE_CURRENT_BINARY_DIR}/headers")
endfunction()
