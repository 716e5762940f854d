// A configuration, its section and its values in one object, with one count of references for all three.

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
  std::function<void()> onCall = [] {};  // behind each answer; may throw

  FakeConfiguration* Given() { return ++references, this; }

  uint32_t AddRef() override { return Given(), 0; }
  uint32_t Release() override { return --references, onCall(), 0; }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return ZR_R_NO_INTERFACE; }

  // Results that are not read are failures.
  ZRRESULT QuerySection(IZrConfigurationSection** section) override {
    EXPECT_EQ(*section, nullptr);
    if (!values.empty()) *section = Given();
    return onCall(), ZR_R_FAILED;
  }
  ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) override {
    EXPECT_EQ(*value, nullptr);
    const auto found = values.find(ContentOf(name));
    if (found != values.end()) {
      current_ = found->second;
      *value = Given();
    }
    return onCall(), ZR_R_FAILED;
  }
  ZRRESULT Read(const ZRVARIANT* defaultValue, uint16_t type, ZRVARIANT* value) override {
    ZRVARIANT expected = ZR_VARIANT_INIT;
    EXPECT_EQ(std::memcmp(value, &expected, sizeof expected), 0);
    expected.Type = type;
    EXPECT_EQ(std::memcmp(defaultValue, &expected, sizeof expected), 0) << "all defaults are 0";
    const uint16_t given = current_.variant.Type;
    const bool isCounted = given == ZR_VT_STR || given == ZR_VT_UNKNOWN;
    if (isCounted || (given & (ZR_VT_ARRAY | ZR_VT_BYREF)) == ZR_VT_ARRAY) {
      (void)ZrVariantCopy(value, &current_.variant);
    } else {
      *value = current_.variant;  // as it is, wrong ones too
    }
    return onCall(), current_.result;
  }

 private:
  Value current_{};
};
