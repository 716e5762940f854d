// What the program wants to know of the system that it runs on.

#ifndef EXAMPLES_HOST_ENVIRONMENT_H
#define EXAMPLES_HOST_ENVIRONMENT_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

/// CommandLine is what the user asked for, without the program's name in front. UTF-8, if the user's terminal was.
std::vector<std::string> CommandLine(int count, char** values);

/// ModuleFile is how the file of a module is called here: "bodies.so" or "bodies.dll".
std::string ModuleFile(const std::string& module);

/// BesideProgram is the path of a file that lies in the folder of the running program. UTF-8.
std::string BesideProgram(const std::string& fileName);

/// AbsolutePath is a path from the root, of a path in UTF-8. A module is looked for in the system's own folders if its
/// path has no slash.
std::string AbsolutePath(const std::string& path);

/// OpenToRead opens the file of a path in UTF-8, for reading bytes; null, with a reason in errno, if that fails.
std::FILE* OpenToRead(const std::string& path);

/// OutputWidth is how many columns the terminal behind standard output has; 120 if it is none.
uint32_t OutputWidth();

#endif
