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

class FakeDiscovery final : public IZrComponentDiscovery {
 public:
  struct Entry {
    uint32_t number;
    Units path;
    ZrModuleEntryPoints points{};
    Units name{};
  };

  explicit FakeDiscovery(const std::vector<Entry>& entries = {}) {
    for (const Entry& entry : entries) {
      rows_.push_back({ClassId(entry.number), Owned(entry.path), entry.points,
                       Owned(entry.name.empty() ? nullptr : ZrCreateString(entry.name.c_str()))});
    }
  }

  std::atomic<uint32_t> references{0}, asked{0};      // asked for components, class identifiers and names
  std::function<void(const char* operation)> onCall;  // ahead of any answer; may throw
  std::function<ZRRESULT(const ZRUUID& classId, ZRSTR name, IZrConfiguration** given)> configure;

  uint32_t AddRef() override { return Called("AddRef"), ++references; }
  uint32_t Release() override { return Called("Release"), --references; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ADD_FAILURE(), ZR_R_NO_INTERFACE; }
  ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints* entryPoints) override {
    EXPECT_TRUE(*modulePath == nullptr && !entryPoints->createInstance && !entryPoints->init && !entryPoints->exit);
    *modulePath = ZrCopyString(refusal_);  // the library destroys this one too
    const Row* row = Ask("QueryComponent", [&](const Row& r) { return r.classId == *classId; });
    if (row == nullptr) return ZR_R_CANCELLED;
    ZrDestroyString(*modulePath);
    *modulePath = ZrCopyString(row->path);
    *entryPoints = row->points;
    return ZR_R_OK;
  }
  ZRRESULT QueryConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** given) override {
    Called("QueryConfiguration");
    return configure ? configure(*classId, name, given) : ZR_R_NOT_IMPLEMENTED;
  }
  ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) override {
    const Row* row = Ask("QueryClassId", [&](const Row& r) { return ContentOf(r.name) == ContentOf(className); });
    if (row != nullptr) *classId = row->classId;
    return row != nullptr ? ZR_R_OK : ZR_R_CANCELLED;
  }
  ZRRESULT QueryClassName(const ZRUUID* classId, ZRSTR* className) override {
    const Row* row = Ask("QueryClassName", [&](const Row& r) { return r.classId == *classId; });
    if (row != nullptr) *className = row->name.string != nullptr ? ZrCopyString(row->name) : nullptr;
    return row != nullptr ? ZR_R_OK : ZR_R_CANCELLED;
  }

 private:
  struct Row {
    ZRUUID classId;
    Owned path;
    ZrModuleEntryPoints points;
    Owned name;
  };

  void Called(const char* operation) {
    if (onCall) onCall(operation);
  }
  template <class Claim>
  const Row* Ask(const char* operation, Claim claim) {
    ++asked;
    Called(operation);
    const auto found = std::find_if(rows_.begin(), rows_.end(), claim);
    return found != rows_.end() ? &*found : nullptr;
  }

  std::vector<Row> rows_;  // strings made beforehand, so that answering allocates nothing
  Owned refusal_{Units(W("/a/path/of/a/refusal"))};
};
