// The registry of error texts, which implements zrcore/error_info.h: one row per result code.
//
//     0x80000000 -> "ZR_R_FAILED", "The component reported a general error"
//     0x80000001 -> "ZR_R_NOT_SUPPORTED", ...
//     a module's code -> its text, its description or null
//
// Invariants:
//   1. Before any operation reads or adds a row, the library's own rows are complete.
//   2. A row is never changed or removed. So the first registration of a code wins.
//   3. Codes are ordered and looked up as unsigned numbers.

#pragma once

#include <cstdint>
#include <map>

#include "runtime/lock.h"
#include "zrcore/error_info.h"

// One row. It owns one reference on each of its strings. The description may be null.
//
// The contract fixes the order of the fields and the virtual destructor, although nothing derives from the class.
class CZrErrorInfoData {
 public:
  CZrErrorInfoData(ZRSTR text, ZRSTR description) noexcept : text_(text), description_(description) {}  // takes both
  CZrErrorInfoData(const CZrErrorInfoData& other) noexcept;
  CZrErrorInfoData& operator=(const CZrErrorInfoData&) = delete;
  virtual ~CZrErrorInfoData();  // Fixed by contract: virtual.

  ZRSTR Text() const noexcept { return text_; }
  ZRSTR Description() const noexcept { return description_; }

 private:
  ZRSTR text_;
  ZRSTR description_;
};

// Each operation locks the mutex. If the mutex can't be locked, std::system_error passes to the caller.
class CErrorRegistry {
 public:
  // Throws std::bad_alloc without adding the row.
  [[nodiscard]] ZRRESULT Register(uint32_t code, const WCHAR* text, const WCHAR* description);
  // Give a reference on the row's string, or ZR_R_NOT_EXISTING. Throw std::bad_alloc only while rows of the library are
  // missing.
  [[nodiscard]] ZRRESULT GetText(uint32_t code, ZRSTR* text);
  [[nodiscard]] ZRRESULT GetDescription(uint32_t code, ZRSTR* description);

 private:
  // Adds the library's own rows if they are not complete yet.
  void Build() ZR_REQUIRES(mutex_);
  // Adds one row, or returns ZR_R_ALREADY_REGISTERED. Throws std::bad_alloc.
  ZRRESULT Add(uint32_t code, const WCHAR* text, const WCHAR* description) ZR_REQUIRES(mutex_);

  // The common part of GetText and GetDescription; `string` names the getter of the row.
  ZRRESULT ShareString(uint32_t code, ZRSTR (CZrErrorInfoData::*string)() const noexcept, ZRSTR* result);

  CMutex mutex_;  // a leaf: under it only string and allocation functions run, and no other lock is taken
  std::map<uint32_t, CZrErrorInfoData> rows_ ZR_GUARDED_BY(mutex_);
  bool built_ ZR_GUARDED_BY(mutex_) = false;
};

// The only registry. src/runtime/library_state.cpp defines it among the objects with static storage.
[[nodiscard]] CErrorRegistry& ErrorRegistry() noexcept;
