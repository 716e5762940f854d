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
    *value = current_.variant;  // as it is, wrong ones too; and nothing owned gets lost
    if (value->Type == ZR_VT_STR) ZrCopyString(value->Value.string);
    if (value->Type == ZR_VT_UNKNOWN) value->Value.unknown->AddRef();
    return onCall(), current_.result;
  }

 private:
  Value current_{};
};
