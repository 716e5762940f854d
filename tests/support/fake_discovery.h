// A discovery object that reports the classes of a table. A test sets the table and the callbacks, and reads how often
// the library queried the object.

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

// Creates an object of the class and never releases it.
inline ZRRESULT CreateObject(int number) {
  const ZRUUID classId = ClassId(static_cast<uint32_t>(number));
  void* object = nullptr;
  return ZrCreateInstance(&classId, 0, &classId, 0, &object);
}

// A createInstance entry point that returns an object that needs no release.
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

  std::atomic<uint32_t> references{0}, queries{0};    // queries for components, class identifiers and class names
  std::function<void(const char* operation)> onCall;  // runs at the start of each call; may throw
  bool findsNothing = false;                          // while true, no query finds a class
  std::function<ZRRESULT(const ZRUUID& classId, ZRSTR name, IZrConfiguration** out)> configure;

  // Adds this discovery to the library. Returns the cookie.
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
    *modulePath = ZrCopyString(unused_);  // the library must destroy it even if the query fails
    const Entry* entry = Find("QueryComponent", [&](const Entry& e) { return ClassId(e.number) == *classId; });
    if (entry == nullptr) return ZR_R_CANCELLED;
    ZrDestroyString(*modulePath);
    *modulePath = entry->path.string != nullptr ? ZrCopyString(entry->path) : nullptr;
    *entryPoints = entry->points;
    return ZR_R_OK;
  }
  ZRRESULT QueryConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** out) override {
    Called("QueryConfiguration");
    return configure ? configure(*classId, name, out) : ZR_R_NOT_IMPLEMENTED;
  }
  ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) override {
    const Entry* entry =
        Find("QueryClassId", [&](const Entry& e) { return ContentOf(e.name) == ContentOf(className); });
    if (entry != nullptr) *classId = ClassId(entry->number);
    return entry != nullptr ? ZR_R_OK : ZR_R_CANCELLED;
  }
  ZRRESULT QueryClassName(const ZRUUID* classId, ZRSTR* className) override {
    const Entry* entry = Find("QueryClassName", [&](const Entry& e) { return ClassId(e.number) == *classId; });
    if (entry != nullptr) *className = entry->name.string != nullptr ? ZrCopyString(entry->name) : nullptr;
    return entry != nullptr ? ZR_R_OK : ZR_R_CANCELLED;
  }

 private:
  void Called(const char* operation) {
    if (onCall) onCall(operation);
  }
  template <class Predicate>
  const Entry* Find(const char* operation, Predicate predicate) {
    ++queries;
    Called(operation);
    const auto found = std::find_if(entries_.begin(), entries_.end(), predicate);
    return found != entries_.end() && !findsNothing ? &*found : nullptr;
  }

  const std::vector<Entry> entries_;  // with strings made in advance, so that a query allocates nothing
  Owned unused_{Units(W("/a/path/of/a/refusal"))};
};
