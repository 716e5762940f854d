// zrmodule: a tool for authors and operators of component modules. This file reads the command line.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <functional>

#include "zrmodule/commands.h"
#include "zrmodule/probe.h"
#include "zrmodule/system.h"

static constexpr const char* kFooter =
    "Every command prints JSON with --json.\n"
    "Exit status: 0 good, 1 findings, 2 wrong usage, 3 a file can't be read.";

struct Command {
  std::string name;
  std::function<void(COutput&)> run;
};

static int Run(std::vector<std::string> arguments) {
  if (!arguments.empty() && arguments[0] == kChildCommand) return RunProbeChild(arguments);
  CLI::App app("Lists, checks and tries component modules.", "zrmodule");
  app.set_version_flag("--version", "zrmodule " + Version());
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // "/modules" is a folder there, too
  app.footer(kFooter);
  bool isJson = false;
  app.add_flag("--json", isJson, "Print one JSON document for programs");
  Command chosen;
  const auto add = [&](const char* name, const char* description, const std::function<void(COutput&)>& run) {
    CLI::App* const command = app.add_subcommand(name, description)->fallthrough();  // --json may come last, too
    command->callback([&chosen, name, run] { chosen = {name, run}; });
    return command;
  };

  std::vector<std::string> folders, files;
  std::string configuration, name, folder, code;
  uint32_t howMany = 1;
  ProbeOptions probe;

  CLI::App* const list = add("list", "List classes and problems of manifests",
                             [&](COutput& output) { ListModules(output, folders, configuration); });
  list->add_option("FOLDER", folders, "The folders to search; by default those where hosts look")->type_name("");
  list->add_option("--configuration", configuration, "The configuration file of a host")->type_name("FILE");

  CLI::App* const check =
      add("check", "Check modules without running their code", [&](COutput& output) { CheckModules(output, files); });
  check->add_option("FILE", files, "Module files")->required()->type_name("");

  CLI::App* const tryOut = add("probe", "Load and exercise a module in a child process",
                               [&](COutput& output) { ProbeModule(output, probe); });
  tryOut->add_option("FILE", probe.file, "The module file")->type_name("");
  tryOut->add_option("--class", probe.className, "The class to create, found by its name")->type_name("NAME");
  tryOut->add_option("--folder", probe.folders, "The folders to search for the class")->type_name("FOLDER");
  tryOut->add_option("--timeout", probe.seconds, "The longest time of one stage in seconds")
      ->check(CLI::Range(0.001, 86400.0))
      ->type_name("SECONDS")
      ->capture_default_str();

  CLI::App* const make = add("new", "Write a module project into a new folder",
                             [&](COutput& output) { MakeProject(output, name, folder.empty() ? name : folder); });
  make->add_option("NAME", name, "The name of the module and its class")->required()->type_name("");
  make->add_option("--folder", folder, "The folder; by default NAME")->type_name("FOLDER");

  CLI::App* const uuid =
      add("uuid", "Print new identifiers", [&](COutput& output) { MakeIdentifiers(output, howMany); });
  uuid->add_option("-n", howMany, "How many")
      ->check(CLI::Range(1u, 1000000u))
      ->type_name("COUNT")
      ->capture_default_str();

  CLI::App* const explain = add("code", "Explain a result code", [&](COutput& output) { ExplainCode(output, code); });
  explain->add_option("CODE", code, "A number such as 0x80000004, or a name such as ZR_R_FAILED")
      ->required()
      ->type_name("");

  (void)add("info", "Print the version and the folders where hosts look", ShowInformation);

  const bool isJsonWanted = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
  try {
    std::reverse(arguments.begin(), arguments.end());  // as CLI11 wants them
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0 || !isJsonWanted)
      return app.exit(error) == 0 ? 0 : static_cast<int>(ExitCode::Usage);
    COutput output(true, "");
    output.Error("usage", {}, error.what());
    output.Raise(ExitCode::Usage);
    return output.Finish();
  }
  COutput output(isJson, chosen.name);
  try {
    chosen.run(output);
  } catch (const std::exception& error) {
    output.Error("failed", {}, error.what());
    output.Raise(ExitCode::Unreadable);
  }
  return output.Finish();
}

int main(int count, char** values) {
  try {
    return Run(CommandLine(count, values));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zrmodule: error: %s\n", error.what());
    return static_cast<int>(ExitCode::Unreadable);
  }
}
