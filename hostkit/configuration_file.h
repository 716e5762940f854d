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
#include <map>
#include <string>
#include <vector>

#include "hostkit/manifest.h"
#include "hostkit/problem.h"
#include "hostkit/setting.h"

/// The configurations of a class, or of several, by name.
using Configurations = std::map<std::string, std::vector<Setting>>;

/// ReadConfigurationFile reads the file. It changes the configurations of the classes that `configurationsOf` maps by
/// their names, and sets `library`. What is wrong becomes problems; a class that is not in the map becomes a warning.
void ReadConfigurationFile(const std::filesystem::path& file,
                           const std::map<std::string, Configurations*, std::less<>>& configurationsOf,
                           std::vector<Setting>& library, CProblems& problems);

#endif
