// What the two processes of zrmodule probe share. The parent starts the tool again as its child. The child loads the
// module and goes through its life stage by stage. It reports the beginning and the end of each stage to the parent
// through a pipe, one line each. So the parent knows at which stage the child crashed, and kills it when it hangs.
//
//     begin STAGE CLASS                            the fields of a line are separated by tabs
//     end RESULT MILLISECONDS BYTES DETAIL         BYTES is empty if it isn't known

#ifndef ZRMODULE_PROBE_H
#define ZRMODULE_PROBE_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The command by which the parent starts the child, with the module, the class (empty for every class of the
/// module), the folder of the manifest, and two numbers for ConnectChild. It is not for users.
inline constexpr const char* kChildCommand = "probe-child";
inline constexpr std::size_t kChildArguments = 6;

/// More bytes without the end of a line are not a report of the child, but what a module wrote into its pipe.
inline constexpr std::size_t kLongestLine = std::size_t{1024} * 1024;

/// The child's part. Returns the exit status, which is 0 if the child came to the end.
[[nodiscard]] int RunProbeChild(const std::vector<std::string>& arguments);

/// CChild is a running child, which ends with this process at the latest. Its standard output goes to this process's
/// standard error, so that what a module prints doesn't mix with the result. Its standard input is empty.
class CChild {
 public:
  enum class Event : uint8_t { Line, End, Timeout };

  /// Starts this program again with the arguments and the numbers for ConnectChild. Throws std::system_error.
  explicit CChild(std::vector<std::string> arguments);
  CChild(const CChild&) = delete;
  CChild& operator=(const CChild&) = delete;
  ~CChild();

  /// Waits for a line of the report, at most so many seconds. End means that no line follows.
  [[nodiscard]] Event ReadLine(double seconds, std::string& line);

  /// Waits at most so many seconds for the end of the process, and kills it. Processes that it started are killed too,
  /// unless they left its process group. Returns whether it had ended before. `reason` is empty for exit status 0,
  /// otherwise such as "signal 11 (Segmentation fault)".
  bool Stop(double seconds, std::string& reason);

 private:
  struct State;
  State* state_;
};

/// Makes sure that this child ends with its parent. Returns the pipe for WriteReport.
[[nodiscard]] std::intptr_t ConnectChild(const std::string& pipe, const std::string& parent);

/// Writes a line for the parent.
void WriteReport(std::intptr_t pipe, const std::string& line);

/// The module, loaded as the library loads it. Null with a reason if that fails.
[[nodiscard]] void* LoadModule(const std::filesystem::path& file, std::string& reason);
[[nodiscard]] void* FindSymbol(void* module, const char* name);
/// Unloads the module. Returns whether it is no longer in memory.
[[nodiscard]] bool UnloadModule(void* module, const std::filesystem::path& file);

/// How many threads of this process run code; 0 if that isn't known. A thread that was joined doesn't count, even if
/// the system still lists it.
[[nodiscard]] uint32_t CountThreads();
/// How many bytes of the heap are in use.
[[nodiscard]] std::optional<int64_t> BytesInUse();

#endif
