# How everything in this tree is compiled and linked. Users of the installed library never see this file.

include(CheckCXXCompilerFlag)
include(CheckIPOSupported)
include(CheckLinkerFlag)

# Applies the flags to `target` that the compiler knows.
function(zrcore_compile_flags target)
  foreach(flag IN LISTS ARGN)
    string(MAKE_C_IDENTIFIER "ZRCORE_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(${target} PRIVATE ${flag})
    endif()
  endforeach()
endfunction()

# The strict level, the same for both compilers.
function(zrcore_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor>
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    # GCC 12 reports overlapping copies in every "literal" + std::string (its bug 105651, mended in 13).
    $<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)
  if(ZRCORE_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# What makes an error hard to exploit, and the call of an own function direct. Release builds are optimised as a whole.
function(zrcore_harden target)
  zrcore_compile_flags(${target} -fstack-protector-strong -fcf-protection
    -fno-semantic-interposition -fno-plt
    -fno-gnu-unique)   # a symbol of that kind would keep the library from ever being unloaded
  if(WIN32)
    zrcore_compile_flags(${target} -fno-partial-inlining)   # a part split off an exported function would be exported too
    target_link_libraries(${target} PRIVATE -Wl,-Bstatic ssp -Wl,-Bdynamic)   # of its own, the compiler takes a DLL
  else()
    zrcore_compile_flags(${target} -fstack-clash-protection)   # Windows itself touches page after page
  endif()
  if(NOT ZRCORE_SANITIZE)
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
  endif()
  get_target_property(type ${target} TYPE)
  if(NOT WIN32 AND NOT type STREQUAL "OBJECT_LIBRARY")
    target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack LINKER:--as-needed)
    if(NOT ZRCORE_SANITIZE)   # the sanitizers' symbols come with the program
      target_link_options(${target} PRIVATE LINKER:-z,defs)
    endif()
  endif()
  if(ZRCORE_IPO)
    set_target_properties(${target} PROPERTIES
      INTERPROCEDURAL_OPTIMIZATION_RELEASE ON INTERPROCEDURAL_OPTIMIZATION_RELWITHDEBINFO ON)
  endif()
endfunction()

if(NOT ZRCORE_SANITIZE AND NOT ZRCORE_COVERAGE)
  check_ipo_supported(RESULT ZRCORE_IPO OUTPUT ignored LANGUAGES CXX)
endif()

if(ZRCORE_SANITIZE)
  # Objects that cross the boundary may have a table of operations but no C++ type, which the check of vptr can't know.
  add_compile_options(-fsanitize=${ZRCORE_SANITIZE} -fno-sanitize=vptr -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZRCORE_SANITIZE})
endif()
if(ZRCORE_COVERAGE)
  # Without atomic counters, threads that count at once lose counts and even make a branch look negative or untaken.
  add_compile_options(--coverage -O0 -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
