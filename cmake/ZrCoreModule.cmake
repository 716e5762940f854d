# Functions for the CMake projects of component modules.
#
# zrcore_add_module(NAME SOURCE...
#                   [CLASSES CLASS=ID... [INTERFACES INTERFACE=ID...] [DESCRIPTION TEXT] [VERSION VERSION]]
#                   [MANIFEST FILE])
#   builds a loadable component module from the sources.
#
#   NAME         the name of the new MODULE library target, and of its file: NAME.so, on Windows NAME.dll
#   SOURCE...    passed to add_library
#   CLASSES      the classes of the module as "NAME=ID", such as "Planets.Mars=31AD0869-8AC8-4D25-A11C-A887BE515257".
#                With it, CMake writes the manifest NAME.zrmodule beside the module, by which the host kit finds it.
#                Without CLASSES and MANIFEST there is no manifest, and zrcore_install_module ends CMake with an error.
#   INTERFACES   interfaces as "NAME=ID". The manifest names all of them for every class. If the classes implement
#                different interfaces, use MANIFEST.
#   DESCRIPTION  what the module is for
#   VERSION      the version of the module
#   MANIFEST     a manifest that is written by hand, such as one with configurations, instead of the four above. It is
#                copied beside the module. Generator expressions are evaluated: "module": "$<TARGET_FILE_NAME:NAME>" is
#                right for every system. A relative FILE starts in the current source folder, and must exist when CMake
#                runs.
#
#   The target links ZrCore::zrcore. It exports exactly the three functions of zrcore/component.h: ZrInitModule,
#   ZrExitModule and ZrCreateInstanceModule. If one is missing or has another signature, linking fails. Further commands,
#   such as target_link_libraries, apply to NAME as to any target. If the target has another OUTPUT_NAME, the manifest
#   has it too.
#
# zrcore_install_module(NAME [DESTINATION FOLDER])
#   installs the module and its manifest into FOLDER; by default into zrcore/modules in the library folder, where hosts
#   of the same prefix look for modules. A relative FOLDER starts in the install prefix.

cmake_policy(VERSION 3.20...3.25)   # of this file, whatever version the project requires
include_guard(GLOBAL)

function(zrcore_add_module name)
  set(here "${CMAKE_CURRENT_FUNCTION_LIST_DIR}")
  set(parts CLASSES INTERFACES DESCRIPTION VERSION)
  cmake_parse_arguments(PARSE_ARGV 1 module "" "DESCRIPTION;VERSION;MANIFEST" "CLASSES;INTERFACES")
  if("MANIFEST" IN_LIST module_KEYWORDS_MISSING_VALUES)
    message(FATAL_ERROR "zrcore_add_module: ${name}: MANIFEST has no value")
  endif()
  foreach(part IN LISTS parts)
    if(part IN_LIST module_KEYWORDS_MISSING_VALUES)
      message(FATAL_ERROR "zrcore_add_module: ${name}: ${part} has no value")
    elseif(DEFINED module_${part} AND DEFINED module_MANIFEST)
      message(FATAL_ERROR "zrcore_add_module: ${name}: ${part} can't be combined with MANIFEST; write it into the file")
    elseif(DEFINED module_${part} AND NOT DEFINED module_CLASSES)
      message(FATAL_ERROR "zrcore_add_module: ${name}: ${part} needs CLASSES, because it is a part of the manifest")
    endif()
  endforeach()

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

  # A name of its own for each configuration whose module has one, as with CMAKE_DEBUG_POSTFIX.
  set(file "$<TARGET_FILE_DIR:${name}>/$<TARGET_FILE_BASE_NAME:${name}>.zrmodule")
  if(DEFINED module_MANIFEST)
    get_filename_component(written "${module_MANIFEST}" ABSOLUTE)
    if(NOT EXISTS "${written}" OR IS_DIRECTORY "${written}")
      message(FATAL_ERROR "zrcore_add_module: ${name}: MANIFEST: there is no file ${written}")
    endif()
    file(GENERATE OUTPUT "${file}" INPUT "${written}")
  elseif(DEFINED module_CLASSES)
    zrcore_manifest(manifest ${name})
    file(GENERATE OUTPUT "${file}" CONTENT "${manifest}\n")
  else()
    return()
  endif()
  set_target_properties(${name} PROPERTIES ZRCORE_MANIFEST "${file}")
