// Data for the rows on variants: the same values in the types of each library.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

#include "row.h"
#include "texts.h"
#include "zrcore/variant.h"

// The peers' headers, for all files that include this one.
#if BENCH_QT
#include <QDateTime>
#include <QString>
#include <QUuid>
#include <QVariant>
#endif
#if BENCH_GLIB
#include <glib-object.h>
#endif
#if BENCH_POCO
#include <Poco/Dynamic/Var.h>
#endif

inline constexpr int32_t kInteger = 1234567;
inline constexpr double kReal = 1234.567891;
inline constexpr char kIntegerText[] = "1234567";
inline constexpr char kRealText[] = "1234.567891";
inline constexpr char kSentence[] = "a sentence of thirty-two units.!";
inline constexpr char kUuidText[] = "{00112233-4455-6677-8899-AABBCCDDEEFF}";
inline constexpr char kReferenceText[] = "1.2.3.4.5.6";
inline constexpr char kDateTimeText[] = "2012-03-04 05:06:07.1234567";
static_assert(sizeof kSentence == 32 + 1);

// ---- The values -----------------------------------------------------------------------------------------------------

// Shared ownership of a variant, so that a row can keep it. The last owner clears it.
using Holder = std::shared_ptr<const ZRVARIANT>;

inline Holder Hold(const ZRVARIANT& variant) {
  return Holder(new ZRVARIANT(variant), [](ZRVARIANT* held) {
    ZrVariantClear(held);
    delete held;
  });
}

inline ZRVARIANT Tagged(uint16_t tag) {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  variant.Type = tag;
  return variant;
}

inline Holder HoldInteger(int32_t value) {
  ZRVARIANT variant = Tagged(ZR_VT_I4);
  variant.Value.i4 = value;
  return Hold(variant);
}

inline Holder HoldReal(double value) {
  ZRVARIANT variant = Tagged(ZR_VT_R8);
  variant.Value.r8 = value;
  return Hold(variant);
}

inline Holder HoldText(const std::string& text) {
  ZRVARIANT variant = Tagged(ZR_VT_STR);
  variant.Value.string = ZrCreateString(Widened(text).c_str());
  return Hold(variant);
}

inline Holder HoldConverted(const Holder& source, uint16_t target) {
  ZRVARIANT variant = ZR_VARIANT_INIT;
  Require(ZrVariantChangeType(&variant, source.get(), 0, target) == ZR_R_OK, "the value converts");
  return Hold(variant);
}

// The std::variant that a program would use if it needed only these types.
using Visited = std::variant<std::monostate, bool, int32_t, int64_t, double, SharedText>;

inline Visited VisitedText(const std::string& text) { return std::make_shared<const std::u16string>(Widened(text)); }

#if BENCH_GLIB
using GValueHolder = std::shared_ptr<const GValue>;

template <class Set, class Content>
GValueHolder HoldGValue(GType type, Set set, Content content) {
  auto* value = new GValue(G_VALUE_INIT);
  g_value_init(value, type);
  set(value, content);
  return GValueHolder(value, [](GValue* held) {
    g_value_unset(held);
    delete held;
  });
}
#endif
