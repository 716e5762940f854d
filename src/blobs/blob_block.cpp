#include "blobs/blob_block.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "runtime/heap.h"
#include "zrcore/blob.h"

static constexpr uint8_t kRemovedByte = 0xFE;

static std::size_t BufferSize(uint32_t capacity) noexcept { return std::size_t{capacity} + 1; }

static void ZeroBehind(uint8_t* bytes, uint32_t length, uint32_t capacity) noexcept {
  std::memset(bytes + length, 0, BufferSize(capacity) - length);
}

// Content that 32 bits can't count is content that there is no memory for.
static uint32_t EndOf(uint32_t start, uint32_t count) {
  if (count > UINT32_MAX - start) throw std::bad_alloc();
  return start + count;
}

// ---- Making and freeing --------------------------------------------------------------------------------------------

ZrBlobBlock* ZrBlobBlock::Create(uint32_t size, const void* bytes) {
  auto* block = HeapNew<ZrBlobBlock>();
  block->length = size;
  block->capacity = BlobCapacityFor(size);
  block->refCount = 1;
  block->bytes = static_cast<uint8_t*>(AllocateOrThrow(BufferSize(block->capacity)));
  if (bytes != nullptr) {
    std::memcpy(block->bytes, bytes, size);
    block->position = size;
  }
  ZeroBehind(block->bytes, block->position, block->capacity);
  return block;
}

ZrBlobBlock* ZrBlobBlock::Duplicate(const ZrBlobBlock& original) {
  auto* block = HeapNew<ZrBlobBlock>();
  block->length = original.length;
  block->capacity = original.capacity;
  block->position = original.position;
  block->refCount = 1;
  block->bytes = static_cast<uint8_t*>(AllocateOrThrow(BufferSize(block->capacity)));
  std::memcpy(block->bytes, original.bytes, block->length);
  ZeroBehind(block->bytes, block->length, block->capacity);
  return block;
}

void ZrBlobBlock::Free() noexcept {
  std::free(bytes);
  HeapDelete(this);
}

// Makes room for content of `needed` bytes, with zeros behind it. What lies between the present and the new end is the
// caller's to fill. The heap is asked to extend the buffer, so that growing a large blob by the granule need not
// copy it.
void ZrBlobBlock::Grow(uint32_t needed) {
  const uint32_t newCapacity = BlobCapacityFor(needed);
  bytes = static_cast<uint8_t*>(ReallocateOrThrow(bytes, BufferSize(newCapacity)));
  capacity = newCapacity;
  ZeroBehind(bytes, needed, capacity);
}

// ---- Reading -------------------------------------------------------------------------------------------------------

uint32_t ZrBlobBlock::Available(uint32_t offset, uint32_t count) const noexcept {
  return offset < length ? std::min(length - offset, count) : 0;
}

ZRRESULT ZrBlobBlock::ReadAt(uint32_t offset, void* buffer, uint32_t count) const noexcept {
  if (bytes == nullptr) return ZR_R_EMPTY_VALUE;
  const uint32_t available = Available(offset, count);
  if (available == 0) return ZR_R_NOT_EXISTING;
  std::memcpy(buffer, bytes + offset, available);
  return ZR_R_OK;
}

ZRRESULT ZrBlobBlock::Read(void* buffer, uint32_t count) noexcept {
  const ZRRESULT result = ReadAt(position, buffer, count);
  if (result == ZR_R_OK) position += Available(position, count);
  return result;
}

bool ZrBlobBlock::HasSameContent(const ZrBlobBlock& other) const noexcept {
  if (this == &other) return true;
  return length == other.length && std::memcmp(bytes, other.bytes, length) == 0;
}

// ---- Changing ------------------------------------------------------------------------------------------------------

ZRRESULT ZrBlobBlock::Seek(uint32_t offset, uint8_t origin, uint8_t direction) noexcept {
  switch (origin) {
    case ZR_BLOB_SEEK_START:
      position = std::min(offset, length);
      return ZR_R_OK;
    case ZR_BLOB_SEEK_POSITION:
      if (direction == ZR_BLOB_FORWARD) {
        position = std::min(position + offset, length);  // a sum that wraps lands near the start
      } else {
        position -= std::min(position, offset);  // may stay behind the end, if it was there
      }
      return ZR_R_OK;
    case ZR_BLOB_SEEK_END:
      position = length;
      return ZR_R_OK;
    default:
      return ZR_R_INVALID_ARGUMENTS;
  }
}

ZRRESULT ZrBlobBlock::Write(const void* source, uint32_t count) {
  if (position > length) return ZR_R_INVALID_ARGUMENTS;
  const uint32_t end = EndOf(position, count);
  EnsureCapacity(end);
  std::memcpy(bytes + position, source, count);
  position = end;
  length = std::max(length, end);
  return ZR_R_OK;
}

ZRRESULT ZrBlobBlock::Insert(uint32_t offset, const void* source, uint32_t count) {
  if (offset > length) return ZR_R_INVALID_ARGUMENTS;
  const uint32_t end = EndOf(length, count);
  EnsureCapacity(end);
  uint8_t* place = bytes + offset;
  std::memmove(place + count, place, length - offset);
  std::memcpy(place, source, count);
  length = end;
  return ZR_R_OK;
}

void ZrBlobBlock::Append(const void* source, uint32_t count) {
  const uint32_t end = EndOf(length, count);
  EnsureCapacity(end);
  std::memcpy(bytes + length, source, count);
  length = end;
}

void ZrBlobBlock::Append(const ZrBlobBlock& other) {
  const uint32_t count = other.length;
  EnsureCapacity(EndOf(length, count));
  Append(other.bytes, count);  // read behind the growth, which moves the bytes of a blob appended to itself
}

ZRRESULT ZrBlobBlock::Remove(uint32_t offset, uint32_t count) noexcept {
  if (offset > length) return ZR_R_INVALID_ARGUMENTS;
  const uint32_t tail = length - offset;
  const uint32_t removed = std::min(tail, count);
  std::memmove(bytes + offset, bytes + offset + removed, tail - removed);
  length -= removed;
  std::memset(bytes + length, kRemovedByte, removed);
  return ZR_R_OK;
}
