// The operations on handles. They work in the same order, except where a comment says otherwise:
//
//     step                                                     failure
//     1. check for null arguments and a count of 0             ZR_R_INVALID_ARGUMENTS
//     2. detach, if the operation changes the block            std::bad_alloc, or the process terminates
//     3. check that the handle has an element                  ZR_R_FAILED
//     4. check that it has a block, and for a change alone     ZR_R_INVALID_OBJECT_STATE
//     5. call the block, which checks offset and position      the block's result
//
// Callers rely on this order: an operation that fails in step 5, for its offset, has detached the handle. To check the
// offset first would be cheaper, but it would be visible.
//
// Two handles a and b share a block. ZrRemoveBlob(a, 99, 1) -> ZR_R_INVALID_ARGUMENTS, but a has a block of its own
// now.

#include "blobs/blob_manager.h"

#include <cassert>
#include <memory>
#include <utility>

#include "blobs/blob_handle.h"
#include "runtime/heap.h"

// Makes a copy of a shared block for this handle. The new element is complete before the old one is released, so an
// exception changes nothing. A handle that has the only reference keeps its block.
void CZrBlobMgr::EnsureExclusive(ZRBLOB blob) {
  if (blob->block == nullptr || blob->block->RefCount() < 2) return;
  auto* element = new CZrBlobElement(*blob->block);
  delete std::exchange(blob->element, element);
  blob->block = element->Block();
}

