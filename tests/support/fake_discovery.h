// A discovery object whose table, answers and callbacks a test sets, and that counts what it is asked.

#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include "tests/support/text.h"

inline constexpr ZRUUID ClassId(uint32_t number) { return {number, 0x1234, 0x5678, {1, 2, 3, 4, 5, 6, 7, 8}}; }

inline Units ModulePath(const char* module) { return Widened(std::string(TEST_DIRECTORY "/") + module + ".so"); }

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

  std::atomic<uint32_t> references{0}, componentsAsked{0}, namesAsked{0};
  ZRRESULT answer = ZR_R_OK;                          // to what the table knows
  std::function<void(const char* operation)> onCall;  // ahead of any answer; may throw
  std::function<ZRRESULT(const ZRUUID& classId, ZRSTR name, IZrConfiguration** given)> configure;

  uint32_t AddRef() override { return Called("AddRef"), ++references; }
  uint32_t Release() override { return Called("Release"), --references; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override {
    ADD_FAILURE() << "the library asks no object for another interface";
    return ZR_R_NO_INTERFACE;
  }
  ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints* entryPoints) override {
    ++componentsAsked;
    EXPECT_TRUE(*modulePath == nullptr && !entryPoints->createInstance && !entryPoints->init && !entryPoints->exit);
    *modulePath = ZrCopyString(refusal_);  // the library destroys this one too
    Called("QueryComponent");
    const Row* row = Find([&](const Row& r) { return r.classId == *classId; });
    if (row == nullptr) return ZR_R_CANCELLED;
    ZrDestroyString(*modulePath);
    *modulePath = ZrCopyString(row->path);
    *entryPoints = row->points;
    return answer;
  }
  ZRRESULT QueryConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** given) override {
    Called("QueryConfiguration");
    return configure ? configure(*classId, name, given) : ZR_R_NOT_IMPLEMENTED;
  }
  ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) override {
    ++namesAsked;
    Called("QueryClassId");
    const Row* row = Find([&](const Row& r) { return ContentOf(r.name) == ContentOf(className); });
    if (row == nullptr) return ZR_R_CANCELLED;
    *classId = row->classId;
    return answer;
  }
  ZRRESULT QueryClassName(const ZRUUID* classId, ZRSTR* className) override {
    ++namesAsked;
    Called("QueryClassName");
    const Row* row = Find([&](const Row& r) { return r.classId == *classId; });
    if (row == nullptr) return ZR_R_CANCELLED;
    *className = row->name.string != nullptr ? ZrCopyString(row->name) : nullptr;
    return answer;
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
  const Row* Find(Claim claim) const {
    for (const Row& row : rows_) {
      if (claim(row)) return &row;
    }
    return nullptr;
  }

  std::vector<Row> rows_;  // strings made beforehand, so that answering allocates nothing
  Owned refusal_{Units(W("/a/path/of/a/refusal"))};
};
