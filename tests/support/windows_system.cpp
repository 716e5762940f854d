#include <windows.h>

#include <cstdlib>
#include <ctime>
#include <string_view>

#include "tests/support/system.h"

// Of rules the runtime knows offsets, and for summers that of the United States, which therefore isn't told.
bool SetTimeZone(const char* zone) {
  std::string rule = zone != nullptr ? zone : "";
  static constexpr std::string_view kUnitedStates = ",M3.2.0/2,M11.1.0/2";
  if (const std::size_t at = rule.find(kUnitedStates); at != std::string::npos) rule.resize(at);
  if (rule.find_first_of(",/") != std::string::npos) return false;
  (void)_putenv_s("TZ", rule.c_str());  // an empty one takes the variable away
  _tzset();
  _dstbias = -3600;  // which a runtime may lose in a zone without summers, and not find again
  return true;
}

// The clock is the system's, which knows nothing of the runtime's zone.
int64_t LocalClockOffset(int64_t) {
  TIME_ZONE_INFORMATION zone;
  const DWORD season = GetTimeZoneInformation(&zone);
  const LONG bias = season == TIME_ZONE_ID_DAYLIGHT ? zone.DaylightBias : zone.StandardBias;
  return int64_t{-60} * (zone.Bias + (season == TIME_ZONE_ID_UNKNOWN ? 0 : bias));
}

void ChooseUnicodeLocale() {}  // every user's is one

// One character at a time, as LCMapStringW has it without the rules of a language.
static WCHAR Mapped(DWORD direction, WCHAR unit) {
  WCHAR mapped = 0;
  return LCMapStringW(LOCALE_USER_DEFAULT, direction, &unit, 1, &mapped, 1) == 1 ? mapped : unit;
}
WCHAR SystemLower(WCHAR unit) { return Mapped(LCMAP_LOWERCASE, unit); }
WCHAR SystemUpper(WCHAR unit) { return Mapped(LCMAP_UPPERCASE, unit); }

// A debugger is told by an exception with the text's length and its address, in the end in the system's code page. A
// handler that comes first is as good as one.
static thread_local std::string* g_debugOutput = nullptr;

static LONG CALLBACK TakeDebugOutput(EXCEPTION_POINTERS* pointers) {
  constexpr DWORD kPrint = 0x40010006;
  const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
  if (g_debugOutput == nullptr || record.ExceptionCode != kPrint) return EXCEPTION_CONTINUE_SEARCH;
  *g_debugOutput += reinterpret_cast<const char*>(record.ExceptionInformation[1]);
  return EXCEPTION_CONTINUE_EXECUTION;
}

std::string DebugOutputOf(const std::function<void()>& action) {
  std::string output;
  void* handler = AddVectoredExceptionHandler(1, TakeDebugOutput);
  g_debugOutput = &output;
  action();
  g_debugOutput = nullptr;
  RemoveVectoredExceptionHandler(handler);
  return output;
}

void* OpenLibrary(const char* path) { return LoadLibraryA(path); }
void* FindInLibrary(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
void CloseLibrary(void* library) { FreeLibrary(static_cast<HMODULE>(library)); }

char* ReserveGuardedPage() {
  void* pages = VirtualAlloc(nullptr, 2 * kPageSize, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  DWORD before;
  if (pages == nullptr) std::abort();
  if (!VirtualProtect(static_cast<char*>(pages) + kPageSize, kPageSize, PAGE_NOACCESS, &before)) std::abort();
  return static_cast<char*>(pages);
}
void ReleaseGuardedPage(char* page) { VirtualFree(page, 0, MEM_RELEASE); }
