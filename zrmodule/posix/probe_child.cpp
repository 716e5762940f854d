// The child process and the loader on POSIX systems.

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <malloc.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <thread>

#include "zrmodule/probe.h"

struct CChild::State {
  pid_t process = -1;
  int pipe = -1;
  std::string read;
};

using Clock = std::chrono::steady_clock;
static constexpr std::chrono::milliseconds kPause(10);  // between two looks at a process or thread that will end soon

static Clock::time_point In(double seconds) {
  return Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

static void Check(int error, const char* what) {
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

// The environment of the child. The heap of the C library keeps freed blocks per thread and counts them as used;
// without these caches, BytesInUse is exact.
static std::vector<std::string> ChildEnvironment() {
  static constexpr const char* kTunables = "GLIBC_TUNABLES=";
  std::vector<std::string> rows;
  std::string tunables = std::string(kTunables) + "glibc.malloc.tcache_count=0";
  for (char** row = environ; *row != nullptr; ++row) {
    if (std::strncmp(*row, kTunables, std::strlen(kTunables)) != 0)
      rows.emplace_back(*row);
    else
      tunables += std::string(":") + (*row + std::strlen(kTunables));
  }
  rows.push_back(tunables);
  return rows;
}

static std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

CChild::CChild(std::vector<std::string> arguments) : state_(nullptr) {
  int ends[2];
  Check(pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno, "can't make a pipe");
  const int report = fcntl(ends[1], F_DUPFD, 3);  // without close-on-exec
  close(ends[1]);
  arguments.insert(arguments.begin(), "zrmodule");
  arguments.insert(arguments.end(), {std::to_string(report), std::to_string(getpid())});
  std::vector<std::string> environment = ChildEnvironment();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETPGROUP);  // a group of its own, with all processes that it starts
  posix_spawnattr_setpgroup(&attributes, 0);
  pid_t process = -1;
  const int error = posix_spawn(&process, "/proc/self/exe", &actions, &attributes, Pointers(arguments).data(),
                                Pointers(environment).data());
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(report);
  if (error != 0) close(ends[0]);
  Check(error, "can't start the child process");
  state_ = new State{process, ends[0], {}};
}

CChild::~CChild() {
  std::string ignored;
  (void)Stop(0, ignored);
  close(state_->pipe);
  delete state_;
}

// Whether a process has ended. It remains to be waited for.
static bool HasEnded(pid_t process) {
  siginfo_t info = {};
  return waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == process;
}

CChild::Event CChild::ReadLine(double seconds, std::string& line) {
  const Clock::time_point end = In(seconds);
  while (true) {
    const std::size_t newline = state_->read.find('\n');
    if (newline != std::string::npos) {
      line = state_->read.substr(0, newline);
      state_->read.erase(0, newline + 1);
      return Event::Line;
    }
    // A process that the module started may keep the pipe open, so the end of the child is looked for, too.
    const bool hasEnded = HasEnded(state_->process);
    pollfd wait = {state_->pipe, POLLIN, 0};
    const int ready = poll(&wait, 1, hasEnded ? 0 : static_cast<int>(kPause.count()));
    if (ready <= 0) {
      if (hasEnded) return Event::End;
      if (Clock::now() >= end) return Event::Timeout;
      continue;
    }
    char bytes[4096];
    const ssize_t count = read(state_->pipe, bytes, sizeof bytes);
    if (count > 0) {
      state_->read.append(bytes, static_cast<std::size_t>(count));
      const bool isLine = state_->read.find('\n') != std::string::npos;
      if (!isLine && (state_->read.size() > kLongestLine || Clock::now() >= end))
        return Event::Timeout;  // not a report
    } else if (count == 0 || errno != EINTR)
      return Event::End;
  }
}

bool CChild::Stop(double seconds, std::string& reason) {
  if (state_->process < 0) return true;
  const Clock::time_point end = In(seconds);
  while (!HasEnded(state_->process) && Clock::now() < end) std::this_thread::sleep_for(kPause);
  const bool hasEnded = HasEnded(state_->process);
  kill(-state_->process, SIGKILL);
  int status = 0;
  while (waitpid(state_->process, &status, 0) < 0 && errno == EINTR) {
  }
  state_->process = -1;
  if (WIFSIGNALED(status)) {
    reason = "signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) + ")";
  } else {
    reason = WEXITSTATUS(status) == 0 ? "" : "exit status " + std::to_string(WEXITSTATUS(status));
  }
  return hasEnded;
}

std::intptr_t ConnectChild(const std::string& pipe, const std::string& parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (std::to_string(getppid()) != parent) std::_Exit(1);  // it ended before
  const int report = std::atoi(pipe.c_str());
  fcntl(report, F_SETFD, FD_CLOEXEC);
  return report;
}

void WriteReport(std::intptr_t pipe, const std::string& line) {
  const std::string text = line + "\n";
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t count = write(static_cast<int>(pipe), text.data() + written, text.size() - written);
    if (count < 0 && errno != EINTR) return;  // the module closed the pipe
    if (count > 0) written += static_cast<std::size_t>(count);
  }
}

void* LoadModule(const std::filesystem::path& file, std::string& reason) {
  void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  const char* const error = module == nullptr ? dlerror() : nullptr;
  if (error != nullptr) reason = error;
  return module;
}

void* FindSymbol(void* module, const char* name) {
  void* const function = dlsym(module, name);
  link_map *own = nullptr, *found = nullptr;  // dlsym also searches the libraries that the module needs
  Dl_info ignored;
  const bool isOwn = function != nullptr && dlinfo(module, RTLD_DI_LINKMAP, static_cast<void*>(&own)) == 0 &&
                     dladdr1(function, &ignored, reinterpret_cast<void**>(&found), RTLD_DL_LINKMAP) != 0 &&
                     found == own;
  return isOwn ? function : nullptr;
}

bool UnloadModule(void* module, const std::filesystem::path& file) {
  (void)dlclose(module);
  return dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD) == nullptr;
}

static constexpr uint32_t kIsExiting = 4;  // PF_EXITING of the kernel

uint32_t CountThreads() {
  std::error_code error;
  uint32_t count = 0;
  for (std::filesystem::directory_iterator entry("/proc/self/task", error), end; !error && entry != end;
       entry.increment(error)) {
    // After the name in parentheses: the state, five numbers, and flags, one of which marks a thread that ends.
    std::ifstream stream(entry->path() / "stat");
    std::string line, skipped;
    std::getline(stream, line);
    std::istringstream fields(line.substr(line.find_last_of(')') + 1));  // all of it if there is no parenthesis
    uint32_t flags = 0;
    for (int field = 0; field < 6; ++field) fields >> skipped;
    if (fields >> flags && (flags & kIsExiting) == 0) ++count;
  }
  return count;
}

std::optional<int64_t> BytesInUse() {
#if defined(__GLIBC__)
  const struct mallinfo2 heap = mallinfo2();
  if (heap.arena != 0) return static_cast<int64_t>(heap.uordblks + heap.hblkhd);
#endif
  return std::nullopt;  // another heap, such as that of a sanitizer
}