endfunction()

function(zrcore_install_module name)
  cmake_parse_arguments(PARSE_ARGV 1 module "" "DESTINATION" "")
  if(DEFINED module_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "zrcore_install_module: ${name}: unknown arguments ${module_UNPARSED_ARGUMENTS}")
  elseif(NOT TARGET ${name})
    message(FATAL_ERROR "zrcore_install_module: there is no target ${name}; call zrcore_add_module first")
  endif()
  get_target_property(manifest ${name} ZRCORE_MANIFEST)
  if(NOT manifest)
    message(FATAL_ERROR "zrcore_install_module: ${name} has no manifest, so no host would find it; pass CLASSES or "
            "MANIFEST to zrcore_add_module")
  endif()
  if(NOT DEFINED module_DESTINATION)
    include(GNUInstallDirs)
    set(module_DESTINATION "${CMAKE_INSTALL_LIBDIR}/zrcore/modules")
  endif()
  install(TARGETS ${name} LIBRARY DESTINATION "${module_DESTINATION}")
  install(FILES "${manifest}" DESTINATION "${module_DESTINATION}")
endfunction()

# The functions below are for zrcore_add_module only.

# Makes the text of a manifest from the variables module_... of the caller.
function(zrcore_manifest result name)
  set(manifest "{}")
  string(JSON manifest SET "${manifest}" schema 1)
  string(JSON manifest SET "${manifest}" module "\"$<TARGET_FILE_NAME:${name}>\"")
  foreach(part IN ITEMS VERSION DESCRIPTION)
    if(DEFINED module_${part})
      zrcore_json_text(text "${module_${part}}")
      string(TOLOWER ${part} key)
      string(JSON manifest SET "${manifest}" ${key} "${text}")
    endif()
  endforeach()
  zrcore_named_ids(classes "${name}: CLASSES" "${module_CLASSES}")
  zrcore_named_ids(interfaces "${name}: INTERFACES" "${module_INTERFACES}")
  string(JSON last LENGTH "${classes}")
  math(EXPR last "${last} - 1")
  if(DEFINED module_INTERFACES)
    foreach(index RANGE ${last})
      string(JSON classes SET "${classes}" ${index} interfaces "${interfaces}")
    endforeach()
  endif()
  string(JSON manifest SET "${manifest}" classes "${classes}")
  set(${result} "${manifest}" PARENT_SCOPE)
endfunction()

# Makes a JSON list of {"id": ..., "name": ...} from a list of NAME=ID.
function(zrcore_named_ids result what pairs)
  set(list "[]")
  set(index 0)
  set(known "")
  foreach(pair IN LISTS pairs)
    if(NOT pair MATCHES "^([^=]+)=([0-9A-Fa-f]+-[0-9A-Fa-f]+-[0-9A-Fa-f]+-[0-9A-Fa-f]+-[0-9A-Fa-f]+)$")
      message(FATAL_ERROR "zrcore_add_module: ${what}: \"${pair}\" doesn't have the form NAME=ID, such as "
              "Planets.Mars=31AD0869-8AC8-4D25-A11C-A887BE515257")
    endif()
    set(name "${CMAKE_MATCH_1}")
    string(TOUPPER "${CMAKE_MATCH_2}" id)
    if(NOT id MATCHES "^........-....-....-....-............$")
      message(FATAL_ERROR "zrcore_add_module: ${what}: the identifier of ${name} doesn't have 8, 4, 4, 4 and 12 digits: "
              "${id}")
    elseif(id IN_LIST known OR "name ${name}" IN_LIST known)
      message(FATAL_ERROR "zrcore_add_module: ${what}: the name or the identifier of \"${pair}\" occurs twice")
    endif()
    list(APPEND known "${id}" "name ${name}")
    zrcore_json_text(text "${name}")
    string(JSON list SET "${list}" ${index} "{\"id\": \"${id}\", \"name\": ${text}}")
    math(EXPR index "${index} + 1")
  endforeach()
  set(${result} "${list}" PARENT_SCOPE)
endfunction()

# Makes a JSON text, with quotation marks.
function(zrcore_json_text result text)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  string(REPLACE "\n" "\\n" text "${text}")
  string(REPLACE "\t" "\\t" text "${text}")
  set(${result} "\"${text}\"" PARENT_SCOPE)
endfunction()
