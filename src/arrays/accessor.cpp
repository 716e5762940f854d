// One template for all accessors; what differs between elements stands in their kinds.

#include "arrays/accessor.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstring>

#include "arrays/element_conversion.h"
#include "arrays/element_traits.h"
#include "arrays/linear_index.h"

template <class Traits>
class CZrSafeArrayAccessor : public CZrSafeArrayAccessorBase {
 public:
  using Element = typename Traits::Element;
  static constexpr std::size_t kWidth = Traits::kWidth;
  using CZrSafeArrayAccessorBase::CZrSafeArrayAccessorBase;

  ZRRESULT AllocateData(uint32_t dimensions, const ZrSafeArrayBound* bounds, void** storage) const override {
    if (storage == nullptr || bounds == nullptr) return ZR_R_INVALID_POINTER;
    if (dimensions == 0) return ZR_R_INVALID_ARGUMENTS;
    const uint32_t count = ProductOfCounts(dimensions, bounds);
    *storage = count != 0 ? AllocateZeroedOrThrow(count, kWidth) : nullptr;
    if constexpr (!Traits::kIsPlain) Traits::Initialise(static_cast<Element*>(*storage), count);
    return ZR_R_OK;
  }

  ZRRESULT CopyData(uint32_t dimensions, const ZrSafeArrayBound* bounds, const void* source,
                    void** storage) const override {
    if (storage == nullptr || bounds == nullptr) return ZR_R_INVALID_POINTER;
    const uint32_t count = ProductOfCounts(dimensions, bounds);
    if constexpr (Traits::kIsPlain) {
      if (source != nullptr && dimensions != 0 && count != 0) {
        *storage = AllocateOrThrow(kWidth * count);
        std::memcpy(*storage, source, kWidth * count);
        return ZR_R_OK;
      }
    }
    CStorageHolder copy(*this, dimensions, bounds);
    if (const ZRRESULT result = AllocateData(dimensions, bounds, copy.Receive()); result != ZR_R_OK) return result;
    if constexpr (!Traits::kIsPlain) {
      const auto* from = static_cast<const Element*>(source);
      auto* to = static_cast<Element*>(copy.Get());
      for (uint32_t index = 0; from != nullptr && index < count; ++index) Traits::Copy(from[index], to[index]);
    }
    *storage = copy.Detach();
    return ZR_R_OK;
  }

  ZRRESULT DestroyData(void* storage, uint32_t dimensions, const ZrSafeArrayBound* bounds) const override {
    if (storage == nullptr) return ZR_R_INVALID_POINTER;
    if constexpr (!Traits::kIsPlain) {
      auto* elements = static_cast<Element*>(storage);
      const uint32_t count = ProductOfCounts(dimensions, bounds);
      for (uint32_t index = 0; index < count; ++index) ReleaseElement(elements[index]);
    }
    std::free(storage);
    return ZR_R_OK;
  }

  void* ElementAddress(void* storage, int32_t index) const noexcept override {
    return storage != nullptr ? static_cast<Element*>(storage) + index : nullptr;
  }

  ZRRESULT GetElementValue(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                           const uint32_t* indices, void* value) const override {
    if (descriptor == nullptr || bounds == nullptr || indices == nullptr || value == nullptr) {
      return ZR_R_INVALID_POINTER;
    }
    // That a variant's get alone fails otherwise is what callers rely on.
    constexpr ZRRESULT kNegative = std::same_as<Traits, VariantTraits> ? ZR_R_FAILED : ZR_R_INVALID_ARGUMENTS;
    const int32_t index = CZrSafeArrayAccessor::LinearIndex(descriptor->dimensions, bounds, indices);
    if (index < 0) return kNegative;
    auto& variable = *static_cast<Element*>(value);
    const auto* elements = static_cast<const Element*>(descriptor->data);
    if constexpr (Traits::kIsPlain) {
      if (elements == nullptr) return 1;
      std::memcpy(&variable, elements + index, kWidth);
      return ZR_R_OK;
    } else {
      if (elements != nullptr) return Traits::Deliver(elements[index], variable);
      Traits::DeliverNothing(variable);
      return 1;
    }
  }

