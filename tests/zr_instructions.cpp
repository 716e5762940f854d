// What zr_instructions_test compiles: each operation once with the C++ layer, and once by hand with the C boundary.
//
// A pair has the names layer_OPERATION and hand_OPERATION and the same interface in machine terms: an owner is passed
// and returned in memory, so by hand there is a pointer. The code by hand checks what a careful user checks.

#include <cstring>
#include <new>
#include <utility>

#include "zr/zr.hpp"
#include "zrcore/zrcore.h"

#define PAIR extern "C" __attribute__((visibility("default")))

static constexpr WCHAR kName[] = u"Mars";

struct IPlanet : IZrUnknown {
  static constexpr zr::Uuid kId{"F9651424-8D32-4CCF-9A21-343643169DF0"};

 protected:
  ~IPlanet() = default;
};

// ---- Strings --------------------------------------------------------------------------------------------------------

PAIR void layer_copy_string(const zr::String& string, zr::String* copy) { new (copy) zr::String(string); }
PAIR void hand_copy_string(const ZRSTR* string, ZRSTR* copy) {
  *copy = *string != nullptr ? ZrCopyString(*string) : nullptr;
}

PAIR void layer_make_string(zr::String* made) { new (made) zr::String(kName); }
PAIR void hand_make_string(ZRSTR* made) {
  *made = ZrCreateString(kName);
  if (*made == nullptr) throw std::bad_alloc();
}

PAIR void layer_drop_string(zr::String* string) { string->~String(); }
PAIR void hand_drop_string(ZRSTR* string) { ZrDestroyString(*string); }

// ---- Variants -------------------------------------------------------------------------------------------------------

PAIR void layer_string_out_of_variant(zr::Variant& variant, zr::String* string) {
  new (string) zr::String(variant.Is<zr::String>() ? *std::move(variant).To<zr::String>() : zr::String());
}
PAIR void hand_string_out_of_variant(ZRVARIANT* variant, ZRSTR* string) {
  *string = nullptr;
  if (variant->Type != ZR_VT_STR) return;
  *string = variant->Value.string;
  *variant = ZR_VARIANT_INIT;
}

PAIR void layer_double_to_variant(double number, zr::Variant* variant) { new (variant) zr::Variant(number); }
PAIR void hand_double_to_variant(double number, ZRVARIANT* variant) {
  *variant = ZR_VARIANT_INIT;
  variant->Type = ZR_VT_R8;
  variant->Value.r8 = number;
}

PAIR double layer_variant_to_double(const zr::Variant& variant) {
  return variant.Is<double>() ? variant.To<double>().ValueOr(-1) : -1;
}
PAIR double hand_variant_to_double(const ZRVARIANT* variant) {
  return variant->Type == ZR_VT_R8 ? variant->Value.r8 : -1;
}

PAIR void layer_drop_variant(zr::Variant* variant) { variant->~Variant(); }
PAIR void hand_drop_variant(ZRVARIANT* variant) {
  if (variant->Type != ZR_VT_EMPTY) (void)ZrVariantClear(variant);
}

// ---- Identifiers and blobs ------------------------------------------------------------------------------------------

PAIR bool layer_compare_uuids(const zr::Uuid& left, const zr::Uuid& right) { return left == right; }
PAIR bool hand_compare_uuids(const ZRUUID* left, const ZRUUID* right) {
  return std::memcmp(left, right, sizeof *left) == 0;
}

PAIR uint32_t layer_blob_size(const zr::Blob& blob) { return blob.Size(); }
PAIR uint32_t hand_blob_size(const ZRBLOB* blob) {
  uint32_t size = 0;
  if (*blob != nullptr) (void)ZrBlobByteLen(*blob, &size);
  return size;
}

// ---- Arrays ---------------------------------------------------------------------------------------------------------

PAIR double layer_array_sum(const zr::Array<double>& array) {
  double sum = 0;
  if (const auto lent = array.Lend()) {
    for (const double number : *lent) sum += number;
  }
  return sum;
}
PAIR double hand_array_sum(const ZRSAFEARRAY* array) {
  double sum = 0;
  void* data = nullptr;
  if (ZrSafeArrayAccessData(*array, &data) < 0) return sum;
  uint32_t count = 0;
  if (data != nullptr) (void)ZrSafeArrayGetElementCount(*array, &count, nullptr);
  for (const double *number = static_cast<double*>(data), *end = number + count; number != end; ++number)
    sum += *number;
  (void)ZrSafeArrayUnaccessData(*array);
  return sum;
}

PAIR double layer_array_element(const zr::Array<double>& array, uint32_t index) { return array.At(index).ValueOr(-1); }
PAIR double hand_array_element(const ZRSAFEARRAY* array, uint32_t index) {
  if (*array == nullptr) return -1;
  uint32_t dimensions = 0;
  const ZrSafeArrayBound* bounds = nullptr;
  if (ZrSafeArrayGetBounds(*array, &dimensions, &bounds) < 0 || dimensions != 1) return -1;
  if (index - static_cast<uint32_t>(bounds->lowerBound) >= bounds->elementCount) return -1;
  double element = 0;
  if (ZrSafeArrayGetElement(*array, &index, &element) < 0) return -1;
  return element;
}

// ---- Objects --------------------------------------------------------------------------------------------------------

PAIR ZRRESULT layer_create_object(const zr::Uuid& classId) { return zr::Create<IPlanet>(classId).Code(); }
PAIR ZRRESULT hand_create_object(const ZRUUID* classId) {
  void* object = nullptr;
  const ZRRESULT result = ZrCreateInstance(classId, 0, &IPlanet::kId, 0, &object);
  if (result < 0) return result;
  if (object == nullptr) return ZR_R_NO_INTERFACE;
  (void)static_cast<IPlanet*>(object)->Release();
  return result;
}
