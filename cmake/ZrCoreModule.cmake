# zrcore_add_module(NAME sources...) makes a loadable component module of the sources.
#
# NAME becomes a MODULE library target, file NAME.so (on Windows NAME.dll), linked with ZrCore::zrcore. Exactly the
# three functions of zrcore/component.h are visible in it: ZrInitModule, ZrExitModule and ZrCreateInstanceModule. If one
# is missing, or was defined with another signature, linking fails. Use target_link_libraries and its kin on NAME as on
# any target.

include_guard(GLOBAL)

function(zrcore_add_module name)
  set(here "${CMAKE_CURRENT_FUNCTION_LIST_DIR}")
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE ZrCore::zrcore)
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  if(WIN32)
    target_sources(${name} PRIVATE "${here}/zrcore_module.def")
  else()
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS "${here}/zrcore_module.map")
    target_link_options(${name} PRIVATE
      "LINKER:--version-script=${here}/zrcore_module.map"
      LINKER:--no-undefined-version   # each has to be there, be it in a static library
      LINKER:-u,ZrInitModule
      LINKER:-u,ZrExitModule
      LINKER:-u,ZrCreateInstanceModule)
  endif()
endfunction()