  ZRRESULT PutElementValue(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                           const uint32_t* indices, const void* value) const override {
    if (descriptor == nullptr || bounds == nullptr || indices == nullptr || value == nullptr) {
      return ZR_R_INVALID_POINTER;
    }
    const int32_t index = CZrSafeArrayAccessor::LinearIndex(descriptor->dimensions, bounds, indices);
    auto* elements = static_cast<Element*>(descriptor->data);
    Element* element = index >= 0 && elements != nullptr ? elements + index : nullptr;
    const ZRRESULT withoutPlace = index < 0 ? ZR_R_INVALID_ARGUMENTS : 1;
    const auto& wanted = *static_cast<const Element*>(value);
    if constexpr (Traits::kIsPlain) {
      if (element == nullptr) return withoutPlace;
      std::memcpy(element, &wanted, kWidth);
      return ZR_R_OK;
    } else if constexpr (!Traits::kIsPointer) {
      return element != nullptr ? Traits::Acquire(wanted, *element) : withoutPlace;
    } else {
      // The old one goes before the new one is copied, and its place is null meanwhile.
      if (element != nullptr) ReleaseElement(*element);
      Element copy = nullptr;
      if (const ZRRESULT result = Traits::Acquire(wanted, copy); result != ZR_R_OK) return result;
      if (element == nullptr) return withoutPlace;  // the copy stays behind, by contract
      *element = copy;
      return ZR_R_OK;
    }
  }

  uint32_t CountElements(uint32_t dimensions, const ZrSafeArrayBound* bounds, uint64_t* bytes) const noexcept override {
    const uint32_t count = ProductOfCounts(dimensions, bounds);
    if (bytes != nullptr) *bytes = uint64_t{count} * kWidth;
    return count;
  }

  int32_t LinearIndex(uint32_t dimensions, const ZrSafeArrayBound* bounds,
                      const uint32_t* indices) const noexcept override {
    return LinearIndexOf(dimensions, bounds, indices);
  }

  ZRRESULT ConvertFrom(ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                       const CZrSafeArrayAccessorBase* source) const override {
    if (descriptor == nullptr || bounds == nullptr || source == nullptr) return ZR_R_INVALID_POINTER;
    if (descriptor->data == nullptr) return ZR_R_FAILED;
    const uint32_t dimensions = descriptor->dimensions, count = ProductOfCounts(dimensions, bounds);
    const uint16_t sourceTag = *source->AccessorType();
    CStorageHolder converted(*this, dimensions, bounds);
    bool all = false;
    if (BulkConversion* const convert = FindBulkConversion(sourceTag, Tag())) {
      *converted.Receive() = AllocateOrThrow(kWidth * count);  // every element is written
      all = convert(descriptor->data, converted.Get(), count);
    } else {
      (void)AllocateData(dimensions, bounds, converted.Receive());
      all = ConvertElements(sourceTag, descriptor->data, Tag(), converted.Get(), count);
    }
    void* before = std::exchange(descriptor->data, converted.Detach());
    descriptor->vartype = Tag();
    (void)source->DestroyData(before, dimensions, bounds);
    return all ? ZR_R_OK : 1;
  }

  ZRRESULT RedimData(ZrSafeArrayDescriptor* descriptor, uint32_t dimensions, const ZrSafeArrayBound* bounds,
                     const ZrSafeArrayBound* oldBounds) const override {
    if (descriptor == nullptr || bounds == nullptr || oldBounds == nullptr) return ZR_R_INVALID_POINTER;
    const uint32_t oldDimensions = descriptor->dimensions;
    const uint32_t count = ProductOfCounts(dimensions, bounds);
    const uint32_t oldCount = ProductOfCounts(oldDimensions, oldBounds);
    CStorageHolder fresh(*this, dimensions, bounds);
    void* before = descriptor->data;
    if (before == nullptr || count == 0) {
      (void)AllocateData(dimensions, bounds, fresh.Receive());
    } else if constexpr (Traits::kIsPlain) {
      *fresh.Receive() = ResizeBlock(std::exchange(before, nullptr), oldCount, count);
    } else {
      (void)AllocateData(dimensions, bounds, fresh.Receive());
      const auto* from = static_cast<const Element*>(before);
      auto* to = static_cast<Element*>(fresh.Get());
      for (uint32_t index = 0; index < std::min(count, oldCount); ++index) Traits::Carry(from[index], to[index]);
    }
    descriptor->data = fresh.Detach();
    descriptor->dimensions = dimensions;
    descriptor->bounds = nullptr;
    descriptor->elementCount = count;
    if (before != nullptr) (void)DestroyData(before, oldDimensions, oldBounds);
    return ZR_R_OK;
  }

