// The texts of result codes: the registry behind zrcore/error_info.h.

#pragma once

#include <cstdint>
#include <map>

#include "runtime/lock.h"
#include "zrcore/error_info.h"

// One row: owns a reference of each string. The description may be null.
class CZrErrorInfoData {
 public:
  CZrErrorInfoData(ZRSTR text, ZRSTR description) noexcept : text_(text), description_(description) {}  // takes both
  CZrErrorInfoData(const CZrErrorInfoData& other) noexcept;
  CZrErrorInfoData& operator=(const CZrErrorInfoData&) = delete;
  virtual ~CZrErrorInfoData();

  ZRSTR Text() const noexcept { return text_; }
  ZRSTR Description() const noexcept { return description_; }

 private:
  ZRSTR text_;
  ZRSTR description_;
};

class CErrorRegistry {
 public:
  [[nodiscard]] ZRRESULT Register(uint32_t code, const WCHAR* text, const WCHAR* description);
  [[nodiscard]] ZRRESULT GetText(uint32_t code, ZRSTR* text);
  [[nodiscard]] ZRRESULT GetDescription(uint32_t code, ZRSTR* description);

 private:
  void Build() ZR_REQUIRES(mutex_);
  ZRRESULT Add(uint32_t code, const WCHAR* text, const WCHAR* description) ZR_REQUIRES(mutex_);

  // Adds a reference of one of the row's strings.
  ZRRESULT ShareString(uint32_t code, ZRSTR (CZrErrorInfoData::*string)() const noexcept, ZRSTR* result);

  CMutex mutex_;  // a leaf: nothing runs under it but the string functions
  std::map<uint32_t, CZrErrorInfoData> rows_ ZR_GUARDED_BY(mutex_);
  bool built_ ZR_GUARDED_BY(mutex_) = false;
};

// The one registry, which src/runtime/library_state.cpp defines in its place.
[[nodiscard]] CErrorRegistry& ErrorRegistry() noexcept;
