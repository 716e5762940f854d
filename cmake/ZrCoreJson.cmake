# Finds the headers of nlohmann-json, which are the same for every system, and defines nlohmann_json::nlohmann_json.
find_package(nlohmann_json 3.9 QUIET)
if(NOT TARGET nlohmann_json::nlohmann_json)   # a cross build doesn't find the package of this machine
  find_path(ZRCORE_JSON_INCLUDE nlohmann/json.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  file(CREATE_LINK "${ZRCORE_JSON_INCLUDE}/nlohmann" "${CMAKE_CURRENT_BINARY_DIR}/json/nlohmann" SYMBOLIC)   # nothing else
  add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED)
  target_include_directories(nlohmann_json::nlohmann_json INTERFACE "${CMAKE_CURRENT_BINARY_DIR}/json")
endif()
