// What a ZRBLOB points at, and the owner that the rest of the library holds it by.
//
//     ZRBLOB -> tagZRBLOB { block, element }          one for each handle
//                             |       '-> CZrBlobElement { block }     owns one reference on the block
//                             '-------------------> ZrBlobBlock        shared until somebody changes it
//
// The handle's block is a copy of the element's, so that the question whether bytes are shared costs one step less.
// Both are rewritten together. Handles that the manager made have an element, and elements have a block. A block counts
// as missing if either pointer is null.

#pragma once

#include <cassert>
#include <cstddef>
#include <memory>
#include <utility>

#include "blobs/blob_block.h"
#include "runtime/heap.h"
#include "zrcore/blob.h"

// The constructors can't throw: where they need memory and there is none, the process ends.
class CZrBlobElement final {
 public:
  CZrBlobElement() noexcept = default;
  CZrBlobElement(uint32_t size, const void* bytes) noexcept : block_(ZrBlobBlock::Create(size, bytes)) {}
  explicit CZrBlobElement(const ZrBlobBlock& original) noexcept : block_(ZrBlobBlock::Duplicate(original)) {}
  CZrBlobElement(const CZrBlobElement& other) noexcept : block_(other.block_) {  // shares
    if (block_ != nullptr) block_->AddReference();
  }
  CZrBlobElement& operator=(const CZrBlobElement&) = delete;
  virtual ~CZrBlobElement() {
    if (block_ != nullptr) std::exchange(block_, nullptr)->Release();
  }

  static void* operator new(std::size_t size) { return AllocateOrThrow(size); }
  static void operator delete(void* element) noexcept { std::free(element); }

  ZrBlobBlock* Block() const noexcept { return block_; }

 private:
  ZrBlobBlock* block_ = nullptr;
};

static_assert(sizeof(CZrBlobElement) == 16);

struct tagZRBLOB {
  tagZRBLOB() noexcept = default;
  explicit tagZRBLOB(CZrBlobElement* owned) noexcept : block(owned->Block()), element(owned) {}

  // For a handle with an element. Null if the block is missing.
  ZrBlobBlock* Block() const noexcept { return block != nullptr ? element->Block() : nullptr; }

  // The block for a change. Null if it is missing or if others hold it too, which only a race can bring about.
  ZrBlobBlock* ExclusiveBlock() const noexcept {
    ZrBlobBlock* found = Block();
    return found != nullptr && found->RefCount() == 1 ? found : nullptr;
  }

  ZrBlobBlock* block = nullptr;
  CZrBlobElement* element = nullptr;
};
static_assert(sizeof(tagZRBLOB) == 16 && offsetof(tagZRBLOB, element) == 8);

// ZrCopyBlob and ZrDestroyBlob for a handle that was made by the manager, or null. Throws std::bad_alloc.
[[nodiscard]] inline ZRBLOB ShareBlob(ZRBLOB source) {
  if (source == nullptr) return nullptr;
  auto element = std::make_unique<CZrBlobElement>(*source->element);
  ZRBLOB blob = HeapNew<tagZRBLOB>(element.get());
  (void)element.release();  // the handle owns it now
  return blob;
}

inline void ReleaseBlob(ZRBLOB blob) noexcept {
  if (blob == nullptr) return;
  delete blob->element;
  HeapDelete(blob);
}

// A blob's handle, freed at the end of the scope. May hold none.
class CBlobHolder {
 public:
  CBlobHolder() noexcept = default;
  static CBlobHolder Adopt(ZRBLOB blob) noexcept { return CBlobHolder(blob); }
  static CBlobHolder Share(ZRBLOB blob) { return CBlobHolder(ShareBlob(blob)); }
  CBlobHolder(CBlobHolder&& other) noexcept : blob_(other.Detach()) {}
  CBlobHolder& operator=(CBlobHolder&& other) noexcept {
    CBlobHolder taken(std::move(other));
    std::swap(blob_, taken.blob_);  // what this held goes with `taken`
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
