// The element object: an array's parts, from its making to its end.

#include "arrays/array_element.h"

#include <cstring>
#include <memory>

#include "arrays/accessor.h"
#include "arrays/linear_index.h"
#include "variants/variant_tags.h"

using CBoundsHolder = std::unique_ptr<ZrSafeArrayBound, HeapFree>;

static CBoundsHolder CopyBounds(uint32_t dimensions, const ZrSafeArrayBound* bounds) {
  if (dimensions == 0) return nullptr;
  const std::size_t bytes = std::size_t{dimensions} * sizeof *bounds;
  CBoundsHolder copy(static_cast<ZrSafeArrayBound*>(AllocateOrThrow(bytes)));
  std::memcpy(copy.get(), bounds, bytes);
  return copy;
}

void CZrSafeArrayElement::MakeDescriptor(uint16_t tag, uint32_t dimensions, uint32_t elementCount,
                                         const ZrSafeArrayBound* bounds) {
  descriptor_ =
      HeapNew<ZrSafeArrayDescriptor>(ZrSafeArrayDescriptor{dimensions, elementCount, tag, this, nullptr, nullptr});
  descriptor_->bounds = bounds_ = CopyBounds(dimensions, bounds).release();
}

CZrSafeArrayElement::CZrSafeArrayElement(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds) noexcept {
  MakeDescriptor(tag & ZR_VT_TYPEMASK, dimensions, bounds->elementCount, bounds);
  accessor_ = CreateAccessorForTag(tag & ZR_VT_TYPEMASK);
  if (accessor_ == nullptr) return;
  if (accessor_->AllocateData(dimensions, bounds_, &descriptor_->data) != ZR_R_OK) return;
  descriptor_->elementCount = ProductOfCounts(dimensions, bounds_);
}

CZrSafeArrayElement::CZrSafeArrayElement(const CZrSafeArrayElement& source) noexcept {
  const ZrSafeArrayDescriptor* from = source.descriptor_;
  if (from == nullptr || source.bounds_ == nullptr) return;
  MakeDescriptor(from->vartype, from->dimensions, from->elementCount, source.bounds_);
  // The storage was made by the source's accessor, whatever the tag says. Without storage the tag decides.
  accessor_ = CreateAccessorForTag(from->data != nullptr ? *source.accessor_->AccessorType() : from->vartype);
  if (accessor_ == nullptr) return;
  (void)accessor_->CopyData(from->dimensions, bounds_, from->data, &descriptor_->data);
}

CZrSafeArrayElement::~CZrSafeArrayElement() {
  if (accessor_ != nullptr && descriptor_ != nullptr) {
    (void)accessor_->DestroyData(descriptor_->data, descriptor_->dimensions, bounds_);
  }
  delete accessor_;
  HeapDelete(descriptor_);
  std::free(bounds_);
}

// Takes the flag for the duration of a get or put.
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
    if (bounds_ == nullptr || descriptor_ == nullptr || accessor_ == nullptr) return ZR_R_FAILED;
    return accessor_->GetElementValue(descriptor_, bounds_, indices, value);
  });
}

ZRRESULT CZrSafeArrayElement::Put(const uint32_t* indices, const void* value) {
  return WithFlag(*this, [&] {
    if (bounds_ == nullptr || descriptor_ == nullptr || accessor_ == nullptr) return ZR_R_FAILED;
    return accessor_->PutElementValue(descriptor_, bounds_, indices, value);
  });
}

ZRRESULT CZrSafeArrayElement::ChangeType(uint16_t tagWord) {
  const uint16_t tag = tagWord & ZR_VT_TYPEMASK;
  if (descriptor_ == nullptr || bounds_ == nullptr) return ZR_R_FAILED;
  std::unique_ptr<CZrSafeArrayAccessorBase> accessor(CreateAccessorForTag(tag));
  if (accessor == nullptr) return ZR_R_FAILED;
  const ZRRESULT result = accessor_ != nullptr ? accessor->ConvertFrom(descriptor_, bounds_, accessor_) : ZR_R_FAILED;
  delete accessor_;
  accessor_ = accessor.release();  // whatever came of it
  return result;
}

ZRRESULT CZrSafeArrayElement::Redim(uint32_t dimensions, const ZrSafeArrayBound* bounds) {
  if (descriptor_ == nullptr || bounds_ == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  if (bounds == nullptr || dimensions == 0) return ZR_R_INVALID_ARGUMENTS;
  if (accessor_ == nullptr) return ZR_R_FAILED;
  // Their block is used again if it has room: a small new one might end up behind large elements and
  // keep them from growing.
  CBoundsHolder copy = dimensions > descriptor_->dimensions ? CopyBounds(dimensions, bounds) : nullptr;
  if (const ZRRESULT result = accessor_->RedimData(descriptor_, dimensions, bounds, bounds_); result != ZR_R_OK) {
    return result;
  }
  if (copy != nullptr) {
    std::free(bounds_);
    bounds_ = copy.release();
  } else {
    std::memmove(bounds_, bounds, std::size_t{dimensions} * sizeof *bounds);
  }
  descriptor_->bounds = bounds_;
  return ZR_R_OK;
}

bool CZrSafeArrayElement::HasShapeOf(const CZrSafeArrayElement& other) const noexcept {
  if (bounds_ == nullptr || descriptor_ == nullptr) return true;
  if (other.descriptor_ == nullptr || descriptor_->dimensions != other.descriptor_->dimensions) return false;
  return std::memcmp(bounds_, other.bounds_, std::size_t{descriptor_->dimensions} * sizeof *bounds_) == 0;
}

void CZrSafeArrayElement::Compare(const CZrSafeArrayElement& other, uint8_t* equal) const {
  if (!HasShapeOf(other)) return;  // and no answer
  *equal = 1;
  if (this == &other || bounds_ == nullptr || other.bounds_ == nullptr || accessor_ == nullptr) return;
  if (descriptor_->vartype != other.descriptor_->vartype) return;  // of one shape and of different types: equal
  if (other.accessor_ == nullptr) return;
  // Under one tag the elements are of two types: one array was changed while it had none. They can't be compared.
  if (*accessor_->AccessorType() != *other.accessor_->AccessorType()) {
    *equal = 0;
    return;
  }
  (void)accessor_->CompareData(descriptor_, other.descriptor_, bounds_, equal);
}
