// The host's configuration file: JSON with values that replace those of manifests, and the settings of the library.
//
//     {
//       "schema": 1,
//       "library": {"EnableAllocator": true, "ZR_VT_REF": 256},
//       "classes": {"Planets.Mars": {"Orbit": {"Precision": 3}}}
//     }
//
// "library" is the configuration "ZrCore" of zrcore/configuration.h. "classes" maps the name of a class to its
// configurations, and each of these to its values (setting.h).

#ifndef HOSTKIT_CONFIGURATION_FILE_H
#define HOSTKIT_CONFIGURATION_FILE_H

#include <filesystem>
#include <functional>
#include <vector>

#include "hostkit/problem.h"
#include "hostkit/setting.h"
#include "zr/string.hpp"

/// Returns the configurations of a class by its name; null if there is no such class.
using FindConfigurations = std::function<Configurations*(const zr::String& className)>;

/// ReadConfigurationFile reads the file, changes the configurations of its classes, and returns the settings of the
/// library. What is wrong becomes problems; a class that is not found becomes a warning.
[[nodiscard]] std::vector<Setting> ReadConfigurationFile(const std::filesystem::path& file,
                                                         const FindConfigurations& find, CProblems& problems);

#endif
