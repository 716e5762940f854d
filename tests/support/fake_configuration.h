// A configuration, its section and its values in one object, with one count of references for all three.

#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>

#include "tests/support/text.h"

class FakeConfiguration final : public IZrConfiguration, public IZrConfigurationSection, public IZrConfigurationValue {
 public:
  struct Value {
    ZRVARIANT variant;
    ZRRESULT result = ZR_R_OK;
  };

  FakeConfiguration() = default;
  // The same for each of the three names that the library asks for.
  explicit FakeConfiguration(const Value& value)
      : values{{W("EnableAllocator"), value}, {W("ZR_VT_REF"), value}, {W("ZR_VT_SREF"), value}} {}

  std::map<Units, Value> values;
  int32_t references = 0;
  bool hasSection = true;
  std::function<void(const std::string& operation)> onCall;  // behind the answer; may throw

  uint32_t AddRef() override {
    ADD_FAILURE() << "one reference is all that the library holds";
    return 0;
  }
  uint32_t Release() override {
    --references;
    return Called("Release"), 0;
  }
  ZRRESULT QueryInterface(const ZRUUID*, void**) override { return Reserved4(); }
  ZRRESULT Reserved4() override {
    ADD_FAILURE() << "the library calls none of these";
    return ZR_R_OK;
  }
  ZRRESULT Reserved5() override { return Reserved4(); }

  ZRRESULT QuerySection(IZrConfigurationSection** section) override {
    EXPECT_EQ(*section, nullptr);
    if (hasSection) *section = Given();
    Called("QuerySection");
    return ZR_R_FAILED;  // not read
  }
  ZRRESULT QueryValue(ZRSTR name, IZrConfigurationValue** value) override {
    EXPECT_EQ(*value, nullptr);
    const auto found = values.find(ContentOf(name));
    if (found != values.end()) {
      current_ = &found->second;
      *value = Given();
    }
    Called("QueryValue");
    return ZR_R_FAILED;  // not read
  }
  ZRRESULT Read(const ZRVARIANT* defaultValue, uint16_t type, ZRVARIANT* value) override {
    ZRVARIANT expected = ZR_VARIANT_INIT;
    EXPECT_EQ(std::memcmp(value, &expected, sizeof expected), 0);
    expected.Type = type;
    EXPECT_EQ(std::memcmp(defaultValue, &expected, sizeof expected), 0) << "all defaults are 0";
    *value =
        current_->variant;  // by-reference and unknown ones too, and strings with the reference that they came with
    if (value->Type == ZR_VT_STR) ZrCopyString(value->Value.string);
    Called("Read");
    return current_->result;
  }

  FakeConfiguration* Given() { return ++references, this; }

 private:
  void Called(const char* operation) {
    if (onCall) onCall(operation);
  }

  const Value* current_ = nullptr;
};
