# zrcore_header_library(TARGET PACKAGE HEADER) finds a library that consists of headers only, and defines its target, unless
# a parent project has defined it. The package's own CMake files are not used: they would add entries to the cache, and a
# cross build doesn't find them. Headers are the same for every system.
function(zrcore_header_library target package header)
  if(TARGET ${target})
    return()
  endif()
  cmake_path(GET header PARENT_PATH folder)
  find_path(ZRCORE_${package}_INCLUDE ${header} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  mark_as_advanced(ZRCORE_${package}_INCLUDE)
  set(headers "${ZRCORE_${package}_INCLUDE}")
  if(CMAKE_CROSSCOMPILING)   # a folder with a link to these headers: /usr/include also has those of this system
    set(headers "${CMAKE_CURRENT_BINARY_DIR}/headers")
    file(MAKE_DIRECTORY "${headers}")
    file(CREATE_LINK "${ZRCORE_${package}_INCLUDE}/${folder}" "${headers}/${folder}" SYMBOLIC)
  endif()
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} SYSTEM INTERFACE "${headers}")
endfunction()
