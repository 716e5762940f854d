// One class template for all accessors. What differs between element types is in the traits of element_traits.h.
//
//     tag -> row of kAccessorRows -> class, such as CZrSafeArrayAccessorZRSTR -> CZrSafeArrayAccessor<StringTraits>
//
// Plain elements (numbers, UUIDs) are copied, compared and resized as one block of bytes. All others are handled in
// loops, one element at a time, by the operations of their traits.
//
// Rules that all loops follow:
//   1. The number of elements is the product of the counts modulo 2^32, computed anew from the bounds in each call. The
//      storage is allocated from the same product, so a loop up to it never leaves the storage, even if the product has
//      wrapped. Only an offset from indices can leave it: nothing but its sign is checked.
//   2. Storage may be null: the array has no elements. This is not an error, except for a conversion.
//   3. A pointer element may be null. Each operation of the traits treats null in its own way; element_traits.h has the
//      table.
//   4. A loop over all elements ignores a copy that is refused: the new element stays null. Only a put reports it.
//   5. New storage is complete before it replaces the old one, and a CStorageHolder owns it until then. So an exception
//      from a copy leaves the array unchanged.

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

  // The block is zeroed by the allocation, which is all that plain elements and pointers need. Empty variants are not
  // zeros: they have marker words.
  ZRRESULT AllocateData(uint32_t dimensions, const ZrSafeArrayBound* bounds, void** storage) const override {
    if (storage == nullptr || bounds == nullptr) return ZR_R_INVALID_POINTER;
    if (dimensions == 0) return ZR_R_INVALID_ARGUMENTS;
    const uint32_t count = ProductOfCounts(dimensions, bounds);
    *storage = count != 0 ? AllocateZeroedOrThrow(count, kWidth) : nullptr;
    if constexpr (!Traits::kIsPlain) Traits::Initialise(static_cast<Element*>(*storage), count);
    return ZR_R_OK;
  }

  // Plain elements are not zeroed before they are overwritten. All other elements are empty before their copies are
  // made, so the holder can destroy the block at any time.
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

  // The block was allocated for the same bounds, by this accessor or by one of the same tag.
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
    // For a negative offset a get of a variant returns another code than all other gets and puts. Callers rely on it.
    constexpr ZRRESULT kNegativeOffset = std::same_as<Traits, VariantTraits> ? ZR_R_FAILED : ZR_R_INVALID_ARGUMENTS;
    const int32_t index = CZrSafeArrayAccessor::LinearIndex(descriptor->dimensions, bounds, indices);
    if (index < 0) return kNegativeOffset;
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

  // The order of the steps is part of the contract, and it is not the obvious one. For pointers the value is copied
  // before it is known whether there is an element to store it in. So a value that is refused is reported rather than a
  // bad offset; and for a bad offset, or without storage, the copy leaks.
  ZRRESULT PutElementValue(const ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                           const uint32_t* indices, const void* value) const override {
    if (descriptor == nullptr || bounds == nullptr || indices == nullptr || value == nullptr) {
      return ZR_R_INVALID_POINTER;
    }
    const int32_t index = CZrSafeArrayAccessor::LinearIndex(descriptor->dimensions, bounds, indices);
    auto* elements = static_cast<Element*>(descriptor->data);
    Element* element = index >= 0 && elements != nullptr ? elements + index : nullptr;
    const ZRRESULT resultWithoutElement = index < 0 ? ZR_R_INVALID_ARGUMENTS : 1;
    const auto& newValue = *static_cast<const Element*>(value);
    if constexpr (Traits::kIsPlain) {
      if (element == nullptr) return resultWithoutElement;
      std::memcpy(element, &newValue, kWidth);
      return ZR_R_OK;
    } else if constexpr (!Traits::kIsPointer) {
      return element != nullptr ? Traits::Acquire(newValue, *element) : resultWithoutElement;
    } else {
      // The old value is released before the new one is copied. The element is null in between, and stays null if the
      // copy is refused or throws: otherwise it would refer to the released value.
      if (element != nullptr) ReleaseElement(*element);
      Element copy = nullptr;
      if (const ZRRESULT result = Traits::Acquire(newValue, copy); result != ZR_R_OK) return result;
      if (element == nullptr) return resultWithoutElement;  // the copy leaks, as the contract requires
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

  // This accessor is the new one, `source` the old one, which alone can release the old elements. A loop writes every
  // element, so its storage need not be zeroed. ConvertElements leaves an element as it is if it does not convert, so
  // its storage must be zero before. Nothing throws while texts are written: `converted` would release elements that
  // have no value yet.
  ZRRESULT ConvertFrom(ZrSafeArrayDescriptor* descriptor, const ZrSafeArrayBound* bounds,
                       const CZrSafeArrayAccessorBase* source) const override {
    if (descriptor == nullptr || bounds == nullptr || source == nullptr) return ZR_R_INVALID_POINTER;
    if (descriptor->data == nullptr) return ZR_R_FAILED;
    const uint32_t dimensions = descriptor->dimensions, count = ProductOfCounts(dimensions, bounds);
    const uint16_t sourceTag = *source->AccessorType();
    CStorageHolder converted(*this, dimensions, bounds);
    bool allConverted = false;
    if (BulkConversion* const convert = FindBulkConversion(sourceTag, Tag())) {
      *converted.Receive() = AllocateOrThrow(kWidth * count);  // every element is written
      allConverted = convert(descriptor->data, converted.Get(), count);
    } else {
      (void)AllocateData(dimensions, bounds, converted.Receive());
      allConverted = ConvertElements(sourceTag, descriptor->data, Tag(), converted.Get(), count);
    }
    void* oldStorage = std::exchange(descriptor->data, converted.Detach());
    descriptor->vartype = Tag();
    (void)source->DestroyData(oldStorage, dimensions, bounds);
    return allConverted ? ZR_R_OK : 1;
  }

  // Elements keep their offset in the block, not their indices. Plain elements are resized in place if the heap can do
  // so. Other elements are copied and the old ones released, instead of being moved as bytes: callers rely on the
  // effects that copying has, such as empty strings in place of null strings.
  ZRRESULT RedimData(ZrSafeArrayDescriptor* descriptor, uint32_t dimensions, const ZrSafeArrayBound* bounds,
                     const ZrSafeArrayBound* oldBounds) const override {
    if (descriptor == nullptr || bounds == nullptr || oldBounds == nullptr) return ZR_R_INVALID_POINTER;
    const uint32_t oldDimensions = descriptor->dimensions;
    const uint32_t count = ProductOfCounts(dimensions, bounds);
    const uint32_t oldCount = ProductOfCounts(oldDimensions, oldBounds);
    CStorageHolder newStorage(*this, dimensions, bounds);
    void* oldStorage = descriptor->data;
    if (oldStorage == nullptr || count == 0) {
      (void)AllocateData(dimensions, bounds, newStorage.Receive());
    } else if constexpr (Traits::kIsPlain) {
      *newStorage.Receive() = ResizeBlock(std::exchange(oldStorage, nullptr), oldCount, count);  // frees the old block
    } else {
      (void)AllocateData(dimensions, bounds, newStorage.Receive());
      const auto* from = static_cast<const Element*>(oldStorage);
      auto* to = static_cast<Element*>(newStorage.Get());
      for (uint32_t index = 0; index < std::min(count, oldCount); ++index) Traits::CopyForRedim(from[index], to[index]);
    }
    descriptor->data = newStorage.Detach();
    descriptor->dimensions = dimensions;
    descriptor->bounds = nullptr;
    descriptor->elementCount = count;
    if (oldStorage != nullptr) (void)DestroyData(oldStorage, oldDimensions, oldBounds);
    return ZR_R_OK;
  }

  // Arrays without storage are equal. The caller has found that the shapes are equal, so one set of bounds serves for
  // both.
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
  // A pointer becomes null before it is released: a callback of the object finds a null element, not a dangling one.
  static void ReleaseElement(Element& element) {
    if constexpr (Traits::kIsPlain) {
    } else if constexpr (Traits::kIsPointer) {
      if (element != nullptr) Traits::Release(std::exchange(element, nullptr));
    } else {
      Traits::Release(element);
    }
  }

  // Resizes a block of plain elements, `count` above 0, and zeroes the additional ones. The block is unchanged if this
  // throws.
  static void* ResizeBlock(void* block, std::size_t oldCount, std::size_t count) {
    auto* elements = static_cast<Element*>(ReallocateOrThrow(block, kWidth * count));
    if (count > oldCount) std::memset(elements + oldCount, 0, kWidth * (count - oldCount));
    return elements;
  }

  // Plain elements are equal if their bytes are: 0.0 differs from -0.0, and a NaN equals the same NaN. This is not how
  // variants of the same numbers compare; callers rely on both.
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

// ---- The classes, and the class of each tag ------------------------------------------------------------------------

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

// How to create an accessor for a tag. Tags that elements cannot have keep the defaults.
struct CAccessorClass {
  Storage storage = Storage::None;
  std::size_t width = 0;
  CZrSafeArrayAccessorBase* (*create)(uint16_t tag, void* memory) noexcept = nullptr;
};

// The entry for a class. Several tags may share a class, so the tag is an argument of `create`.
template <class Accessor>
static consteval CAccessorClass ClassOf(Storage storage) {
  static_assert(sizeof(Accessor) == sizeof(CZrSafeArrayAccessorBase), "the memory of a CAccessorHolder is too small");
  return {storage, Accessor::kWidth, [](uint16_t tag, void* memory) noexcept -> CZrSafeArrayAccessorBase* {
            return ::new (memory) Accessor(tag);
          }};
}

template <class T>
static consteval CAccessorClass Scalar(Storage storage) {
  return ClassOf<CZrSafeArrayAccessorScalar<T>>(storage);
}

struct CAccessorRow {
  uint16_t tag;
  CAccessorClass accessorClass;
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
  {ZR_VT_BLOB,     ClassOf<CZrSafeArrayAccessorZRBLOB>(Storage::Blob)},
  {ZR_VT_UNKNOWN,  ClassOf<CZrSafeArrayAccessorRefCounted>(Storage::Interface)},
  {ZR_VT_CHAR32,   Scalar<uint32_t>(Storage::Unsigned32)},
  {ZR_VT_VARIANT,  ClassOf<CZrSafeArrayAccessorVariant>(Storage::Variant)},
  {ZR_VT_UUID,     ClassOf<CZrSafeArrayAccessorZRUUID>(Storage::Uuid)},
  {ZR_VT_STR,      ClassOf<CZrSafeArrayAccessorZRSTR>(Storage::String)},
  {ZR_VT_REF,      ClassOf<CZrSafeArrayAccessorZRREF>(Storage::Ref)},
  {ZR_VT_SREF,     ClassOf<CZrSafeArrayAccessorZRSREF>(Storage::Sref)},
  {ZR_VT_DISPATCH, ClassOf<CZrSafeArrayAccessorRefCounted>(Storage::Interface)},
};
// clang-format on

// The rows above by tag.
static constexpr auto kAccessors = [] {
  std::array<CAccessorClass, kTagCount> classes{};
  for (const CAccessorRow& row : kAccessorRows) classes[row.tag] = row.accessorClass;
  return classes;
}();

Storage StorageOf(uint16_t tag) noexcept { return kAccessors[TagIndex(tag)].storage; }

std::size_t ElementWidth(uint16_t tag) noexcept { return kAccessors[TagIndex(tag)].width; }

CZrSafeArrayAccessorBase* CreateAccessorForTag(uint16_t tag, void* memory) noexcept {
  const CAccessorClass& accessorClass = kAccessors[TagIndex(tag)];
  return accessorClass.create != nullptr ? accessorClass.create(tag, memory) : nullptr;
}
