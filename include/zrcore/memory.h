// ZrCore: memory blocks, buffers that one side allocates and either side frees.
//
// A block is a heap allocation that begins with its size. The caller gets the address of the payload. The size word is
// directly before the payload, and the caller may read it there. The payload is aligned to 4 bytes and no more: do not
// store types in it that need a stricter alignment.
//
//     | size (4) | payload ... |
//                ^ the pointer
//
//     uint32_t* numbers = (uint32_t*)ZrCreateMemory(16);      // four zeros, or null if out of memory
//     void* grown = ZrRecreateMemory(numbers, 32);            // null if out of memory: `numbers` is still valid then
//     ZrDestroyMemory(grown);
//
// A null pointer is not a block. A block of size 0 is not null and has no payload. The functions have no result codes:
// they return null if out of memory. The owner of a block frees it with ZrDestroyMemory. Nothing throws.
//
// A size above 4294967291 (0xFFFFFFFB) is not refused, but makes a block without any payload, although its size word
// contains the requested size: size and size word together must fit into 32 bits. A caller that writes to the payload
// of such a block corrupts the heap.
//
// Any thread, before ZrInitialize too, one at a time for a block: two calls for one block that overlap are a data race.

#ifndef ZRCORE_MEMORY_H
#define ZRCORE_MEMORY_H

#include "zrcore/base.h"

/// ZrCreateMemory allocates a block of `size` zero bytes.
///
/// @param size  in bytes; 0 makes a block too.
/// @return gives a block (ZrDestroyMemory); null if out of memory.
///
/// One allocation; linear in the size.
ZR_API void* ZrCreateMemory(uint32_t size) ZR_NOEXCEPT;

/// ZrRecreateMemory moves the content of a block into a new block of another size.
///
/// A new block is always allocated, even for the same size, so the pointer always changes. The content is copied as far
/// as it fits. If the new block is larger, the rest of it is zero.
///
/// @param block  takes a block and frees it, except when out of memory. If `block` is null, the function does the same
///               as ZrCreateMemory, so a size of 0 then makes a block.
/// @param size   in bytes. If `block` is not null, 0 frees it and returns null.
/// @return gives a block (ZrDestroyMemory); null if `size` is 0 and `block` is not null; null if out of memory. When
///         out of memory, the caller still owns `block`, which is unchanged.
///
/// Leak: do not assign the result to the only variable that refers to `block`. When out of memory the result is null,
/// and the block leaks.
///
/// One allocation; linear in the size.
ZR_API void* ZrRecreateMemory(void* block, uint32_t size) ZR_NOEXCEPT;

/// ZrDestroyMemory frees a block.
///
/// @param block  takes the block; null is ignored. A block must not be freed in another way, such as by free(), since
///               its pointer is not the address of the allocation.
ZR_API void ZrDestroyMemory(void* block) ZR_NOEXCEPT;

#endif
