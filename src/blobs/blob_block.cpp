// The operations on the bytes of one block. Offsets and counts are 32-bit; their sums are checked before they are used.
//
// The operations that add content work in one order: check the arguments, compute the new end, enlarge the buffer, move
// and copy bytes, then store length and position. Only the second and the third step throw, so an exception changes
// nothing.
//
// The buffer may move when it is enlarged. Pointers into it must be computed after EnsureCapacity.

#include "blobs/blob_block.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "runtime/heap.h"
#include "zrcore/blob.h"

// Fills the bytes that a removal leaves after the content. Callers can see it: ZrBlobGetAt at the index of the length.
static constexpr uint8_t kRemovedByte = 0xFE;

// In 64 bits: for the greatest capacity, the sum does not fit into 32 bits.
static std::size_t BufferSize(uint32_t capacity) noexcept { return std::size_t{capacity} + 1; }

// Fills the buffer with zeros from `length` to its end, including the extra byte.
static void ZeroAfter(uint8_t* bytes, uint32_t length, uint32_t capacity) noexcept {
  std::memset(bytes + length, 0, BufferSize(capacity) - length);
}

// Returns start + count. A sum that exceeds 32 bits counts as out of memory, since no buffer can be that large. The
// test avoids the sum itself: start + count > UINT32_MAX exactly if count > UINT32_MAX - start.
static uint32_t CheckedEnd(uint32_t start, uint32_t count) {
  if (count > UINT32_MAX - start) throw std::bad_alloc();
  return start + count;
}

// memcpy for the bytes that a caller adds. For a single byte, which callers add in loops, a call of memcpy would cost
// as much as the rest of the operation.
static void CopyAdded(uint8_t* to, const void* source, uint32_t count) noexcept {
  if (count == 1) {
    *to = *static_cast<const uint8_t*>(source);
  } else {
    std::memcpy(to, source, count);
  }
}

// ---- Making and freeing --------------------------------------------------------------------------------------------

// With bytes, the position is at the end, so that a write appends. Without bytes, it is at the start, so that a write
// fills the zeros. In both cases the position is also the number of bytes that need no zeros.
//
// If the buffer can't be allocated, the block leaks. This does not matter: the callers are noexcept constructors, so
// the exception terminates the process.
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
  ZeroAfter(block->bytes, block->position, block->capacity);
  return block;
}

// Copies the content only, not the whole buffer: the 0xFE of removed bytes belong to the original.
ZrBlobBlock* ZrBlobBlock::Duplicate(const ZrBlobBlock& original) {
  auto* block = HeapNew<ZrBlobBlock>();
  block->length = original.length;
  block->capacity = original.capacity;
  block->position = original.position;
  block->refCount = 1;
  block->bytes = static_cast<uint8_t*>(AllocateOrThrow(BufferSize(block->capacity)));
  std::memcpy(block->bytes, original.bytes, block->length);
  ZeroAfter(block->bytes, block->length, block->capacity);
  return block;
}

void ZrBlobBlock::Free() noexcept {
  std::free(bytes);
  HeapDelete(this);
}

// Enlarges the buffer for a content of `needed` bytes and fills the bytes after that content with zeros. The bytes
// between the present and the new end are not initialised: the caller must write all of them.
//
// realloc may extend the buffer in place. A new buffer would copy the whole content of a large blob for each 1024 bytes
// that it grows.
void ZrBlobBlock::Grow(uint32_t needed) {
  const uint32_t newCapacity = BlobCapacityFor(needed);
  bytes = static_cast<uint8_t*>(ReallocateOrThrow(bytes, BufferSize(newCapacity)));
  capacity = newCapacity;
  ZeroAfter(bytes, needed, capacity);
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

// No move goes forward past the end. A forward move compares a 32-bit sum with the end, and this sum may wrap around:
// at position 10, a forward move by 0xFFFFFFFF goes to 9. The contract fixes this result, so no overflow is checked.
//
// A backward move stops at the start but is not compared with the end. If the position was past the end, it may still
// be there afterwards.
ZRRESULT ZrBlobBlock::Seek(uint32_t offset, uint8_t origin, uint8_t direction) noexcept {
  switch (origin) {
    case ZR_BLOB_SEEK_START:
      position = std::min(offset, length);
      return ZR_R_OK;
    case ZR_BLOB_SEEK_POSITION:
      if (direction == ZR_BLOB_FORWARD) {
        position = std::min(position + offset, length);
      } else {
        position -= std::min(position, offset);
      }
      return ZR_R_OK;
    case ZR_BLOB_SEEK_END:
      position = length;
      return ZR_R_OK;
    default:
      return ZR_R_INVALID_ARGUMENTS;
  }
}

// A position past the end is refused. Writing there would leave a gap of removed bytes in the content.
ZRRESULT ZrBlobBlock::Write(const void* source, uint32_t count) {
  if (position > length) return ZR_R_INVALID_ARGUMENTS;
  const uint32_t end = CheckedEnd(position, count);
  EnsureCapacity(end);
  CopyAdded(bytes + position, source, count);
  position = end;
  length = std::max(length, end);
  return ZR_R_OK;
}

ZRRESULT ZrBlobBlock::Insert(uint32_t offset, const void* source, uint32_t count) {
  if (offset > length) return ZR_R_INVALID_ARGUMENTS;
  const uint32_t end = CheckedEnd(length, count);
  EnsureCapacity(end);
  uint8_t* gap = bytes + offset;
  std::memmove(gap + count, gap, length - offset);
  std::memcpy(gap, source, count);
  length = end;
  return ZR_R_OK;
}

void ZrBlobBlock::Append(const void* source, uint32_t count) {
  const uint32_t end = CheckedEnd(length, count);
  EnsureCapacity(end);
  CopyAdded(bytes + length, source, count);
  length = end;
}

// `other` may be this block. So the buffer is enlarged before other.bytes is read, and the length is read before it
// changes. Append(bytes, count) alone would pass a pointer to a buffer that its own growth has freed.
void ZrBlobBlock::Append(const ZrBlobBlock& other) {
  const uint32_t count = other.length;
  EnsureCapacity(CheckedEnd(length, count));
  Append(other.bytes, count);
}

// Closes the gap and overwrites the bytes after the new end with 0xFE. The position stays, even past the new end.
//
//     "abcdef", Remove(1, 2) -> "adef", 0xFE 0xFE        "abcdef", Remove(4, 9) -> "abcd", 0xFE 0xFE
ZRRESULT ZrBlobBlock::Remove(uint32_t offset, uint32_t count) noexcept {
  if (offset > length) return ZR_R_INVALID_ARGUMENTS;
  const uint32_t tail = length - offset;
  const uint32_t removed = std::min(tail, count);
  std::memmove(bytes + offset, bytes + offset + removed, tail - removed);
  length -= removed;
  std::memset(bytes + length, kRemovedByte, removed);
  return ZR_R_OK;
}
