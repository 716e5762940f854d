// The child process and the loader on POSIX systems.

#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <system_error>

#include "zrmodule/probe.h"

extern char** environ;

struct CChild::State {
  pid_t process = -1;
  int pipe = -1;
  std::string read;
};

static void Check(int error, const char* what) {
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

CChild::CChild(std::vector<std::string> arguments) : state_(nullptr) {
  int ends[2];
  Check(pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno, "can't make a pipe");
  const int report = fcntl(ends[1], F_DUPFD, 3);   // without close-on-exec
  close(ends[1]);
  arguments.insert(arguments.begin(), "zrmodule");
  arguments.insert(arguments.end(), {"--report", std::to_string(report)});
  std::vector<char*> values;
  for (std::string& argument : arguments) values.push_back(argument.data());
  values.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
  pid_t process = -1;
  const int error = posix_spawn(&process, "/proc/self/exe", &actions, nullptr, values.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(report);
  if (error != 0) close(ends[0]);
  Check(error, "can't start the child process");
  state_ = new State{process, ends[0], {}};
}

CChild::~CChild() {
  (void)Stop(true);
  close(state_->pipe);
  delete state_;
}

CChild::Event CChild::ReadLine(double seconds, std::string& line) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (true) {
    const std::size_t newline = state_->read.find('\n');
    if (newline != std::string::npos) {
      line = state_->read.substr(0, newline);
      state_->read.erase(0, newline + 1);
      return Event::Line;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    pollfd wait = {state_->pipe, POLLIN, 0};
    const int ready = left.count() > 0 ? poll(&wait, 1, static_cast<int>(left.count())) : 0;
    if (ready == 0) return Event::Timeout;
    char bytes[4096];
    const ssize_t count = ready > 0 ? read(state_->pipe, bytes, sizeof bytes) : -1;
    if (count == 0) return Event::End;
    if (count > 0) state_->read.append(bytes, static_cast<std::size_t>(count));
    else if (errno != EINTR) return Event::End;
  }
}

std::string CChild::Stop(bool isHung) {
  if (state_->process < 0) return {};
  if (isHung) kill(state_->process, SIGKILL);
  int status = 0;
  while (waitpid(state_->process, &status, 0) < 0 && errno == EINTR) {
  }
  state_->process = -1;
  if (WIFSIGNALED(status)) {
    return "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
  }
  return WEXITSTATUS(status) == 0 ? "" : "exit status " + std::to_string(WEXITSTATUS(status));
}

void WriteReport(std::intptr_t report, const std::string& line) {
  const std::string text = line + "\n";
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t count = write(static_cast<int>(report), text.data() + written, text.size() - written);
    if (count < 0 && errno != EINTR) return;   // the parent has gone
    if (count > 0) written += static_cast<std::size_t>(count);
  }
}

void* LoadModule(const std::filesystem::path& file, std::string& reason) {
  void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  const char* const error = module == nullptr ? dlerror() : nullptr;
  if (error != nullptr) reason = error;
  return module;
}

void* FindSymbol(void* module, const char* name) { return dlsym(module, name); }

bool UnloadModule(void* module, const std::filesystem::path& file) {
  (void)dlclose(module);
  std::error_code error;
  const std::string path = std::filesystem::canonical(file, error).string();
  std::ifstream mappings("/proc/self/maps");
  for (std::string line; std::getline(mappings, line);) {
    if (line.size() > path.size() && line.compare(line.size() - path.size(), path.size(), path) == 0) return false;
  }
  return true;
}

uint32_t CountThreads() {
  std::error_code error;
  uint32_t count = 0;
  for (std::filesystem::directory_iterator entry("/proc/self/task", error), end; !error && entry != end;
       entry.increment(error)) {
    ++count;
  }
  return count;
}

int64_t BytesInUse() { return static_cast<int64_t>(mallinfo2().uordblks); }
