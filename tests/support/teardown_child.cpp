// Ends with the library in the state that the argument names. The library is loaded by hand, so that it can
// be unloaded.

#include <atomic>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iostream>
#include <thread>

#include "tests/support/literal.h"
#include "tests/support/system.h"
#include "zrcore/zrcore.h"

static void* g_library = OpenLibrary(ZRCORE_LIBRARY);

template <class Function>
static Function* Find(Function*, const char* name) {
  return reinterpret_cast<Function*>(FindInLibrary(g_library, name));
}
#define FIND(name) Find(static_cast<decltype(&name)>(nullptr), #name)

static const char* g_state;
static std::atomic<bool> g_isAsked{false};

static bool Is(const char* state) { return std::strcmp(g_state, state) == 0; }

struct Discovery final : IZrComponentDiscovery {
  uint32_t AddRef() override { return 0; }
  uint32_t Release() override { return 0; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }
  ZRRESULT QueryComponent(const ZRUUID*, ZRSTR* modulePath, ZrModuleEntryPoints*) override {
    g_isAsked = true;
    while (Is("left-behind")) std::this_thread::sleep_for(std::chrono::hours(1));
    *modulePath = FIND(ZrCreateString)(W(TEST_DIRECTORY "/good" MODULE_SUFFIX));
    return ZR_R_OK;
  }
  ZRRESULT QueryConfiguration(const ZRUUID*, ZRSTR, IZrConfiguration**) override { return ZR_R_FAILED; }
  ZRRESULT QueryClassId(ZRSTR, ZRUUID*) override { return ZR_R_FAILED; }
  ZRRESULT QueryClassName(const ZRUUID*, ZRSTR*) override { return ZR_R_FAILED; }
};
static Discovery* const g_discovery = new Discovery;  // outlives every teardown

// Asks for all that the library allocates once and keeps, and unloads it; whether that works, and nothing stays.
static bool UseAndUnload() {
  ChooseUnicodeLocale();
  WCHAR text[] = W("TEXT \x00C9");
  bool isGood = FIND(ZrWCHARCompareNoCase)(text, W("Text \x00E9")) == 0;
  isGood = FIND(ZrErrorInfoRegister)(1, W("mine"), nullptr) == ZR_R_OK && isGood;
  ZRBLOB blob = FIND(ZrCreateBlob)(3, "abc"), copy = FIND(ZrCopyBlob)(blob);
  isGood = FIND(ZrAppendBlob)(copy, blob) == ZR_R_OK && isGood;
  FIND(ZrDestroyBlob)(copy);
  FIND(ZrDestroyBlob)(blob);
  CloseLibrary(g_library);
  return isGood && !IsLibraryLoaded(ZRCORE_LIBRARY);
}

static bool Create() {
  static const ZRUUID classId = {1, 2, 3, {4}};
  void* object = nullptr;
  return FIND(ZrCreateInstance)(&classId, 0, &classId, 0, &object) == ZR_R_OK && object != nullptr;
}

int main(int, char** arguments) {
  g_state = arguments[1];
  if (!UseAndUnload()) return 1;
  g_library = OpenLibrary(ZRCORE_LIBRARY);
  if (g_library == nullptr || FIND(ZrInitialize)() != ZR_R_OK) return 1;
  uint32_t cookie = 0;
  if (FIND(ZrAddComponentDiscovery)(g_discovery, &cookie) != ZR_R_OK) return 1;
  if (Is("left-behind")) {
    std::thread(Create).detach();
    while (!g_isAsked) std::this_thread::yield();
  }
  if ((Is("object") || Is("removed")) && !Create()) return 1;
  if (Is("removed") && FIND(ZrRemoveComponentDiscovery)(cookie) != ZR_R_OK) return 1;
  if (Is("balanced") && FIND(ZrUninitialize)() != ZR_R_OK) return 1;
  if (Is("throwing-stream")) {
    std::cout.rdbuf(new std::filebuf);  // which isn't open, and takes no character
    std::cout.exceptions(std::ios::badbit | std::ios::failbit);
  }
  if (Is("unload")) {
    CloseLibrary(g_library);
    std::cout << (!IsLibraryLoaded(ZRCORE_LIBRARY) ? "|unloaded" : "|still there");
  }
  return 0;
}
