// Ends with the library in the state that the argument names. The library is loaded by hand, so that it can
// be unloaded.

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <streambuf>
#include <thread>

#include "tests/support/gate.h"
#include "tests/support/literal.h"
#include "tests/support/system.h"
#include "zrcore/zrcore.h"

// Destroyed after the library's own objects, since it was constructed before them.
struct LateRelease {
  ZRREF* ref = nullptr;
  void (*destroy)(ZRREF*) = nullptr;
  ~LateRelease() {
    if (destroy != nullptr) destroy(ref);
  }
};
static LateRelease g_late;

static void* g_library = OpenLibrary(ZRCORE_LIBRARY);

template <class Function>
static Function* Find(Function*, const char* name) {
  return reinterpret_cast<Function*>(FindInLibrary(g_library, name));
}
#define FIND(name) Find(static_cast<decltype(&name)>(nullptr), #name)

struct Discovery final : IZrComponentDiscovery {
  uint32_t AddRef() override { return 0; }
  uint32_t Release() override { return 0; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }
  ZRRESULT QueryComponent(const ZRUUID*, ZRSTR* modulePath, ZrModuleEntryPoints*) override {
    if (asked != nullptr) {
      asked->Arrive();
      for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }
    *modulePath = FIND(ZrCreateString)(W(TEST_DIRECTORY "/good" MODULE_SUFFIX));
    return ZR_R_OK;
  }
  ZRRESULT QueryConfiguration(const ZRUUID*, ZRSTR, IZrConfiguration**) override { return ZR_R_FAILED; }
  ZRRESULT QueryClassId(ZRSTR, ZRUUID*) override { return ZR_R_FAILED; }
  ZRRESULT QueryClassName(const ZRUUID*, ZRSTR*) override { return ZR_R_FAILED; }

  CGate* asked = nullptr;  // told when it is asked, which then never comes back
};

// Asks for all that the library allocates once and keeps; whether each answer is right, and the library is gone after.
static bool UseAndUnload() {
  WCHAR text[] = W("TEXT \x00C9"), numbers[] = W("1.2.3.4.5.6");
  bool isGood = FIND(ZrWCHARToLower)(text) == ZR_R_OK && FIND(ZrWCHARCompareNoCase)(text, W("Text \x00E9")) == 0;
  ZRSTR string = FIND(ZrCreateString)(numbers), written = nullptr;
  ZRSREF* sref = nullptr;
  isGood = isGood && FIND(ZrStringToSREF)(string, &sref) == ZR_R_OK && FIND(ZrSREFToString)(sref, &written) == ZR_R_OK;
  isGood = isGood && FIND(ZrWCHARCompareNoCase)(written, numbers) == 0;
  FIND(ZrDestroySREF)(sref);
  FIND(ZrDestroyString)(string);
  FIND(ZrDestroyString)(written);
  isGood = isGood && FIND(ZrErrorInfoRegister)(1, W("mine"), nullptr) == ZR_R_OK;
  isGood = isGood && FIND(ZrErrorInfoGetText)(0x80000000, &string) == ZR_R_OK;
  FIND(ZrDestroyString)(string);
  ZRBLOB blob = FIND(ZrCreateBlob)(3, "abc"), copy = FIND(ZrCopyBlob)(blob);
  isGood = isGood && FIND(ZrAppendBlob)(copy, blob) == ZR_R_OK && FIND(ZrDestroyBlob)(copy) == ZR_R_OK &&
           FIND(ZrDestroyBlob)(blob) == ZR_R_OK;
  CloseLibrary(g_library);
  return isGood && !IsLibraryLoaded(ZRCORE_LIBRARY);
}

struct FullBuffer : std::streambuf {};  // takes no character

static Discovery* const g_discovery = new Discovery;  // outlive every teardown
static FullBuffer* const g_fullBuffer = new FullBuffer;

int main(int, char** arguments) {
  const auto is = [&](const char* state) { return std::strcmp(arguments[1], state) == 0; };
  for (int round = 0; is("used") && round < 3; ++round) {
    ChooseUnicodeLocale();
    if (!UseAndUnload()) return 1;
    g_library = OpenLibrary(ZRCORE_LIBRARY);
  }
  if (g_library == nullptr || FIND(ZrInitialize)() != ZR_R_OK) return 1;
  if (is("initialized") || is("used")) return 0;
  if (is("late-reference")) {
    g_late.ref = FIND(ZrCreateREF)();
    g_late.destroy = FIND(ZrDestroyREF);
    return 0;
  }
  uint32_t cookie = 0;
  if (FIND(ZrAddComponentDiscovery)(g_discovery, &cookie) != ZR_R_OK) return 1;
  static const ZRUUID classId = {1, 2, 3, {4}};
  static void* object = nullptr;
  if (is("left-behind")) {
    auto* asked = new CGate(1);
    g_discovery->asked = asked;
    std::thread([] { (void)FIND(ZrCreateInstance)(&classId, 0, &classId, 0, &object); }).detach();
    asked->Wait();
    return 0;
  }
  if (is("object") || is("removed")) {
    if (FIND(ZrCreateInstance)(&classId, 0, &classId, 0, &object) != ZR_R_OK || object == nullptr) return 1;
  }
  if (is("removed") && FIND(ZrRemoveComponentDiscovery)(cookie) != ZR_R_OK) return 1;
  if (is("balanced") && FIND(ZrUninitialize)() != ZR_R_OK) return 1;
  if (is("throwing-stream")) {
    std::cout.rdbuf(g_fullBuffer);
    std::cout.exceptions(std::ios::badbit | std::ios::failbit);
  }
  if (is("unload")) {
    CloseLibrary(g_library);
    std::cout << (!IsLibraryLoaded(ZRCORE_LIBRARY) ? "|unloaded" : "|still there");
  }
  return 0;
}
