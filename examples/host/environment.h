// The platform layer of the demo: the functions that differ between systems, implemented in posix/ and windows/.

#ifndef EXAMPLES_HOST_ENVIRONMENT_H
#define EXAMPLES_HOST_ENVIRONMENT_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

/// CommandLine returns the arguments without the program's name. They are UTF-8 on Windows; on POSIX systems they are
/// the bytes that the terminal sent.
std::vector<std::string> CommandLine(int count, char** values);

/// ModuleFileName returns the name of a module's file on this system: "bodies.so" or "bodies.dll".
std::string ModuleFileName(const std::string& module);

/// PathInProgramFolder returns the path of a file in the folder of the running program, in UTF-8.
std::string PathInProgramFolder(const std::string& fileName);

/// AbsolutePath converts a path in UTF-8 to an absolute path. Use it for module paths: the system searches its own
/// folders for a module path without a slash, not the current folder.
std::string AbsolutePath(const std::string& path);

/// OpenToRead opens a file for reading bytes. The path is UTF-8. The result is null, with the reason in errno, if the
/// file can't be opened.
std::FILE* OpenToRead(const std::string& path);

/// OutputWidth returns the number of columns of the terminal; 120 if standard output is not a terminal.
uint32_t OutputWidth();

#endif
