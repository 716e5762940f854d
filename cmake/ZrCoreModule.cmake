# zrcore_add_module(NAME sources...) makes a loadable component module of the sources.
#
# NAME becomes a MODULE library target, file NAME.so (on Windows NAME.dll), linked with ZrCore::zrcore. Exactly the three functions of
# zrcore/component.h are visible in it: ZrInitModule, ZrExitModule and ZrCreateInstanceModule. If one is missing, or was
# defined with another signature, linking fails. Use target_link_libraries and its kin on NAME as on any target.

include_guard(GLOBAL)
set(ZRCORE_MODULE_MAP "${CMAKE_CURRENT_LIST_DIR}/zrcore_module.map")
set(ZRCORE_MODULE_DEFINITION "${CMAKE_CURRENT_LIST_DIR}/zrcore_module.def")

function(zrcore_add_module name)
  add_library(${name} MODULE ${ARGN})
  target_link_libraries(${name} PRIVATE ZrCore::zrcore)
  set_target_properties(${name} PROPERTIES
    PREFIX ""
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  if(WIN32)
    target_sources(${name} PRIVATE "${ZRCORE_MODULE_DEFINITION}")
  else()
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS "${ZRCORE_MODULE_MAP}")
    target_link_options(${name} PRIVATE
      "LINKER:--version-script=${ZRCORE_MODULE_MAP}"
      LINKER:--require-defined=ZrInitModule
      LINKER:--require-defined=ZrExitModule
      LINKER:--require-defined=ZrCreateInstanceModule)
  endif()
endfunction()
