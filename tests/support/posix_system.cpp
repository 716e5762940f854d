#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <cwctype>
#include <filesystem>

#include "tests/support/system.h"

void SetEnvironment(const char* name, const char* value) {
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
}

bool SetTimeZone(const char* zone) {
  const std::string name = zone != nullptr ? zone : "";
  const bool isName = name.find('/') < name.find(',');
  if (isName && !std::filesystem::exists("/usr/share/zoneinfo/" + name)) return false;
  SetEnvironment("TZ", zone);
  tzset();
  return true;
}

int64_t LocalClockOffset(int64_t standard) { return standard; }

void ChooseUnicodeLocale() { SetEnvironment("LC_ALL", "C.utf8"); }

bool ChooseMissingLocale() {
  SetEnvironment("LC_ALL", "nobody_HAS.this");
  return true;
}

static locale_t UsersLocale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "", locale_t{});
  return locale;
}
WCHAR SystemLower(WCHAR unit) { return static_cast<WCHAR>(towlower_l(unit, UsersLocale())); }
WCHAR SystemUpper(WCHAR unit) { return static_cast<WCHAR>(towupper_l(unit, UsersLocale())); }

// The channel is the standard error stream.
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
bool IsLibraryLoaded(const char* path) {
  void* library = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (library != nullptr) dlclose(library);
  return library != nullptr;
}

const Unloadable kUnloadable[] = {{"nowhere", "cannot open shared object file: No such file or directory"},
                                  {"no_module", "file too short"},
                                  {"unresolved", "undefined symbol: NobodyDefinesThis"}};

char* ReserveGuardedPage() {
  void* pages = mmap(nullptr, 2 * kPageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) std::abort();
  if (mprotect(static_cast<char*>(pages) + kPageSize, kPageSize, PROT_NONE) != 0) std::abort();
  return static_cast<char*>(pages);
}
void ReleaseGuardedPage(char* page) { munmap(page, 2 * kPageSize); }

ProgramOutput OutputOfProgram(const std::string& path, const std::string& argument) {
  std::FILE* child = popen(("timeout 20 " + path + " " + argument).c_str(), "r");
  ProgramOutput output;
  for (int byte; (byte = std::fgetc(child)) != EOF;) output.text += static_cast<char>(byte);
  output.isGood = pclose(child) == 0;
  return output;
}
