// What the component rows share: a discovery for the widget classes of one module file, a host of all widget classes,
// the entry points of a module that is loaded without the component system, and comparison and hash functions for
// identifiers.

#pragma once

#include <dlfcn.h>

#include <cstring>
#include <memory>
#include <string>

#include "modules/widget.h"
#include "row.h"
#include "zrcore/zrcore.h"

struct ByteLess {
  bool operator()(const ZRUUID& left, const ZRUUID& right) const { return std::memcmp(&left, &right, sizeof left) < 0; }
};
struct UuidEqual {
  bool operator()(const ZRUUID& left, const ZRUUID& right) const {
    return std::memcmp(&left, &right, sizeof left) == 0;
  }
};
struct UuidHash {
  std::size_t operator()(const ZRUUID& uuid) const {
    std::size_t words[2];
    std::memcpy(words, &uuid, sizeof words);
    return words[0] ^ words[1];
  }
};

using ZrString = std::unique_ptr<WCHAR, decltype(&ZrDestroyString)>;

inline ZrString MakeZrString(const std::u16string& text) { return {ZrCreateString(text.c_str()), ZrDestroyString}; }

// Its owner decides when it is destroyed: AddRef and Release count nothing, and the library doesn't read their results.
class CModuleDiscovery final : public IZrComponentDiscovery {
 public:
  CModuleDiscovery(const std::string& modulePath, uint32_t first, uint32_t count)
      : path_(MakeZrString(std::u16string(modulePath.begin(), modulePath.end()))), first_(first), count_(count) {}

  uint32_t AddRef() override { return 2; }
  uint32_t Release() override { return 1; }
  ZRRESULT QueryInterface(const ZRUUID*, void** object) override {
    *object = nullptr;
    return ZR_R_NO_INTERFACE;
  }

  ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints*) override {
    if (!IsWidgetClass(*classId, first_, count_)) return ZR_R_CLASS_NOT_REGISTERED;
    *modulePath = ZrCopyString(path_.get());
    return ZR_R_OK;
  }
  ZRRESULT QueryConfiguration(const ZRUUID*, ZRSTR, IZrConfiguration**) override { return ZR_R_NOT_IMPLEMENTED; }

  ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) override {
    for (uint32_t i = first_; i < first_ + count_; ++i) {
      int32_t order = 1;
      (void)ZrCompareStringW(className, WidgetName(i).c_str(), &order);
      if (order != 0) continue;
      *classId = WidgetClass(i);
      return ZR_R_OK;
    }
    return ZR_R_CLASS_NOT_REGISTERED;
  }
  ZRRESULT QueryClassName(const ZRUUID*, ZRSTR*) override { return ZR_R_CLASS_NOT_REGISTERED; }

 private:
  ZrString path_;
  uint32_t first_, count_;
};

// Keeps the component system open while it exists. There is one component system per process, so only one CHost may
// exist at a time. Each row opens the system for its own run, so the next row finds it empty.
class CHost {
 public:
  CHost() { Require(ZR_SUCCEEDED(ZrInitialize()), "the component system opens"); }
  ~CHost() {
    (void)ZrUninitialize();
    uint32_t cookie = 0;
    Require(ZrAddComponentDiscovery(nullptr, &cookie) == ZR_R_NO_INIT, "only one host is open");
  }
  CHost(const CHost&) = delete;
  CHost& operator=(const CHost&) = delete;
};

// A host that has used every class and every name once, so that the measured lookup searches among all of them.
class CWidgetHost {
 public:
  CWidgetHost() {
    Require(ZR_SUCCEEDED(ZrAddComponentDiscovery(&discovery_, &cookie_)), "a discovery is added");
    for (uint32_t i = 0; i < kClassCount; ++i) {
      const ZRUUID classId = WidgetClass(i);
      void* object = nullptr;
      Require(ZR_SUCCEEDED(ZrCreateInstance(&classId, 0, &kWidgetInterface, 0, &object)), "a class makes an object");
      static_cast<IZrUnknown*>(object)->Release();

      ZRUUID found{};
      uint8_t equal = 0;
      Require(ZR_SUCCEEDED(ZrCLSIDFromClassName(MakeZrString(WidgetName(i)).get(), &found)), "a class name is known");
      Require(ZR_SUCCEEDED(ZrCompareUUID(&classId, &found, &equal)) && equal == 1,
              "a class name leads to its class identifier");
    }
  }
  ~CWidgetHost() { (void)ZrRemoveComponentDiscovery(cookie_); }
  CWidgetHost(const CWidgetHost&) = delete;
  CWidgetHost& operator=(const CWidgetHost&) = delete;

 private:
  CHost host_;
  CModuleDiscovery discovery_{BENCH_WARM_MODULE, 0, kClassCount};
  uint32_t cookie_ = 0;
};

// Returns the three functions of a component module. `find` returns the address of an exported function by its name.
template <class Find>
ZrModuleEntryPoints FindEntryPoints(Find&& find) {
  return {reinterpret_cast<ZrCreateInstanceModuleFunction>(find("ZrCreateInstanceModule")),
          reinterpret_cast<ZrInitModuleFunction>(find("ZrInitModule")),
          reinterpret_cast<ZrExitModuleFunction>(find("ZrExitModule"))};
}

inline IZrUnknown* Create(ZrCreateInstanceModuleFunction createInstance, const ZRUUID& classId) {
  void* object = nullptr;
  Consume(createInstance(&classId, 0, &kWidgetInterface, 0, &object));
  return static_cast<IZrUnknown*>(object);
}
