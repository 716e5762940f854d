#include "figure.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <map>

#include "row.h"

static std::map<std::string, std::function<double()>> g_figures;

void FigureRow(const std::string& operation, const std::string& library, const char* unit,
               std::function<double()> measure) {
  const std::string name = operation + "/" + library;
  g_figures[name] = std::move(measure);
  RegisterRow(operation, library,
              [name, unit](benchmark::State& state) {
                const double figure = NumbersPrintedBy("/proc/self/exe", "--figure=" + name).at(0);
                for (auto _ : state) {
                }
                state.counters[unit] = figure;
              })
      ->Iterations(1)
      ->Repetitions(1);  // the result is the same each time
}

bool PrintFigure(const std::string& name) {
  const auto found = g_figures.find(name);
  if (found == g_figures.end()) return false;
  std::printf("%.17g\n", found->second());
  return true;
}

std::vector<double> NumbersPrintedBy(const std::string& program, const std::string& argument) {
  int ends[2];
  Require(pipe(ends) == 0, "a pipe is made");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  posix_spawn_file_actions_addclose(&actions, ends[1]);
  std::string first = program, second = argument;
  char* arguments[] = {first.data(), second.data(), nullptr};
  pid_t child = 0;
  const int result = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  Require(result == 0, "a process is started");

  std::vector<double> numbers;
  std::FILE* output = fdopen(ends[0], "r");
  for (double number; std::fscanf(output, "%lf", &number) == 1;) numbers.push_back(number);
  std::fclose(output);
  int status = 0;
  Require(waitpid(child, &status, 0) == child && status == 0 && !numbers.empty(),
          ("the process measures a figure: " + program + " " + argument).c_str());
  return numbers;
}
