// The child process and the loader on Windows.

#include <windows.h>
// after windows.h
#include <malloc.h>
#include <tlhelp32.h>

#include <chrono>
#include <system_error>
#include <thread>

#include "zrmodule/probe.h"

struct CChild::State {
  HANDLE process;
  HANDLE pipe;
  std::string read;
};

[[noreturn]] static void Fail(const char* what) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

// Quotes an argument by the rules of CommandLineToArgvW.
static std::wstring QuotedArgument(const std::string& utf8) {
  const std::wstring argument = std::filesystem::path(std::u8string(utf8.begin(), utf8.end())).wstring();
  std::wstring quoted = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t c : argument) {
    if (c == L'"') quoted.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    quoted += c;
  }
  return quoted.append(backslashes, L'\\') + L"\"";
}

CChild::CChild(std::vector<std::string> arguments) : state_(nullptr) {
  SECURITY_ATTRIBUTES inherited = {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE readEnd = nullptr, writeEnd = nullptr;
  if (CreatePipe(&readEnd, &writeEnd, &inherited, 0) == 0) Fail("can't make a pipe");
  SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
  arguments.insert(arguments.begin(), "zrmodule");
  arguments.insert(arguments.end(), {"--report", std::to_string(reinterpret_cast<std::intptr_t>(writeEnd))});
  std::wstring command;
  for (const std::string& argument : arguments) command += QuotedArgument(argument) + L" ";
  std::wstring program(32768, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
  STARTUPINFOW start = {};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  start.hStdOutput = start.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION process = {};
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);   // the child inherits it: a crash shows no window
  const BOOL isStarted = CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                        &start, &process);
  CloseHandle(writeEnd);
  if (isStarted == 0) {
    CloseHandle(readEnd);
    Fail("can't start the child process");
  }
  CloseHandle(process.hThread);
  state_ = new State{process.hProcess, readEnd, {}};
}

CChild::~CChild() {
  (void)Stop(true);
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
    DWORD available = 0;   // a pipe can't be waited for
    if (PeekNamedPipe(state_->pipe, nullptr, 0, nullptr, &available, nullptr) == 0) return Event::End;
    if (available == 0) {
      if (std::chrono::steady_clock::now() >= end) return Event::Timeout;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      continue;
    }
    char bytes[4096];
    DWORD count = 0;
    if (ReadFile(state_->pipe, bytes, sizeof bytes, &count, nullptr) == 0) return Event::End;
    state_->read.append(bytes, count);
  }
}

std::string CChild::Stop(bool isHung) {
  if (state_->process == nullptr) return {};
  if (isHung) TerminateProcess(state_->process, 1);
  WaitForSingleObject(state_->process, INFINITE);
  DWORD status = 0;
  GetExitCodeProcess(state_->process, &status);
  CloseHandle(state_->process);
  state_->process = nullptr;
  if (status == 0) return {};
  char text[32];
  (void)snprintf(text, sizeof text, status >= 0x80000000 ? "exception 0x%08lX" : "exit status %lu", status);
  return text;
}

void WriteReport(std::intptr_t report, const std::string& line) {
  const std::string text = line + "\n";
  DWORD written = 0;
  WriteFile(reinterpret_cast<HANDLE>(report), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void* LoadModule(const std::filesystem::path& file, std::string& reason) {
  const HMODULE module = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (module == nullptr) reason = std::system_category().message(static_cast<int>(GetLastError()));
  return module;
}

void* FindSymbol(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

bool UnloadModule(void* module, const std::filesystem::path& file) {
  FreeLibrary(static_cast<HMODULE>(module));
  return GetModuleHandleW(file.c_str()) == nullptr;
}

uint32_t CountThreads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return 0;
  uint32_t count = 0;
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL isValid = Thread32First(snapshot, &entry); isValid != 0; isValid = Thread32Next(snapshot, &entry)) {
    count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
  }
  CloseHandle(snapshot);
  return count;
}

int64_t BytesInUse() {
  int64_t bytes = 0;
  _HEAPINFO entry = {};
  while (_heapwalk(&entry) == _HEAPOK) bytes += entry._useflag == _USEDENTRY ? static_cast<int64_t>(entry._size) : 0;
  return bytes;
}
