// The platform layer of the demo: the functions that differ between systems, implemented in posix/ and windows/.

#ifndef EXAMPLES_SUPPORT_ENVIRONMENT_H
#define EXAMPLES_SUPPORT_ENVIRONMENT_H

#include <cstddef>
#include <string>
#include <vector>

/// CommandLine returns the arguments without the program's name. They are UTF-8 on Windows; on POSIX systems they are
/// the bytes that the terminal sent.
std::vector<std::string> CommandLine(int count, char** values);

/// PathInProgramFolder returns the path of a file in the folder of the running program, in UTF-8.
std::string PathInProgramFolder(const std::string& fileName);

/// OutputWidth returns the number of columns of the terminal; 120 if standard output is not a terminal.
std::size_t OutputWidth();

#endif