  ZRRESULT CompareData(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayDescriptor* other,
                       const ZrSafeArrayBound* bounds, uint8_t* equal) const override {
    if (descriptor == nullptr || other == nullptr || bounds == nullptr || equal == nullptr) return ZR_R_INVALID_POINTER;
    *equal = 1;
    const uint32_t count = ProductOfCounts(descriptor->dimensions, bounds);
    if (count != ProductOfCounts(other->dimensions, bounds)) {
      *equal = 0;
      return ZR_R_OK;
    }
    if (count == 0 || descriptor->data == nullptr || other->data == nullptr) return ZR_R_OK;
    *equal = AreElementsEqual(static_cast<const Element*>(descriptor->data), static_cast<const Element*>(other->data),
                              count);
    return ZR_R_OK;
  }

 private:
  static void ReleaseElement(Element& element) {
    if constexpr (Traits::kIsPlain) {
    } else if constexpr (Traits::kIsPointer) {
      if (element != nullptr) Traits::Release(std::exchange(element, nullptr));
    } else {
      Traits::Release(element);
    }
  }

  // The block with room for another number of plain elements, new ones zero. It is unchanged if this throws.
  static void* ResizeBlock(void* block, std::size_t oldCount, std::size_t count) {
    auto* elements = static_cast<Element*>(ReallocateOrThrow(block, kWidth * count));
    if (count > oldCount) std::memset(elements + oldCount, 0, kWidth * (count - oldCount));
    return elements;
  }

  static bool AreElementsEqual(const Element* left, const Element* right, uint32_t count) {
    if constexpr (Traits::kIsPlain) {
      return std::memcmp(left, right, kWidth * count) == 0;
    } else {
      for (uint32_t index = 0; index < count; ++index) {
        if (!Traits::AreEqual(left[index], right[index])) return false;
      }
      return true;
    }
  }
};

// ---- The classes, and which tag has which --------------------------------------------------------------------------

template <class T>
class CZrSafeArrayAccessorScalar final : public CZrSafeArrayAccessor<PlainTraits<T>> {
  using CZrSafeArrayAccessor<PlainTraits<T>>::CZrSafeArrayAccessor;
};
class CZrSafeArrayAccessorZRBLOB final : public CZrSafeArrayAccessor<BlobTraits> {
  using CZrSafeArrayAccessor::CZrSafeArrayAccessor;
};
class CZrSafeArrayAccessorZRREF final : public CZrSafeArrayAccessor<RefTraits> {
  using CZrSafeArrayAccessor::CZrSafeArrayAccessor;
};
class CZrSafeArrayAccessorZRSREF final : public CZrSafeArrayAccessor<SrefTraits> {
  using CZrSafeArrayAccessor::CZrSafeArrayAccessor;
};
class CZrSafeArrayAccessorZRSTR final : public CZrSafeArrayAccessor<StringTraits> {
  using CZrSafeArrayAccessor::CZrSafeArrayAccessor;
};
class CZrSafeArrayAccessorZRUUID final : public CZrSafeArrayAccessor<UuidTraits> {
  using CZrSafeArrayAccessor::CZrSafeArrayAccessor;
};
class CZrSafeArrayAccessorRefCounted final : public CZrSafeArrayAccessor<InterfaceTraits> {
  using CZrSafeArrayAccessor::CZrSafeArrayAccessor;
};
class CZrSafeArrayAccessorVariant final : public CZrSafeArrayAccessor<VariantTraits> {
  using CZrSafeArrayAccessor::CZrSafeArrayAccessor;
};

