# Functions for the CMake projects of component modules.
#
# zrcore_add_module(NAME SOURCE... [CLASSES CLASS=ID...] [INTERFACES INTERFACE=ID...] [DESCRIPTION TEXT] [VERSION VERSION])
#   builds a loadable component module from the sources.
#
#   NAME         the name of the new MODULE library target, and of its file: NAME.so, on Windows NAME.dll
#   SOURCE...    passed to add_library
#   CLASSES      the classes of the module as "NAME=ID", such as "Planets.Mars=31AD0869-6C4B-4C0E-9B3A-2F7D1C5E8A10".
#                With it, the manifest NAME.zrmodule is written beside the module, by which the host kit finds it.
#   INTERFACES   the interfaces that each class implements, as "NAME=ID"
#   DESCRIPTION  what the module is for, in the manifest
#   VERSION      the version of the module, in the manifest
#
#   The target links ZrCore::zrcore. It exports exactly the three functions of zrcore/component.h: ZrInitModule,
#   ZrExitModule and ZrCreateInstanceModule. If one is missing or has another signature, linking fails. Further commands,
#   such as target_link_libraries, apply to NAME as to any target.
#
# zrcore_install_module(NAME [DESTINATION FOLDER])
#   installs the module and its manifest into FOLDER; by default into zrcore/modules in the library folder, where hosts
#   look for modules.

include_guard(GLOBAL)

function(zrcore_add_module name)
  set(here "${CMAKE_CURRENT_FUNCTION_LIST_DIR}")
  cmake_parse_arguments(PARSE_ARGV 1 module "" "DESCRIPTION;VERSION" "CLASSES;INTERFACES")
  add_library(${name} MODULE ${module_UNPARSED_ARGUMENTS})
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
  if(module_CLASSES)
    zrcore_write_manifest(${name} "${module_CLASSES}" "${module_INTERFACES}" "${module_DESCRIPTION}" "${module_VERSION}")
  endif()
endfunction()

function(zrcore_install_module name)
  cmake_parse_arguments(PARSE_ARGV 1 module "" "DESTINATION" "")
  include(GNUInstallDirs)
  if(NOT module_DESTINATION)
    set(module_DESTINATION "${CMAKE_INSTALL_LIBDIR}/zrcore/modules")
  endif()
  get_target_property(manifest ${name} ZRCORE_MANIFEST)
  if(NOT manifest)
    message(FATAL_ERROR "zrcore_install_module: ${name} has no manifest; pass CLASSES to zrcore_add_module")
  endif()
  install(TARGETS ${name} LIBRARY DESTINATION "${module_DESTINATION}")
  install(FILES "${manifest}" DESTINATION "${module_DESTINATION}")
endfunction()

# Writes the manifest of a module beside it. Used by zrcore_add_module only.
function(zrcore_write_manifest name classes interfaces description version)
  set(manifest "{}")
  string(JSON manifest SET "${manifest}" schema 1)
  string(JSON manifest SET "${manifest}" module "\"$<TARGET_FILE_NAME:${name}>\"")
  foreach(key IN ITEMS version description)
    if(NOT "${${key}}" STREQUAL "")
      zrcore_json_text(text "${${key}}")
      string(JSON manifest SET "${manifest}" ${key} "${text}")
    endif()
  endforeach()
  zrcore_named_ids(interfaces "${name}: INTERFACES" "${interfaces}")
  zrcore_named_ids(classes "${name}: CLASSES" "${classes}")
  string(JSON last LENGTH "${classes}")
  math(EXPR last "${last} - 1")
  string(JSON count LENGTH "${interfaces}")
  if(count GREATER 0)
    foreach(index RANGE ${last})
      string(JSON classes SET "${classes}" ${index} interfaces "${interfaces}")
    endforeach()
  endif()
  string(JSON manifest SET "${manifest}" classes "${classes}")
  set(file "$<TARGET_FILE_DIR:${name}>/${name}.zrmodule")
  file(GENERATE OUTPUT "${file}" CONTENT "${manifest}\n" TARGET ${name})
  set_target_properties(${name} PROPERTIES ZRCORE_MANIFEST "${file}")
endfunction()

# Makes a JSON list of {"id": ..., "name": ...} from a list of NAME=ID.
function(zrcore_named_ids result what pairs)
  set(list "[]")
  set(index 0)
  foreach(pair IN LISTS pairs)
    if(NOT pair MATCHES "^([^=]+)=([0-9A-Fa-f]+-[0-9A-Fa-f]+-[0-9A-Fa-f]+-[0-9A-Fa-f]+-[0-9A-Fa-f]+)$")
      message(FATAL_ERROR "zrcore_add_module: ${what}: \"${pair}\" has not the form NAME=ID, such as "
              "Planets.Mars=31AD0869-6C4B-4C0E-9B3A-2F7D1C5E8A10")
    endif()
    set(id "${CMAKE_MATCH_2}")
    zrcore_json_text(text "${CMAKE_MATCH_1}")
    if(NOT id MATCHES "^........-....-....-....-............$")
      message(FATAL_ERROR "zrcore_add_module: ${what}: the identifier ${id} has not 8, 4, 4, 4 and 12 digits")
    endif()
    string(JSON list SET "${list}" ${index} "{\"id\": \"${id}\", \"name\": ${text}}")
    math(EXPR index "${index} + 1")
  endforeach()
  set(${result} "${list}" PARENT_SCOPE)
endfunction()

# Makes a JSON text, with quotation marks.
function(zrcore_json_text result text)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  set(${result} "\"${text}\"" PARENT_SCOPE)
endfunction()
