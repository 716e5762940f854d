// Helpers for tests of arrays: owners, access to elements, sample values of every element type, and descriptions of
// arrays as text for failure messages.

#pragma once

#include <algorithm>
#include <memory>
#include <span>
#include <utility>

#include "tests/support/variant_text.h"

// All tags that elements can have.
inline constexpr std::span kElementTags = std::span(kTagNames).subspan<2>();
static_assert(kTagNames[0].tag == ZR_VT_EMPTY && kTagNames[1].tag == ZR_VT_OPAQUE);

inline std::size_t WidthOf(uint16_t tag) {
  return IsOfKind(tag, "uv") ? 16 : NameOf(tag)->width;  // arrays store the record itself, not a pointer
}

struct CDestroyArray {
  void operator()(ZRSAFEARRAY array) const { EXPECT_EQ(ZrSafeArrayDestroy(array), ZR_R_OK); }
};
using Array = std::unique_ptr<ZrSafeArrayDescriptor, CDestroyArray>;

inline Array MakeArray(uint16_t tag, const std::vector<ZrSafeArrayBound>& bounds) {
  return Array(ZrSafeArrayCreate(tag, static_cast<uint32_t>(bounds.size()), bounds.data()));
}
inline Array CopyOf(ZRSAFEARRAY source) {
  ZRSAFEARRAY copy = nullptr;
  (void)ZrSafeArrayCopy(source, &copy);
  return Array(copy);
}
inline OwnedVariant InVariant(uint16_t tag, Array array) {
  OwnedVariant variant;
  variant.Type = tag | ZR_VT_ARRAY;
  variant.Value.array = array.release();
  return variant;
}

// The elements of an array, also while its access flag is taken.
struct Storage {
  char* data = nullptr;
  uint32_t count = 0;
};
inline Storage StorageOf(ZRSAFEARRAY array) {
  void* data = nullptr;
  Storage storage;
  const bool wasTaken = ZrSafeArrayUnlock(array) == ZR_R_OK;
  (void)ZrSafeArrayAccessData(array, &data);
  if (!wasTaken) (void)ZrSafeArrayUnaccessData(array);
  (void)ZrSafeArrayGetElementCount(array, &storage.count, nullptr);
  storage.data = static_cast<char*>(data);
  return storage;
}

// Several types store their values alike. Returns the plain integer tag for these, and any other tag unchanged.
inline uint16_t CanonicalTag(uint16_t tag) {
  const TagName *row = NameOf(tag), *plain = kTagNames;
  if (!IsOfKind(tag, "bnqtc")) return tag;
  while (!IsOfKind(plain->tag, "nq") || plain->width != row->width || plain->isSigned != row->isSigned) ++plain;
  return plain->tag;
}

// Lends elements of one type as variants. The variants own nothing.
class Lender {
 public:
  explicit Lender(uint16_t tag)
      : tag_(tag), width_(WidthOf(tag)), type_(IsOfKind(tag, "t") ? tag : CanonicalTag(tag)) {}

  ZRVARIANT operator()(const char* element) const {
    ZRVARIANT lent = ZR_VARIANT_INIT;
    lent.Type = type_;
    if (tag_ == ZR_VT_VARIANT) {
      std::memcpy(&lent, element, sizeof lent);
    } else if (tag_ == ZR_VT_UUID) {
      lent.Value.address = const_cast<char*>(element);
    } else {
      std::memcpy(&lent.Value, element, width_);
    }
    return lent;
  }
  std::size_t Width() const { return width_; }

 private:
  uint16_t tag_;
  std::size_t width_;
  uint16_t type_;
};

inline ZRVARIANT Lend(uint16_t tag, const char* element) { return Lender(tag)(element); }

// The address that ZrSafeArrayPutElement expects for a value.
inline const void* PayloadOf(uint16_t tag, const ZRVARIANT& value) {
  if (tag == ZR_VT_VARIANT) return &value;
  return tag == ZR_VT_UUID ? value.Value.address : &value.Value;
}

