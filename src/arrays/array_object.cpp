// The element object: how the parts of an array are created, replaced and destroyed.
//
// Not every array has all parts:
//
//     an ordinary array                  descriptor, bounds, accessor, storage
//     a dimension with a count of 0      descriptor, bounds, accessor
//     a tag that elements cannot have    descriptor, bounds
//     no dimensions                      descriptor, accessor
//
// ChangeType and Redim allocate everything that they need before they change the array. So an exception or a failure
// leaves the array as it was, with one exception: see ChangeType.

#include "arrays/array_object.h"

#include <cstring>
#include <memory>

#include "arrays/accessor.h"
#include "arrays/linear_index.h"
#include "variants/variant_tags.h"

using CBoundsHolder = std::unique_ptr<ZrSafeArrayBound, HeapFree>;

static std::size_t SizeOfBounds(uint32_t dimensions) noexcept {
  return std::size_t{dimensions} * sizeof(ZrSafeArrayBound);
}

static CBoundsHolder CopyBounds(uint32_t dimensions, const ZrSafeArrayBound* bounds) {
  CBoundsHolder copy(static_cast<ZrSafeArrayBound*>(AllocateOrThrow(SizeOfBounds(dimensions))));
  std::memcpy(copy.get(), bounds, SizeOfBounds(dimensions));
  return copy;
}

void CZrSafeArrayElement::MakeDescriptor(uint16_t tag, uint32_t dimensions, uint32_t elementCount,
                                         const ZrSafeArrayBound* bounds) noexcept {
  if (dimensions != 0) {
    bounds_ = BoundsInBlock();
    std::memcpy(bounds_, bounds, SizeOfBounds(dimensions));
  }
  descriptorInBlock_ = {dimensions, elementCount, tag, this, nullptr, bounds_};
  descriptor_ = &descriptorInBlock_;
}

// The descriptor first has the count of the first record as its number of elements. It gets the product of all counts
// only after the storage was allocated: an array that cannot have elements keeps the first count, and
// ZrVariantIsContentEmpty judges it by that.
CZrSafeArrayElement::CZrSafeArrayElement(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds) noexcept {
  MakeDescriptor(tag & ZR_VT_TYPEMASK, dimensions, bounds->elementCount, bounds);
  accessor_.Make(tag & ZR_VT_TYPEMASK);
  if (!accessor_) return;
  if (accessor_->AllocateData(dimensions, bounds_, &descriptor_->data) != ZR_R_OK) return;
  descriptor_->elementCount = ProductOfCounts(dimensions, bounds_);
}

CZrSafeArrayElement::CZrSafeArrayElement(const CZrSafeArrayElement& source) noexcept {
  const ZrSafeArrayDescriptor* from = source.descriptor_;
  MakeDescriptor(from->vartype, from->dimensions, from->elementCount, source.bounds_);
  // The elements have the type of the source's accessor, which may not be the descriptor's tag; see array_records.h.
  accessor_.Make(from->data != nullptr ? *source.accessor_->AccessorType() : from->vartype);
  if (!accessor_) return;
  (void)accessor_->CopyData(from->dimensions, bounds_, from->data, &descriptor_->data);
}

CZrSafeArrayElement::~CZrSafeArrayElement() {
  if (accessor_) (void)accessor_->DestroyData(descriptor_->data, descriptor_->dimensions, bounds_);
  FreeMovedBounds();
}

// Calls `access` with the access flag set, and clears the flag afterwards, also if `access` throws. Fails at once if
// the flag is set.
template <class Access>
static ZRRESULT WithFlag(CZrSafeArrayElement& element, Access&& access) {
  struct CFlag {
    CZrSafeArrayElement& element;
    ~CFlag() { (void)element.Unlock(); }
  };
  if (!element.TryLock()) return ZR_R_INVALID_OBJECT_STATE;
  const CFlag flag{element};
  return access();
}