struct CAccessorClass {
  Storage storage = Storage::None;
  std::size_t width = 0;
  CZrSafeArrayAccessorBase* (*create)(uint16_t tag) = nullptr;
};

template <class Accessor>
static consteval CAccessorClass Of(Storage storage) {
  return {storage, Accessor::kWidth, [](uint16_t tag) -> CZrSafeArrayAccessorBase* { return new Accessor(tag); }};
}

template <class T>
static consteval CAccessorClass Scalar(Storage storage) {
  return Of<CZrSafeArrayAccessorScalar<T>>(storage);
}

struct CAccessorRow {
  uint16_t tag;
  CAccessorClass what;
};

// clang-format off
static constexpr CAccessorRow kAccessorRows[] = {
  {ZR_VT_BOOL,     Scalar<uint8_t>(Storage::Unsigned8)},
  {ZR_VT_I1,       Scalar<int8_t>(Storage::Signed8)},
  {ZR_VT_I2,       Scalar<int16_t>(Storage::Signed16)},
  {ZR_VT_I4,       Scalar<int32_t>(Storage::Signed32)},
  {ZR_VT_I8,       Scalar<int64_t>(Storage::Signed64)},
  {ZR_VT_UI1,      Scalar<uint8_t>(Storage::Unsigned8)},
  {ZR_VT_UI2,      Scalar<uint16_t>(Storage::Unsigned16)},
  {ZR_VT_UI4,      Scalar<uint32_t>(Storage::Unsigned32)},
  {ZR_VT_UI8,      Scalar<uint64_t>(Storage::Unsigned64)},
  {ZR_VT_R4,       Scalar<float>(Storage::Real32)},
  {ZR_VT_R8,       Scalar<double>(Storage::Real64)},
  {ZR_VT_TIME,     Scalar<int64_t>(Storage::Signed64)},
  {ZR_VT_DATETIME, Scalar<int64_t>(Storage::Signed64)},
  {ZR_VT_CY,       Scalar<ZRCY>(Storage::Currency)},
  {ZR_VT_BYTE,     Scalar<uint8_t>(Storage::Unsigned8)},
  {ZR_VT_WORD,     Scalar<uint16_t>(Storage::Unsigned16)},
  {ZR_VT_DWORD,    Scalar<uint32_t>(Storage::Unsigned32)},
  {ZR_VT_QWORD,    Scalar<uint64_t>(Storage::Unsigned64)},
  {ZR_VT_BLOB,     Of<CZrSafeArrayAccessorZRBLOB>(Storage::Blob)},
  {ZR_VT_UNKNOWN,  Of<CZrSafeArrayAccessorRefCounted>(Storage::Interface)},
  {ZR_VT_CHAR32,   Scalar<uint32_t>(Storage::Unsigned32)},
  {ZR_VT_VARIANT,  Of<CZrSafeArrayAccessorVariant>(Storage::Variant)},
  {ZR_VT_UUID,     Of<CZrSafeArrayAccessorZRUUID>(Storage::Uuid)},
  {ZR_VT_STR,      Of<CZrSafeArrayAccessorZRSTR>(Storage::String)},
  {ZR_VT_REF,      Of<CZrSafeArrayAccessorZRREF>(Storage::Ref)},
  {ZR_VT_SREF,     Of<CZrSafeArrayAccessorZRSREF>(Storage::Sref)},
  {ZR_VT_DISPATCH, Of<CZrSafeArrayAccessorRefCounted>(Storage::Interface)},
};
// clang-format on

static constexpr auto kAccessors = [] {
  std::array<CAccessorClass, kTagCount> classes{};
  for (const CAccessorRow& row : kAccessorRows) classes[row.tag] = row.what;
  return classes;
}();

Storage StorageOf(uint16_t tag) noexcept { return kAccessors[TagIndex(tag)].storage; }

std::size_t ElementWidth(uint16_t tag) noexcept { return kAccessors[TagIndex(tag)].width; }

CZrSafeArrayAccessorBase* CreateAccessorForTag(uint16_t tag) {
  const CAccessorClass& what = kAccessors[TagIndex(tag)];
  return what.create != nullptr ? what.create(tag) : nullptr;
}
