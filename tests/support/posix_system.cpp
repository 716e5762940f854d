// The tests' services of the operating system, on POSIX systems.

#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <cwctype>

#include "tests/support/system.h"

bool SetTimeZone(const char* zone) { return (zone != nullptr ? setenv("TZ", zone, 1) : unsetenv("TZ")) == 0; }

int64_t LocalClockOffset(int64_t standard) { return standard; }

void ChooseUnicodeLocale() { setenv("LC_ALL", "C.utf8", 1); }

// The leak sanitizer calls this. The C library's setlocale never frees the folders that LOCPATH names.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:argz_add_sep\n";
}

static locale_t UsersLocale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "", locale_t{});
  return locale;
}
WCHAR SystemLower(WCHAR unit) { return static_cast<WCHAR>(towlower_l(unit, UsersLocale())); }
WCHAR SystemUpper(WCHAR unit) { return static_cast<WCHAR>(towupper_l(unit, UsersLocale())); }

// The debug output of the library is the standard error stream here.
std::string DebugOutputOf(const std::function<void()>& action) {
  std::FILE* file = std::tmpfile();
  std::fflush(stderr);
  const int before = dup(STDERR_FILENO);
  dup2(fileno(file), STDERR_FILENO);
  action();
  dup2(before, STDERR_FILENO);
  close(before);
  std::rewind(file);
  std::string output;
  for (int byte; (byte = std::fgetc(file)) != EOF;) output += static_cast<char>(byte);
  std::fclose(file);
  return output;
}

void* OpenLibrary(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }
void* FindInLibrary(void* library, const char* name) { return dlsym(library, name); }
void CloseLibrary(void* library) { dlclose(library); }

char* ReserveGuardedPage() {
  void* pages = mmap(nullptr, 3 * kPageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) std::abort();
  char* const page = static_cast<char*>(pages) + kPageSize;
  if (mprotect(page, kPageSize, PROT_READ | PROT_WRITE) != 0) std::abort();
  return page;
}
void ReleaseGuardedPage(char* page) { munmap(page - kPageSize, 3 * kPageSize); }