ZRRESULT CZrSafeArrayElement::Get(const uint32_t* indices, void* value) {
  return WithFlag(*this, [&] {
    if (bounds_ == nullptr || !accessor_) return ZR_R_FAILED;
    return accessor_->GetElementValue(descriptor_, bounds_, indices, value);
  });
}

ZRRESULT CZrSafeArrayElement::Put(const uint32_t* indices, const void* value) {
  return WithFlag(*this, [&] {
    if (bounds_ == nullptr || !accessor_) return ZR_R_FAILED;
    return accessor_->PutElementValue(descriptor_, bounds_, indices, value);
  });
}

// The new accessor is installed even if the conversion failed because there are no elements: the descriptor keeps the
// old tag, but elements that Redim adds later have the new type. Callers rely on it. After an exception the old
// accessor stays.
ZRRESULT CZrSafeArrayElement::ChangeType(uint16_t tagWord) {
  const uint16_t tag = tagWord & ZR_VT_TYPEMASK;
  if (bounds_ == nullptr) return ZR_R_FAILED;
  const CAccessorHolder accessor(tag);
  if (!accessor) return ZR_R_FAILED;
  const ZRRESULT result = accessor_ ? accessor->ConvertFrom(descriptor_, bounds_, accessor_.Get()) : ZR_R_FAILED;
  accessor_.Make(tag);  // an equal one: accessors differ by their tag only
  return result;
}

ZRRESULT CZrSafeArrayElement::Redim(uint32_t dimensions, const ZrSafeArrayBound* bounds) {
  if (bounds_ == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  if (bounds == nullptr || dimensions == 0) return ZR_R_INVALID_ARGUMENTS;
  if (!accessor_) return ZR_R_FAILED;
  // The memory of the bounds is reused unless the number of dimensions grows. A new block is allocated before the
  // elements change, in case it throws.
  CBoundsHolder copy = dimensions > descriptor_->dimensions ? CopyBounds(dimensions, bounds) : nullptr;
  if (const ZRRESULT result = accessor_->RedimData(descriptor_, dimensions, bounds, bounds_); result != ZR_R_OK) {
    return result;
  }
  if (copy != nullptr) {
    FreeMovedBounds();
    bounds_ = copy.release();
  } else {
    std::memmove(bounds_, bounds, SizeOfBounds(dimensions));
  }
  descriptor_->bounds = bounds_;
  return ZR_R_OK;
}

// Counts and lower bounds of all dimensions are equal. An array without dimensions on the left counts as having every
// shape, and so equals every array; on the right it does not.
bool CZrSafeArrayElement::HasShapeOf(const CZrSafeArrayElement& other) const noexcept {
  if (bounds_ == nullptr) return true;
  if (descriptor_->dimensions != other.descriptor_->dimensions) return false;
  return std::memcmp(bounds_, other.bounds_, SizeOfBounds(descriptor_->dimensions)) == 0;
}

// Arrays of the same shape are equal unless their elements can be compared and differ. So arrays with different tags
// are equal, and arrays that cannot have elements are; callers rely on it.
void CZrSafeArrayElement::Compare(const CZrSafeArrayElement& other, uint8_t* equal) const {
  if (!HasShapeOf(other)) return;  // `*equal` stays unchanged
  *equal = 1;
  if (this == &other || bounds_ == nullptr || other.bounds_ == nullptr || !accessor_) return;
  if (descriptor_->vartype != other.descriptor_->vartype) return;  // equal
  if (!other.accessor_) return;
  // The descriptors have the same tag, but the elements have different types: ChangeType was called for one of the
  // arrays while it had no elements. Comparing would read the elements of one array as the type of the other.
  if (*accessor_->AccessorType() != *other.accessor_->AccessorType()) {
    *equal = 0;
    return;
  }
  (void)accessor_->CompareData(descriptor_, other.descriptor_, bounds_, equal);
}
