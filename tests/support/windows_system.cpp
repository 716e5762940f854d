// The tests' services of the operating system, on Windows.

#include <windows.h>

#include <cstdlib>
#include <ctime>
#include <string_view>

#include "tests/support/system.h"

// The runtime supports only the offsets of a TZ rule. It always applies the daylight saving rule of the United States,
// so that rule is removed from the text and any other one is rejected.
bool SetTimeZone(const char* zone) {
  std::string rule = zone != nullptr ? zone : "";
  static constexpr std::string_view kUnitedStates = ",M3.2.0/2,M11.1.0/2";
  if (const std::size_t at = rule.find(kUnitedStates); at != std::string::npos) rule.resize(at);
  if (rule.find_first_of(",/") != std::string::npos) return false;
  (void)_putenv_s("TZ", rule.c_str());  // an empty value removes the variable
  _tzset();
  _dstbias = -3600;  // a runtime may clear it in a zone without daylight saving and never restore it
  return true;
}

// The system's clock does not follow the zone of the C runtime.
int64_t LocalClockOffset(int64_t) {
  TIME_ZONE_INFORMATION zone;
  const DWORD season = GetTimeZoneInformation(&zone);
  const LONG bias = season == TIME_ZONE_ID_DAYLIGHT ? zone.DaylightBias : zone.StandardBias;
  return int64_t{-60} * (zone.Bias + (season == TIME_ZONE_ID_UNKNOWN ? 0 : bias));
}

void ChooseUnicodeLocale() {}  // every user's locale is one

// Maps one code unit with LCMapStringW, without the rules of a language.
static WCHAR Mapped(DWORD direction, WCHAR unit) {
  WCHAR mapped = 0;
  return LCMapStringW(LOCALE_USER_DEFAULT, direction, &unit, 1, &mapped, 1) == 1 ? mapped : unit;
}
WCHAR SystemLower(WCHAR unit) { return Mapped(LCMAP_LOWERCASE, unit); }
WCHAR SystemUpper(WCHAR unit) { return Mapped(LCMAP_UPPERCASE, unit); }

// Debug output reaches a debugger as an exception with the length and the address of a text in the system's code page.
// An exception handler that runs first receives the same text.
static thread_local std::string* g_debugOutput = nullptr;

static LONG CALLBACK CaptureDebugOutput(EXCEPTION_POINTERS* pointers) {
  constexpr DWORD kPrint = 0x40010006;
  const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
  if (g_debugOutput == nullptr || record.ExceptionCode != kPrint) return EXCEPTION_CONTINUE_SEARCH;
  *g_debugOutput += reinterpret_cast<const char*>(record.ExceptionInformation[1]);
  return EXCEPTION_CONTINUE_EXECUTION;
}

std::string DebugOutputOf(const std::function<void()>& action) {
  std::string output;
  void* handler = AddVectoredExceptionHandler(1, CaptureDebugOutput);
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
  void* pages = VirtualAlloc(nullptr, 3 * kPageSize, MEM_RESERVE | MEM_COMMIT, PAGE_NOACCESS);
  if (pages == nullptr) std::abort();
  char* const page = static_cast<char*>(pages) + kPageSize;
  DWORD before;
  if (!VirtualProtect(page, kPageSize, PAGE_READWRITE, &before)) std::abort();
  return page;
}
void ReleaseGuardedPage(char* page) { VirtualFree(page - kPageSize, 0, MEM_RELEASE); }