// Steps 2 to 5 of all operations that change a block. Step 1, which depends on the operation, must have been done.
template <class Change>
ZRRESULT CZrBlobMgr::ChangeBlock(ZRBLOB blob, Change&& change) {
  EnsureExclusive(blob);
  if (blob->element == nullptr) return ZR_R_FAILED;
  ZrBlobBlock* block = blob->ExclusiveBlock();
  if (block == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  return change(*block);
}

// ---- Handles -------------------------------------------------------------------------------------------------------

// The handle is allocated before the element, and `*blob` is written last. So `*blob` is unchanged if this throws.
ZRRESULT CZrBlobMgr::CreateBlob(uint32_t size, const void* bytes, ZRBLOB* blob) {
  if (blob == nullptr || size == 0) return ZR_R_INVALID_ARGUMENTS;
  CBlobHolder created = CBlobHolder::Adopt(HeapNew<tagZRBLOB>());
  created.Get()->element = new CZrBlobElement(size, bytes);
  created.Get()->block = created.Get()->element->Block();
  *blob = created.Detach();
  return ZR_R_OK;
}

// The old handle in `*copy` is destroyed even if `source` turns out to have no element. Then the result is the result
// of the destruction, which is a success, although nothing was copied. The contract fixes this.
ZRRESULT CZrBlobMgr::CopyBlob(ZRBLOB source, ZRBLOB* copy) {
  if (source == nullptr || copy == nullptr) return ZR_R_FAILED;
  assert(*copy != source);
  ZRRESULT result = ZR_R_FAILED;
  if (*copy != nullptr) result = DestroyBlob(std::exchange(*copy, nullptr));
  if (source->element == nullptr) return result;
  *copy = ShareBlob(source);
  return ZR_R_OK;
}

ZRRESULT CZrBlobMgr::DestroyBlob(ZRBLOB blob) noexcept {
  if (blob == nullptr) return ZR_R_INVALID_POINTER;
  ReleaseBlob(blob);
  return ZR_R_OK;
}

// ---- Reading -------------------------------------------------------------------------------------------------------

// Reads without detaching: neither the content nor the position changes.
ZRRESULT CZrBlobMgr::ReadBlobPos(ZRBLOB blob, void* buffer, uint32_t offset, uint32_t count) noexcept {
  if (blob == nullptr || buffer == nullptr || count == 0) return ZR_R_INVALID_ARGUMENTS;
  if (blob->element == nullptr) return ZR_R_FAILED;
  const ZrBlobBlock* block = blob->Block();
  if (block == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  return block->ReadAt(offset, buffer, count);
}

// Reading moves the position, which is part of the block. So it is a change and detaches.
ZRRESULT CZrBlobMgr::ReadBlob(ZRBLOB blob, void* buffer, uint32_t count) {
  if (blob == nullptr || buffer == nullptr || count == 0) return ZR_R_INVALID_ARGUMENTS;
  return ChangeBlock(blob, [=](ZrBlobBlock& block) noexcept { return block.Read(buffer, count); });
}

ZRRESULT CZrBlobMgr::BlobPosition(ZRBLOB blob, uint32_t* position) noexcept {
  if (blob == nullptr || position == nullptr) return ZR_R_INVALID_ARGUMENTS;
  if (blob->element == nullptr) return ZR_R_FAILED;
  const ZrBlobBlock* block = blob->Block();
  if (block == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  *position = block->position;
  return ZR_R_OK;
}

// A blob without a block equals every other blob, even a blob that is not empty. The contract fixes this. The next two
// functions treat such a blob as empty, and they return ZR_R_INVALID_ARGUMENTS for a missing element.
ZRRESULT CZrBlobMgr::CompareBlob(ZRBLOB left, ZRBLOB right, uint8_t* equal) noexcept {
  if (left == nullptr || right == nullptr || equal == nullptr) return ZR_R_INVALID_ARGUMENTS;
  if (left->element == nullptr || right->element == nullptr) return ZR_R_FAILED;
  const ZrBlobBlock* leftBlock = left->Block();
  const ZrBlobBlock* rightBlock = right->Block();
  *equal = leftBlock == nullptr || rightBlock == nullptr || leftBlock->HasSameContent(*rightBlock) ? 1 : 0;
  return ZR_R_OK;
}

ZRRESULT CZrBlobMgr::BlobByteLen(ZRBLOB blob, uint32_t* length) noexcept {
  if (blob == nullptr || length == nullptr || blob->element == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const ZrBlobBlock* block = blob->Block();
  *length = block != nullptr ? block->length : 0;
  return ZR_R_OK;
}

ZRRESULT CZrBlobMgr::BlobGetAt(ZRBLOB blob, uint32_t index, uint8_t* byte) noexcept {
  if (blob == nullptr || byte == nullptr || blob->element == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const ZrBlobBlock* block = blob->Block();
  *byte = block != nullptr ? block->ByteAt(index) : uint8_t{0};
  return ZR_R_OK;
}

// ---- Changing ------------------------------------------------------------------------------------------------------

ZRRESULT CZrBlobMgr::SeekBlob(ZRBLOB blob, uint32_t offset, uint8_t origin, uint8_t direction) {
  if (blob == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return ChangeBlock(blob, [=](ZrBlobBlock& block) noexcept { return block.Seek(offset, origin, direction); });
}

ZRRESULT CZrBlobMgr::WriteBlob(ZRBLOB blob, const void* bytes, uint32_t count) {
  if (blob == nullptr || bytes == nullptr || count == 0) return ZR_R_INVALID_ARGUMENTS;
  return ChangeBlock(blob, [=](ZrBlobBlock& block) { return block.Write(bytes, count); });
}

ZRRESULT CZrBlobMgr::InsertBlob(ZRBLOB blob, uint32_t offset, const void* bytes, uint32_t count) {
  if (blob == nullptr || bytes == nullptr || count == 0) return ZR_R_INVALID_ARGUMENTS;
  return ChangeBlock(blob, [=](ZrBlobBlock& block) { return block.Insert(offset, bytes, count); });
}

// The steps of ChangeBlock with a second handle. Both elements are checked before the block of the first, and the
// missing block of `other` has a code of its own, so ChangeBlock can't be used.
//
// `other` may be `blob`. Its block is read after the detaching, so it is the new block then.
ZRRESULT CZrBlobMgr::AppendBlob(ZRBLOB blob, ZRBLOB other) {
  if (blob == nullptr || other == nullptr) return ZR_R_INVALID_ARGUMENTS;
  EnsureExclusive(blob);
  if (blob->element == nullptr || other->element == nullptr) return ZR_R_FAILED;
  ZrBlobBlock* block = blob->ExclusiveBlock();
  if (block == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  const ZrBlobBlock* otherBlock = other->Block();
  if (otherBlock == nullptr) return ZR_R_INVALID_ARGUMENTS;
  block->Append(*otherBlock);
  return ZR_R_OK;
}

ZRRESULT CZrBlobMgr::AppendBlobData(ZRBLOB blob, const void* bytes, uint32_t count) {
  if (blob == nullptr || bytes == nullptr || count == 0) return ZR_R_INVALID_ARGUMENTS;
  return ChangeBlock(blob, [=](ZrBlobBlock& block) { return block.Append(bytes, count), ZR_R_OK; });
}

ZRRESULT CZrBlobMgr::RemoveBlob(ZRBLOB blob, uint32_t offset, uint32_t count) {
  if (blob == nullptr || count == 0) return ZR_R_INVALID_ARGUMENTS;
  return ChangeBlock(blob, [=](ZrBlobBlock& block) noexcept { return block.Remove(offset, count); });
}
