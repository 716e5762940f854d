// The command line: one option and two positions. Exit status 2 is for wrong arguments, 1 for every other failure.

#include "support/arguments.h"

#include <cstdio>
#include <exception>

#include "support/environment.h"

static constexpr char kUsage[] = "usage: zrdemo [--modules FOLDER] [CLASS-NAME [CSV-FILE]]";

// Returns 0, or the exit status if the program has nothing to do.
static int Read(const std::vector<std::string>& values, Arguments& arguments, bool& wantsHelp) {
  int position = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] == "--help") {
      wantsHelp = true;
    } else if (values[i] == "--modules" && i + 1 < values.size()) {
      arguments.moduleFolder = values[++i];
    } else if (values[i].compare(0, 2, "--") == 0 || position == 2) {
      return 2;
    } else {
      (position++ == 0 ? arguments.className : arguments.csvPath) = values[i];
    }
  }
  return 0;
}

int RunWithArguments(const std::vector<std::string>& values, bool (*run)(const Arguments&)) {
  try {
    Arguments arguments{PathInProgramFolder("modules"), "Astronomy.BodyTable", PathInProgramFolder("bodies.csv")};
    bool wantsHelp = false;
    if (const int status = Read(values, arguments, wantsHelp); status != 0) {
      std::fprintf(stderr, "%s\n", kUsage);
      return status;
    }
    if (wantsHelp) {
      std::puts(kUsage);
      return 0;
    }
    bool isGood = run(arguments);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
      PrintError("can't write to standard output");
      isGood = false;
    }
    return isGood ? 0 : 1;
  } catch (const std::exception& error) {
    PrintError(error.what());
    return 1;
  }
}

void PrintLine(const char* topic, const std::string& text) {
  std::printf("  %-13s %s\n", topic, text.c_str());
  (void)std::fflush(stdout);  // before later messages on standard error
}

void PrintError(const char* text) { std::fprintf(stderr, "zrdemo: %s\n", text); }
