// A configuration, its section and its values in one object. All three share one reference count, which a test checks
// for leaks.

#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>

#include "tests/support/text.h"

struct FakeConfiguration final : IZrConfiguration, IZrConfigurationSection, IZrConfigurationValue {
  struct Value {
    ZRVARIANT variant;
    ZRRESULT result = ZR_R_OK;
  };

  std::map<Units, Value> values;
  int32_t references = 0;
  std::function<void()> onCall = [] {};  // runs at the end of each call; may throw

  FakeConfiguration* WithReference() { return ++references, this; }

  uint32_t AddRef() override { return WithReference(), 0; }
  uint32_t Release() override { return --references, onCall(), 0; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }

  // The library must ignore the results of QuerySection and QueryValue, so these return a failure.
  ZRRESULT QuerySection(IZrConfigurationSection** section) override {
    EXPECT_EQ(*section, nullptr);
    if (!values.empty()) *section = WithReference();
    return onCall(), ZR_R_FAILED;
  }
  ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) override {
    EXPECT_EQ(*value, nullptr);
    const auto found = values.find(ContentOf(name));
    if (found != values.end()) {
      current_ = found->second;
      *value = WithReference();
    }
    return onCall(), ZR_R_FAILED;
  }
  ZRRESULT Read(const ZRVARIANT* defaultValue, uint16_t type, ZRVARIANT* value) override {
    ZRVARIANT expected = ZR_VARIANT_INIT;
    EXPECT_EQ(std::memcmp(value, &expected, sizeof expected), 0);
    expected.Type = type;
    EXPECT_EQ(std::memcmp(defaultValue, &expected, sizeof expected), 0) << "the default value must be 0";
    *value = current_.variant;  // returned unchanged, even when it has the wrong type
    if (value->Type == ZR_VT_STR) ZrCopyString(value->Value.string);
    if (value->Type == ZR_VT_UNKNOWN) value->Value.unknown->AddRef();
    return onCall(), current_.result;
  }

 private:
  Value current_{};
};
