// The objects that the modules create, and the identifiers and names of their classes. ZrCore and all peers register
// the same number of classes, so that each lookup searches among equally many. The number is realistic for a host, and
// large enough that a hash map doesn't fall back to a linear scan.

#pragma once

#include <cstdint>
#include <string>

#include "zrcore/component.h"

inline constexpr uint32_t kClassCount = 32;
inline constexpr uint32_t kMeasuredClass = 21;       // neither the first nor the last in any order
inline constexpr uint32_t kColdClass = kClassCount;  // one more class, in the module that is loaded and unloaded

inline constexpr ZRUUID kWidgetInterface = {
    0x9B1C3A60, 0x2D4E, 0x4F10, {0x8A, 0x01, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66}};

constexpr ZRUUID WidgetClass(uint32_t index) {
  return {0x3E5D7F00u + index, 0x6C21, 0x4B98, {0x9D, 0x40, 0x07, 0x5A, 0x1E, 0xC3, 0x88, 0x2B}};
}

constexpr bool IsWidgetClass(const ZRUUID& classId, uint32_t first, uint32_t count) {
  return classId.data1 - WidgetClass(first).data1 < count;
}

inline std::u16string WidgetName(uint32_t index) {
  const char16_t digits[] = {static_cast<char16_t>(u'0' + index / 10), static_cast<char16_t>(u'0' + index % 10), 0};
  return std::u16string(u"Benchmark.Widget.") + digits;
}

// The object that the peers create. It is destroyed with delete; ZrCore's object counts its references.
struct Widget {
  virtual ~Widget() = default;
  virtual uint64_t Value() const = 0;
};
