# Compiler and linker options for the targets of this source tree. This file is not installed.
#
#   zrcore_compile_flags(TARGET FLAG...)   adds the flags that the compiler supports
#   zrcore_warnings(TARGET)                enables the warnings
#   zrcore_harden(TARGET)                  adds hardening options and link-time optimisation
#   zrcore_map_paths(TARGET)               makes the compiled code independent of the folders of the build
#
# Including this file sets ZRCORE_IPO (whether link-time optimisation is available and wanted) and applies
# ZRCORE_SANITIZE and ZRCORE_COVERAGE to all targets that are added afterwards.

include(CheckCXXCompilerFlag)
include(CheckIPOSupported)

# zrcore_compile_flags(TARGET FLAG...) adds each flag to the compile options of TARGET if the C++ compiler accepts it.
# Other flags are ignored.
function(zrcore_compile_flags target)
  foreach(flag IN LISTS ARGN)
    string(MAKE_C_IDENTIFIER "ZRCORE_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(${target} PRIVATE ${flag})
    endif()
  endforeach()
endfunction()

# zrcore_warnings(TARGET) enables the tree's warnings for TARGET, the same for both compilers. Clang also runs its
# thread-safety analysis. With ZRCORE_WERROR, warnings are errors.
function(zrcore_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    # GCC 12 wrongly reports overlapping copies for "literal" + std::string (GCC bug 105651, fixed in GCC 13).
    $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
  if(ZRCORE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# zrcore_harden(TARGET) adds options to TARGET that make memory errors hard to exploit, let the library call its own
# functions directly, and allow it to be unloaded. If ZRCORE_IPO is set, Release and RelWithDebInfo builds use link-time
# optimisation; other builds never do, whatever a parent project sets.
function(zrcore_harden target)
  zrcore_compile_flags(${target} -fstack-protector-strong -fcf-protection
    -fno-semantic-interposition -fno-plt
    -fno-gnu-unique)   # a unique symbol would keep the library from ever being unloaded
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "aarch64")   # clang warns of this option for other processors
    zrcore_compile_flags(${target} -mbranch-protection=standard)
  endif()
  if(WIN32)
    # Partial inlining splits functions, and the part split off an exported function would be exported too.
    zrcore_compile_flags(${target} -fno-partial-inlining)
    target_link_libraries(${target} PRIVATE -Wl,-Bstatic ssp -Wl,-Bdynamic)   # static; by default it would be a DLL
  else()
    zrcore_compile_flags(${target} -fstack-clash-protection)   # on Windows the system does this
  endif()
  if(NOT ZRCORE_SANITIZE)
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
  endif()
  get_target_property(type ${target} TYPE)
  if(NOT WIN32 AND NOT type STREQUAL "OBJECT_LIBRARY")
    target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack LINKER:--as-needed)
    if(NOT ZRCORE_SANITIZE)   # the program, not the library, defines the sanitizers' symbols
      target_link_options(${target} PRIVATE LINKER:-z,defs)
    endif()
  endif()
  set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION OFF)
  if(ZRCORE_IPO)
    set_target_properties(${target} PROPERTIES
      INTERPROCEDURAL_OPTIMIZATION_RELEASE ON INTERPROCEDURAL_OPTIMIZATION_RELWITHDEBINFO ON)
  endif()
endfunction()

# zrcore_map_paths(TARGET) replaces the paths of the source folder and the build folder by "." in debug information, so
# that two builds with g++ in different folders have the same bytes (tools/check-reproducible). Debug builds keep the
# paths, so that gdb finds the sources wherever it is started. It does nothing without ZRCORE_MAP_PATHS.
function(zrcore_map_paths target)
  if(NOT ZRCORE_MAP_PATHS)
    return()
  endif()
  check_cxx_compiler_flag(-ffile-prefix-map=a=b ZRCORE_HAS_file_prefix_map)
  if(ZRCORE_HAS_file_prefix_map)
    # The build folder is often inside the source folder. The last map that matches counts.
    set(maps "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${CMAKE_BINARY_DIR}=.")
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:${maps}>)
    target_link_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:${maps}>)   # link-time optimisation compiles again
  endif()
endfunction()

if(NOT ZRCORE_SANITIZE AND NOT ZRCORE_COVERAGE)
  check_ipo_supported(RESULT ZRCORE_IPO OUTPUT ignored LANGUAGES CXX)
endif()

if(ZRCORE_SANITIZE)
  # An object from a module may be a plain table of functions without a C++ type. The vptr check would reject it.
  add_compile_options(-fsanitize=${ZRCORE_SANITIZE} -fno-sanitize=vptr -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZRCORE_SANITIZE})
endif()
if(ZRCORE_COVERAGE)
  # Counters that are not atomic lose counts when threads run at the same time. A branch could then appear untaken or
  # have a negative count.
  add_compile_options(--coverage -O0 -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
