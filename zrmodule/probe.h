// What the two processes of zrmodule probe share. The parent starts the tool again as its child. The child loads the module
// and goes through its life stage by stage. It reports the beginning and the end of each stage to the parent through a pipe,
// one JSON object per line. So the parent knows at which stage the child crashed, and stops it when it hangs.
//
//     {"begin": "create", "class": "Planets.Mars"}
//     {"end": "create", "result": "ok", "milliseconds": 0.12, "bytes": 96, "detail": ""}

#ifndef ZRMODULE_PROBE_H
#define ZRMODULE_PROBE_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// The command by which the parent starts the child. It is not for users, so the help doesn't list it.
inline constexpr const char* kChildCommand = "probe-child";

/// The child's part. `className` is empty for every class of the module's manifest. Returns the exit status, 0 if the
/// child came to the end.
[[nodiscard]] int RunProbeChild(const std::filesystem::path& module, const std::string& className, std::intptr_t report);

/// CChild is a running child. Its standard output goes to this process's standard error, so that what a module prints
/// doesn't mix with the result.
class CChild {
 public:
  enum class Event : uint8_t { Line, End, Timeout };

  /// Starts this program again with the arguments, and then "--report" and the number of the pipe. Throws
  /// std::system_error.
  explicit CChild(std::vector<std::string> arguments);
  CChild(const CChild&) = delete;
  CChild& operator=(const CChild&) = delete;
  ~CChild();

  /// Waits for a line of the report, at most so many seconds.
  [[nodiscard]] Event ReadLine(double seconds, std::string& line);

  /// Ends the child if it still runs. Returns why it ended: an empty text for exit status 0, otherwise such as "signal
  /// 11 (Segmentation fault)".
  std::string Stop(bool isHung);

 private:
  struct State;
  State* state_;
};

/// A line for the parent.
void WriteReport(std::intptr_t report, const std::string& line);

/// The module, loaded as the library loads it. Null with a reason if that fails.
[[nodiscard]] void* LoadModule(const std::filesystem::path& file, std::string& reason);
[[nodiscard]] void* FindSymbol(void* module, const char* name);
/// Unloads the module. Returns whether its code is no longer in memory.
[[nodiscard]] bool UnloadModule(void* module, const std::filesystem::path& file);

/// How many threads this process has; 0 if that isn't known.
[[nodiscard]] uint32_t CountThreads();
/// How many bytes of the heap are in use; 0 if that isn't known.
[[nodiscard]] int64_t BytesInUse();

#endif
