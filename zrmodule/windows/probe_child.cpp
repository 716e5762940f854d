// The child process and the loader on Windows.

#include <windows.h>
// after windows.h
#include <malloc.h>
#include <tlhelp32.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <thread>

#include "zrmodule/probe.h"
#include "zrmodule/text.h"

struct CChild::State {
  HANDLE process;
  HANDLE job;  // of the child and all processes that it starts; they end when this handle is closed
  HANDLE pipe;
  std::string read;
};

[[noreturn]] static void Fail(const char* what) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

// Quotes an argument by the rules of CommandLineToArgvW.
static std::wstring QuotedArgument(const std::string& utf8) {
  const std::wstring argument = PathOf(utf8).wstring();
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'"') quoted.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, L'\\') + L"\"";
}

static HANDLE MakeJob() {
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
  return job;
}

CChild::CChild(std::vector<std::string> arguments) : state_(nullptr) {
  SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE readEnd = nullptr, writeEnd = nullptr;
  if (CreatePipe(&readEnd, &writeEnd, &inherited, 0) == 0) Fail("can't make a pipe");
  SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
  arguments.insert(arguments.begin(), "zrmodule");
  arguments.insert(arguments.end(),
                   {std::to_string(reinterpret_cast<std::intptr_t>(writeEnd)), std::to_string(GetCurrentProcessId())});
  std::wstring command;
  for (const std::string& argument : arguments) command += QuotedArgument(argument) + L" ";
  std::wstring program(32768, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
  const HANDLE nothing = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ, &inherited, OPEN_EXISTING, 0, nullptr);
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = nothing;
  start.hStdOutput = start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION process = {};
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);  // the child inherits it: a crash shows no window
  const BOOL isStarted = CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                                        nullptr, nullptr, &start, &process);
  const DWORD error = GetLastError();
  CloseHandle(nothing);
  CloseHandle(writeEnd);
  if (isStarted == 0) {
    CloseHandle(readEnd);
    SetLastError(error);
    Fail("can't start the child process");
  }
  const HANDLE job = MakeJob();
  AssignProcessToJobObject(job, process.hProcess);
  ResumeThread(process.hThread);
  CloseHandle(process.hThread);
  state_ = new State{process.hProcess, job, readEnd, {}};
}

CChild::~CChild() {
  std::string ignored;
  (void)Stop(0, ignored);
  CloseHandle(state_->pipe);
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
    DWORD available = 0;  // a pipe can't be waited for
    const bool hasEnded = WaitForSingleObject(state_->process, 0) == WAIT_OBJECT_0;
    if (PeekNamedPipe(state_->pipe, nullptr, 0, nullptr, &available, nullptr) == 0) return Event::End;
    if (available == 0) {
      if (hasEnded) return Event::End;  // a process that the module started may keep the pipe open
      if (std::chrono::steady_clock::now() >= end) return Event::Timeout;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      continue;
    }
    char bytes[4096];
    DWORD count = 0;
    if (ReadFile(state_->pipe, bytes, sizeof bytes, &count, nullptr) == 0) return Event::End;
    state_->read.append(bytes, count);
    const bool isLine = state_->read.find('\n') != std::string::npos;
    const bool isLate = std::chrono::steady_clock::now() >= end;
    if (!isLine && (state_->read.size() > kLongestLine || isLate)) return Event::Timeout;  // not a report
  }
}

bool CChild::Stop(double seconds, std::string& reason) {
  if (state_->process == nullptr) return true;
  const bool hasEnded = WaitForSingleObject(state_->process, static_cast<DWORD>(seconds * 1000)) == WAIT_OBJECT_0;
  if (!hasEnded) TerminateProcess(state_->process, 1);
  WaitForSingleObject(state_->process, INFINITE);
  DWORD status = 0;
  GetExitCodeProcess(state_->process, &status);
  CloseHandle(state_->process);
  CloseHandle(state_->job);
  state_->process = nullptr;
  char text[32] = "";
  if (status != 0)
    (void)snprintf(text, sizeof text, status >= 0x80000000 ? "exception 0x%08lX" : "exit status %lu", status);
  reason = text;
  return hasEnded;
}

std::intptr_t ConnectChild(const std::string& pipe, const std::string&) {  // the job ends it with its parent
  return static_cast<std::intptr_t>(std::strtoll(pipe.c_str(), nullptr, 10));
}

void WriteReport(std::intptr_t pipe, const std::string& line) {
  const std::string text = line + "\n";
  DWORD written = 0;
  WriteFile(reinterpret_cast<HANDLE>(pipe), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void* LoadModule(const std::filesystem::path& file, std::string& reason) {
  const HMODULE module = LoadLibraryW(file.c_str());  // doesn't search the module's folder for its DLLs, as for a host
  if (module == nullptr) reason = std::system_category().message(static_cast<int>(GetLastError()));
  return module;
}

void* FindSymbol(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

bool UnloadModule(void* module, const std::filesystem::path& file) {
  FreeLibrary(static_cast<HMODULE>(module));
  return GetModuleHandleW(std::filesystem::path(file).make_preferred().c_str()) == nullptr;
}

uint32_t CountThreads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return 0;
  uint32_t count = 0;
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL isValid = Thread32First(snapshot, &entry); isValid != 0; isValid = Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID != GetCurrentProcessId()) continue;
    const HANDLE thread = OpenThread(SYNCHRONIZE, FALSE, entry.th32ThreadID);
    if (thread != nullptr && WaitForSingleObject(thread, 0) != WAIT_OBJECT_0) ++count;
    if (thread != nullptr) CloseHandle(thread);
  }
  CloseHandle(snapshot);
  return count;
}

std::optional<int64_t> BytesInUse() {
  int64_t bytes = 0;
  _HEAPINFO entry = {};
  int status = _heapwalk(&entry);
  for (; status == _HEAPOK; status = _heapwalk(&entry)) {
    if (entry._useflag == _USEDENTRY) bytes += static_cast<int64_t>(entry._size);
  }
  return status == _HEAPEND ? std::optional(bytes) : std::nullopt;
}
