// ZrCore: memory blocks, buffers that one side makes and either side frees.
//
// A block is a heap allocation with its size in front. The caller holds the address of the payload; the size word lies
// directly before it and may be read there:
//
//     | size (4) | payload ... |
//                ^ the pointer            aligned as the heap plus 4 bytes: to 4 bytes, no more
//
// A null pointer is no block; a block of size 0 is not null and has no payload. Exhausted memory is told by null, there
// are no result codes. Sizes above 4294967291 leave no room for the size word in 32 bits: the block then keeps the size
// that was asked for in its size word and has no payload at all.
//
// Any thread, any time, before ZrInitialize too; one block is for one thread at a time.

#ifndef ZRCORE_MEMORY_H
#define ZRCORE_MEMORY_H

#include "zrcore/base.h"

/// ZrCreateMemory makes a block of `size` zero bytes.
///
/// @param size  in bytes; 0 gives a block too.
/// @return gives a block (ZrDestroyMemory); null when memory is exhausted.
///
/// One allocation; linear in the size.
ZR_API void* ZrCreateMemory(uint32_t size) ZR_NOEXCEPT;

/// ZrRecreateMemory moves a block's content into a new block of another size.
///
/// A new block is made always, for the same size too, so the pointer always changes. What fits is copied, the rest of a
/// grown block is zero.
///
/// @param block  takes a block, which is freed, except when memory is exhausted; or null, which makes this
///               ZrCreateMemory, so that a size of 0 gives a block then.
/// @param size   in bytes; 0 frees the block and gives none.
/// @return gives a block; null if `size` is 0 and `block` is not null. Null when memory is exhausted, too: `block` is
///         the caller's still then, and unchanged.
///
/// One allocation; linear in the size.
ZR_API void* ZrRecreateMemory(void* block, uint32_t size) ZR_NOEXCEPT;

/// ZrDestroyMemory frees a block. Null is ignored.
ZR_API void ZrDestroyMemory(void* block) ZR_NOEXCEPT;

#endif