// Moves a value into an element. Returns true.
inline bool MoveIntoElement(OwnedVariant& from, uint16_t tag, char* element) {
  if (tag == ZR_VT_UUID) {  // `from` still owns the record
    if (from.Value.uuid != nullptr) std::memcpy(element, from.Value.uuid, sizeof *from.Value.uuid);
    return true;
  }
  if (tag == ZR_VT_VARIANT) std::memcpy(element, static_cast<const ZRVARIANT*>(&from), sizeof(ZRVARIANT));
  if (tag != ZR_VT_VARIANT) std::memcpy(element, &from.Value, std::min(WidthOf(tag), sizeof from.Value));
  (void)ZrVariantInit(&from);
  return true;
}

// Moves values into a new array of one dimension.
inline Array ArrayOf(uint16_t tag, OwnedVariant* values, std::size_t count) {
  Array array = MakeArray(tag, {{static_cast<uint32_t>(count), -5}});
  for (char* to = StorageOf(array.get()).data; count-- > 0; to += WidthOf(tag))
    (void)MoveIntoElement(*values++, tag, to);
  return array;
}

// ---- As text -------------------------------------------------------------------------------------------------------

// A tag as the headers spell it; a number for a tag that is not assigned.
inline std::string TagText(uint16_t tag) {
  const TagName* row = NameOf(tag);
  return row != nullptr ? std::string("ZR_VT_") + row->name : std::to_string(tag);
}

inline std::vector<std::string> DescribeElements(uint16_t tag, ZRSAFEARRAY array) {
  const Storage storage = StorageOf(array);
  const Lender lend(tag);
  std::vector<std::string> texts;
  for (uint32_t index = 0; storage.data != nullptr && index < storage.count; ++index) {
    texts.push_back(Describe(lend(storage.data + index * lend.Width())));
  }
  return texts;
}

inline std::string DescribeArray(ZRSAFEARRAY array) {
  uint16_t tag = 0;
  (void)ZrSafeArrayGetVartype(array, &tag);
  std::string text = "[";
  text.append(TagText(tag)).append(":");
  for (const std::string& element : DescribeElements(tag, array)) text.append(" ").append(element).append(";");
  return text + "]";
}

// ---- Sample elements ------------------------------------------------------------------------------------------------

inline std::vector<OwnedVariant> ValuesOf(uint16_t tag) {
  std::vector<OwnedVariant> values;
  for (const std::string& text : TextsOf(tag)) values.push_back(Value(NameOf(tag)->name + (" " + text)));
  return values;
}

inline constexpr const char* kOddRecords =
    "UNKNOWN+8000 object|DISPATCH+1000 object|STR+9000 12|BOOL+1000 2|R8+8000 2|OPAQUE 9|EMPTY|EMPTY+1000|EMPTY+4000|"
    "14|14+4000|54|54+4000|STR+2000 null";

class Samples {
 public:
  // ZR_VT_QWORD is left out, because the conversion to ZR_VT_DATETIME takes the number for an address.
  Samples() {
    for (const TagName& row : kElementTags) {
      if (row.tag == ZR_VT_VARIANT || row.tag == ZR_VT_QWORD) continue;
      for (OwnedVariant& value : ValuesOf(row.tag)) records_.push_back(std::move(value));
    }
    for (const std::string& text : Split(kOddRecords)) records_.push_back(Value(text));
    records_.push_back(InVariant(ZR_VT_I4, MakeArray(ZR_VT_I4, {{2, 0}})));
    records_.push_back(InVariant(ZR_VT_VARIANT, MakeArray(ZR_VT_VARIANT, {{2, 0}})));
  }

  // Returns new values for elements of one type. For elements that are variants these are, for each record: a copy, a
  // reference to its value, a reference to the record, and a null reference.
  std::vector<OwnedVariant> Of(uint16_t tag) {
    if (tag != ZR_VT_VARIANT) return ValuesOf(tag);
    std::vector<OwnedVariant> variants;
    const auto add = [&](const ZRVARIANT& variant) { static_cast<ZRVARIANT&>(variants.emplace_back()) = variant; };
    for (OwnedVariant& record : records_) {
      (void)ZrVariantCopy(&variants.emplace_back(), &record);
      add(ByRef(record));
      add(ByRef(ZR_VT_VARIANT, &record));
      add(ByRef(record.Type, nullptr));
    }
    return variants;
  }

 private:
  std::vector<OwnedVariant> records_;
};
