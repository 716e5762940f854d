// A discovery object whose table and callbacks a test sets, and that counts what it is asked.

#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <vector>

#include "tests/support/text.h"

inline constexpr ZRUUID ClassId(uint32_t number) { return {number, 0x1234, 0x5678, {1, 2, 3, 4, 5, 6, 7, 8}}; }

inline Units ModulePath(const char* module) {
  return Widened(std::string(TEST_DIRECTORY "/") + module + MODULE_SUFFIX);
}

// Makes an object of the class, which nobody releases.
inline ZRRESULT CreateObject(int number) {
  const ZRUUID classId = ClassId(static_cast<uint32_t>(number));
  void* object = nullptr;
  return ZrCreateInstance(&classId, 0, &classId, 0, &object);
}

// What a module's function needs to make one.
inline ZRRESULT MakeObject(const ZRUUID*, uint64_t, const ZRUUID*, uint64_t, void** object) {
  *object = object;
  return ZR_R_OK;
}

class FakeDiscovery final : public IZrComponentDiscovery {
 public:
  struct Entry {
    uint32_t number;
    Owned path;
    ZrModuleEntryPoints points{};
    Owned name{};
  };

  explicit FakeDiscovery(std::vector<Entry> entries = {}) : entries_(std::move(entries)) {}

  std::atomic<uint32_t> references{0}, asked{0};      // asked for components, class identifiers and names
  std::function<void(const char* operation)> onCall;  // ahead of any answer; may throw
  bool isRefusing = false;                            // knows nothing, as long as it is set
  std::function<ZRRESULT(const ZRUUID& classId, ZRSTR name, IZrConfiguration** given)> configure;

  // Adds it to the library; answers the cookie.
  uint32_t Add() {
    uint32_t cookie = 0;
    EXPECT_RESULT(ZrAddComponentDiscovery(this, &cookie), ZR_R_OK);
    return cookie;
  }

  uint32_t AddRef() override { return Called("AddRef"), ++references; }
  uint32_t Release() override { return Called("Release"), --references; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ADD_FAILURE(), ZR_R_NO_INTERFACE; }
  ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints* entryPoints) override {
    EXPECT_TRUE(*modulePath == nullptr && !entryPoints->createInstance && !entryPoints->init && !entryPoints->exit);
    *modulePath = ZrCopyString(refusal_);  // the library destroys this one too
    const Entry* entry = Ask("QueryComponent", [&](const Entry& e) { return ClassId(e.number) == *classId; });
    if (entry == nullptr) return ZR_R_CANCELLED;
    ZrDestroyString(*modulePath);
    *modulePath = entry->path.string != nullptr ? ZrCopyString(entry->path) : nullptr;
    *entryPoints = entry->points;
    return ZR_R_OK;
  }
  ZRRESULT QueryConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** given) override {
    Called("QueryConfiguration");
    return configure ? configure(*classId, name, given) : ZR_R_NOT_IMPLEMENTED;
  }
  ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) override {
    const Entry* entry = Ask("QueryClassId", [&](const Entry& e) { return ContentOf(e.name) == ContentOf(className); });
    if (entry != nullptr) *classId = ClassId(entry->number);
    return entry != nullptr ? ZR_R_OK : ZR_R_CANCELLED;
  }
  ZRRESULT QueryClassName(const ZRUUID* classId, ZRSTR* className) override {
    const Entry* entry = Ask("QueryClassName", [&](const Entry& e) { return ClassId(e.number) == *classId; });
    if (entry != nullptr) *className = entry->name.string != nullptr ? ZrCopyString(entry->name) : nullptr;
    return entry != nullptr ? ZR_R_OK : ZR_R_CANCELLED;
  }

 private:
  void Called(const char* operation) {
    if (onCall) onCall(operation);
  }
  template <class Claim>
  const Entry* Ask(const char* operation, Claim claim) {
    ++asked;
    Called(operation);
    const auto found = std::find_if(entries_.begin(), entries_.end(), claim);
    return found != entries_.end() && !isRefusing ? &*found : nullptr;
  }

  const std::vector<Entry> entries_;  // strings made beforehand, so that answering allocates nothing
  Owned refusal_{Units(W("/a/path/of/a/refusal"))};
};
