// The operations on handles. Each checks in the same order: its arguments, then it detaches if it changes anything,
// then the element, then the block, then the finer arguments, which the block looks at. Callers rely on the order: an
// operation that fails on its offset has detached the handle.

#include "blobs/blob_manager.h"

#include <cassert>
#include <memory>
#include <utility>

#include "blobs/blob_handle.h"
#include "runtime/heap.h"

// Gives a handle that shares its block a block of its own. The last holder of a block never copies.
void CZrBlobMgr::EnsureExclusive(ZRBLOB blob) {
  if (blob->block == nullptr || blob->block->RefCount() < 2) return;
  auto* element = new CZrBlobElement(*blob->block);
  delete std::exchange(blob->element, element);
  blob->block = element->Block();
}

// The road of all changing operations behind the check of their arguments.
template <class Change>
ZRRESULT CZrBlobMgr::ChangeBlock(ZRBLOB blob, Change&& change) {
  EnsureExclusive(blob);
  if (blob->element == nullptr) return ZR_R_FAILED;
  ZrBlobBlock* block = blob->ExclusiveBlock();
  if (block == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  return change(*block);
}

// ---- Handles -------------------------------------------------------------------------------------------------------

ZRRESULT CZrBlobMgr::CreateBlob(uint32_t size, const void* bytes, ZRBLOB* blob) {
  if (blob == nullptr || size == 0) return ZR_R_INVALID_ARGUMENTS;
  CBlobHolder created = CBlobHolder::Adopt(HeapNew<tagZRBLOB>());
  created.Get()->element = new CZrBlobElement(size, bytes);
  created.Get()->block = created.Get()->element->Block();
  *blob = created.Detach();
  return ZR_R_OK;
}

ZRRESULT CZrBlobMgr::CopyBlob(ZRBLOB source, ZRBLOB* copy) {
  if (source == nullptr || copy == nullptr) return ZR_R_FAILED;
  assert(*copy != source);
  ZRRESULT result = ZR_R_FAILED;
  if (*copy != nullptr) result = DestroyBlob(std::exchange(*copy, nullptr));
  if (source->element == nullptr) return result;  // so this is a success if there was something to destroy
  *copy = ShareBlob(source);
  return ZR_R_OK;
}

ZRRESULT CZrBlobMgr::DestroyBlob(ZRBLOB blob) noexcept {
  if (blob == nullptr) return ZR_R_INVALID_POINTER;
  ReleaseBlob(blob);
  return ZR_R_OK;
}

// ---- Reading -------------------------------------------------------------------------------------------------------

ZRRESULT CZrBlobMgr::ReadBlobPos(ZRBLOB blob, void* buffer, uint32_t offset, uint32_t count) noexcept {
  if (blob == nullptr || buffer == nullptr || count == 0) return ZR_R_INVALID_ARGUMENTS;
  if (blob->element == nullptr) return ZR_R_FAILED;
  const ZrBlobBlock* block = blob->Block();
  if (block == nullptr) return ZR_R_INVALID_OBJECT_STATE;
  return block->ReadAt(offset, buffer, count);
}

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

// A blob that has lost its block equals any other, and the two below read it as an empty one.
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
