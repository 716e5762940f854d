// The commands of zrmodule. Each fills the output; main parses the command line and returns the exit status.

#ifndef ZRMODULE_COMMANDS_H
#define ZRMODULE_COMMANDS_H

#include <cstdint>
#include <string>
#include <vector>

#include "zrmodule/output.h"

/// Lists the classes of the folders, or of the folders where hosts look, and the problems of their manifests.
void ListModules(COutput& output, const std::vector<std::string>& folders, const std::string& configurationFile);

/// The version of the tool and its headers, such as "1.0.0".
[[nodiscard]] std::string Version();

/// Prints versions, and the folders where hosts look.
void ShowInformation(COutput& output);

/// Prints new identifiers.
void MakeIdentifiers(COutput& output, uint32_t count);

/// Explains a result code, by its number or its name.
void ExplainCode(COutput& output, const std::string& text);

/// Writes a module project into a new folder.
void MakeProject(COutput& output, const std::string& name, const std::string& folder);

/// Checks module files without running code of them.
void CheckModules(COutput& output, const std::vector<std::string>& files);

/// Loads and exercises a module in a child process.
struct ProbeOptions {
  std::string file;                  ///< of the module; empty to find it by the class
  std::string className;             ///< empty for every class of the module's manifests
  std::vector<std::string> folders;  ///< where to find the class; empty for the folders where hosts look
  double seconds = 10;               ///< the longest time of one stage
};
void ProbeModule(COutput& output, const ProbeOptions& options);

#endif
