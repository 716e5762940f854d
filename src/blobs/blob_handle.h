// The record that a ZRBLOB points to, and the holder by which the rest of the library owns a handle.
//
//     ZRBLOB -> tagZRBLOB { block, element }          one per handle
//                             |       '-> CZrBlobElement { block }     owns one reference on the block
//                             '-------------------> ZrBlobBlock        shared until one of its handles is changed
//
//     a = ZrCreateBlob(...), b = ZrCopyBlob(a)     two handles, two elements, one block with refCount 2
//     ZrWriteBlob(b, ...)                          b gets a new element with a block of its own; refCount 1 each
//
// Invariants:
//   1. A handle's block pointer is a copy of its element's block pointer. It saves one indirection when the reference
//      count is tested. Both pointers are replaced together.
//   2. A handle that the manager made has an element, and the element has a block. Callers can build other handles, so
//      the manager tests both. A block counts as missing if either pointer is null.
//   3. Only elements own references on blocks.

#pragma once

#include <cassert>
#include <cstddef>
#include <memory>
#include <utility>

#include "blobs/blob_block.h"
#include "runtime/heap.h"
#include "zrcore/blob.h"

// Owns one reference on a block. The contract fixes the layout, a table pointer and the block pointer, and that the
// constructors are noexcept: if one of them runs out of memory, the process terminates. Unlike them, operator new
// throws std::bad_alloc.
class CZrBlobElement final : public HeapObject {
 public:
  CZrBlobElement() noexcept = default;
  CZrBlobElement(uint32_t size, const void* bytes) noexcept : block_(ZrBlobBlock::Create(size, bytes)) {}
  explicit CZrBlobElement(const ZrBlobBlock& original) noexcept : block_(ZrBlobBlock::Duplicate(original)) {}
  CZrBlobElement(const CZrBlobElement& other) noexcept : block_(other.block_) {  // shares the block
    if (block_ != nullptr) block_->AddReference();
  }
  CZrBlobElement& operator=(const CZrBlobElement&) = delete;
  // Fixed by contract: virtual.
  virtual ~CZrBlobElement() {
    if (block_ != nullptr) std::exchange(block_, nullptr)->Release();
  }

  ZrBlobBlock* Block() const noexcept { return block_; }

 private:
  ZrBlobBlock* block_ = nullptr;
};

static_assert(sizeof(CZrBlobElement) == 16);

// Two plain pointers without a destructor: ReleaseBlob deletes the element.
struct tagZRBLOB {
  tagZRBLOB() noexcept = default;
  explicit tagZRBLOB(CZrBlobElement* owned) noexcept : block(owned->Block()), element(owned) {}

  // The element must not be null. Returns null if the block is missing.
  ZrBlobBlock* Block() const noexcept { return block != nullptr ? element->Block() : nullptr; }

  // Returns the block for a change. The element must not be null, and CZrBlobMgr::EnsureExclusive must have run.
  // Returns null if the block is missing or if other elements share it. In a sound handle other elements can share it
  // only if another thread has copied the handle in between, which is a data race of the callers.
  ZrBlobBlock* ExclusiveBlock() const noexcept {
    ZrBlobBlock* found = Block();
    return found != nullptr && found->RefCount() == 1 ? found : nullptr;
  }

  ZrBlobBlock* block = nullptr;
  CZrBlobElement* element = nullptr;
};
static_assert(sizeof(tagZRBLOB) == 16 && offsetof(tagZRBLOB, element) == 8);

// ZrCopyBlob without its result code. Null returns null; another handle must have an element. Throws std::bad_alloc.
[[nodiscard]] inline ZRBLOB ShareBlob(ZRBLOB source) {
  if (source == nullptr) return nullptr;
  auto element = std::make_unique<CZrBlobElement>(*source->element);
  ZRBLOB blob = HeapNew<tagZRBLOB>(element.get());
  (void)element.release();  // the handle owns it now
  return blob;
}

// ZrDestroyBlob without its result code. Null is ignored, and the element may be missing.
inline void ReleaseBlob(ZRBLOB blob) noexcept {
  if (blob == nullptr) return;
  delete blob->element;
  HeapDelete(blob);
}

// Owns a handle and releases it at the end of the scope. The handle may be null.
class CBlobHolder {
 public:
  CBlobHolder() noexcept = default;
  // Adopt takes the handle of the caller; Share makes a second handle and throws std::bad_alloc.
  static CBlobHolder Adopt(ZRBLOB blob) noexcept { return CBlobHolder(blob); }
  static CBlobHolder Share(ZRBLOB blob) { return CBlobHolder(ShareBlob(blob)); }
  CBlobHolder(CBlobHolder&& other) noexcept : blob_(other.Detach()) {}
  CBlobHolder& operator=(CBlobHolder&& other) noexcept {
    CBlobHolder taken(std::move(other));
    std::swap(blob_, taken.blob_);  // `taken` releases the old handle
    return *this;
  }
  ~CBlobHolder() { ReleaseBlob(blob_); }

  ZRBLOB Get() const noexcept { return blob_; }
  [[nodiscard]] ZRBLOB Detach() noexcept { return std::exchange(blob_, nullptr); }
  ZRBLOB* Receive() noexcept {  // for an out-parameter
    assert(blob_ == nullptr);
    return &blob_;
  }

 private:
  explicit CBlobHolder(ZRBLOB blob) noexcept : blob_(blob) {}
  ZRBLOB blob_ = nullptr;
};
