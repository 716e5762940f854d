// The command line of the demo, and its exit status.

#ifndef EXAMPLES_SUPPORT_ARGUMENTS_H
#define EXAMPLES_SUPPORT_ARGUMENTS_H

#include <string>
#include <vector>

struct Arguments {
  std::string moduleFolder;
  std::string className;
  std::string csvPath;
};

/// RunWithArguments reads the arguments and calls `run`, which returns whether it succeeded. An exception of `run` is
/// printed. The result is the exit status of the program.
int RunWithArguments(const std::vector<std::string>& values, bool (*run)(const Arguments&));

/// PrintLine prints one line of the report, and PrintError an error. UTF-8.
void PrintLine(const char* topic, const std::string& text);
void PrintError(const char* text);

#endif
