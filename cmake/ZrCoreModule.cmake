# zrcore_add_module(NAME SOURCE...) builds a loadable component module from the sources.
#
#   NAME        the name of the new MODULE library target, and of its file: NAME.so, on Windows NAME.dll
#   SOURCE...   passed to add_library
#
# The target links ZrCore::zrcore. It exports exactly the three functions of zrcore/component.h: ZrInitModule,
# ZrExitModule and ZrCreateInstanceModule. If one is missing or has another signature, linking fails. Further commands,
# such as target_link_libraries, apply to NAME as to any target.

include_guard(GLOBAL)

function(zrcore_add_module name)
  set(here "${CMAKE_CURRENT_FUNCTION_LIST_DIR}")
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE ZrCore::zrcore)
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    POSITION_INDEPENDENT_CODE ON   # even if the project turns it off, for its programs
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  if(WIN32)
    target_sources(${name} PRIVATE "${here}/zrcore_module.def")
  else()
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS "${here}/zrcore_module.map")
    target_link_options(${name} PRIVATE
      "LINKER:--version-script=${here}/zrcore_module.map"
      # All three must exist. -u also finds them in a static library that NAME links.
      LINKER:--no-undefined-version
      LINKER:-u,ZrInitModule
      LINKER:-u,ZrExitModule
      LINKER:-u,ZrCreateInstanceModule)
  endif()
endfunction()
