// ZrCore: blobs, growable byte buffers with a read/write position.
//
// A ZRBLOB is a handle on bytes. Copies share their bytes until one of them is changed (copy on write), so a copy costs
// the same whatever the length is:
//
//     ZRBLOB -> handle -> element -> block {length, position} -> buffer      copies share one block and its buffer
//
//     ZRBLOB blob = ZrCreateBlob(3, "abc");                  // the position is at the end
//     ZRRESULT result = ZrWriteBlob(blob, "def", 3);         // appends: "abcdef"
//     ZrDestroyBlob(blob);
//
// Content, length and position are shared together. Moving the position is a change too. So ZrReadBlob and ZrSeekBlob,
// like the functions that change the content, first check whether the handle shares its bytes. If it does, they copy
// the bytes for this handle alone. This is called detaching. The new copy has the position that both had. ZrReadBlobPos
// never detaches: use it to read bytes that other handles share.
//
// ZrCreateBlob never creates an empty blob: it returns null for a size of 0. A blob becomes empty, with length 0, only
// if ZrRemoveBlob removes all content. ZrDestroyBlob releases a handle; the last handle on shared bytes frees them.
//
// In this family a null argument and a count of 0 return ZR_R_INVALID_ARGUMENTS, unless a comment says otherwise, and
// nothing is detached then. Other arguments, such as an offset, are checked after detaching. ZR_R_FAILED,
// ZR_R_INVALID_OBJECT_STATE and ZR_R_EMPTY_VALUE mean that the handle is damaged: its element, block or buffer is
// missing, or another thread has used the handle at the same time.
//
// Lengths, offsets and counts are in bytes. A buffer grows in steps of 1024 bytes and never shrinks.
//
// ## Threads
// Any thread, before ZrInitialize too, one at a time for a handle: two calls for one handle that overlap are a data
// race. Handles that share bytes are independent of each other: each may be read, changed, copied and destroyed on a
// thread of its own.
//
// ## Out of memory
// See "Exceptions" in base.h. What happens depends on what the memory is for:
//
//     creating      handle, element    throws std::bad_alloc
//                   block, buffer      terminates the process
//     copying       handle, element    throws std::bad_alloc; nothing else is allocated
//     detaching     element            throws std::bad_alloc
//                   block, buffer      terminates the process
//     growing       buffer             throws std::bad_alloc, also if the content would exceed 0xFFFFFFFF bytes
//
// When a function throws, content, length and position are unchanged. If the buffer could not grow, the handle stays
// detached.

#ifndef ZRCORE_BLOB_H
#define ZRCORE_BLOB_H

#include "zrcore/base.h"

/// ZRBLOB is a handle on a byte buffer. Null is not a blob.
typedef struct tagZRBLOB* ZRBLOB;

// The origins and directions of ZrSeekBlob.
#define ZR_BLOB_SEEK_START 0     ///< to the offset
#define ZR_BLOB_SEEK_POSITION 1  ///< by the offset
#define ZR_BLOB_SEEK_END 2       ///< to the end; the offset is ignored
#define ZR_BLOB_BACKWARD 0
#define ZR_BLOB_FORWARD 1

// ---- Handles -------------------------------------------------------------------------------------------------------

/// ZrCreateBlob creates a blob of `size` bytes.
///
/// If `bytes` is not null, the position is at the end, so that ZrWriteBlob appends. If `bytes` is null, the position is
/// at the start.
///
/// @param size   the length of the content in bytes. With 0 the function returns null, whatever `bytes` is.
/// @param bytes  reads `size` bytes. Null fills the content with zeros.
/// @return gives a blob (ZrDestroyBlob); null if `size` is 0.
/// @throws std::bad_alloc if there is no memory for the handle or the element; see "Exceptions" in base.h. Out of
///         memory for the block or the buffer terminates the process.
///
/// Linear; four allocations.
ZR_API ZRBLOB ZrCreateBlob(uint32_t size, const void* bytes);

/// ZrCopyBlob makes a second handle on the bytes of `source`. The position is the same.
///
/// @return gives a blob (ZrDestroyBlob); null if `source` is null or damaged.
/// @throws std::bad_alloc if there is no memory for the handle or the element; see "Exceptions" in base.h. This
///         function never terminates the process.
///
/// Two small allocations and one atomic increment, whatever the length.
ZR_API ZRBLOB ZrCopyBlob(ZRBLOB source);

/// ZrDestroyBlob releases a handle. The last handle on shared bytes frees them.
///
/// @param blob  takes the handle.
/// @return
///   - ZR_R_OK               the handle was released.
///   - ZR_R_INVALID_POINTER  `blob` is null.
ZR_API ZRRESULT ZrDestroyBlob(ZRBLOB blob) ZR_NOEXCEPT;

// ---- Reading -------------------------------------------------------------------------------------------------------

/// ZrReadBlobPos copies bytes from an offset. It neither uses nor moves the position, and it does not detach.
///
/// A short read succeeds: if the content has fewer than `count` bytes from the offset on, those are copied, and the
/// rest of `buffer` is unchanged. The number of copied bytes is not reported.
///
/// @param buffer  receives up to `count` bytes; unchanged after a failure.
/// @param offset  in bytes from the start of the content.
/// @param count   in bytes.
/// @return
///   - ZR_R_OK                    at least one byte was copied.
///   - ZR_R_INVALID_ARGUMENTS     `blob` or `buffer` is null or `count` is 0.
///   - ZR_R_NOT_EXISTING          `offset` is not less than the length.
///   - ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE, ZR_R_EMPTY_VALUE  the handle is damaged.
ZR_API ZRRESULT ZrReadBlobPos(ZRBLOB blob, void* buffer, uint32_t offset, uint32_t count) ZR_NOEXCEPT;

/// ZrReadBlob copies bytes from the position and moves the position past them. It detaches.
///
/// A short read succeeds, as for ZrReadBlobPos. The number of copied bytes is the difference of ZrBlobPosition before
/// and after the call.
///
/// @param buffer  receives up to `count` bytes. After a failure, `buffer` and the position are unchanged.
/// @param count   in bytes.
/// @return
///   - ZR_R_OK                    at least one byte was copied.
///   - ZR_R_INVALID_ARGUMENTS     `blob` or `buffer` is null or `count` is 0.
///   - ZR_R_NOT_EXISTING          the position is at or past the end.
///   - ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE, ZR_R_EMPTY_VALUE  the handle is damaged.
/// @throws std::bad_alloc if detaching has no memory for the element; see "Exceptions" in base.h. Out of memory for the
///         detached bytes terminates the process.
ZR_API ZRRESULT ZrReadBlob(ZRBLOB blob, void* buffer, uint32_t count);

/// ZrBlobGetAt reads one byte.
///
/// If the index is greater than the length, the result is 0, which cannot be distinguished from a stored 0. If the
/// index equals the length, the result is the byte after the content: 0, or 0xFE where content has been removed.
///
/// @param index  in bytes from the start of the content.
/// @param byte   receives the byte; 0 if `index` is greater than the length; unchanged after a failure.
/// @return
///   - ZR_R_OK                 `*byte` was written.
///   - ZR_R_INVALID_ARGUMENTS  `blob` or `byte` is null, or the handle is damaged.
ZR_API ZRRESULT ZrBlobGetAt(ZRBLOB blob, uint32_t index, uint8_t* byte) ZR_NOEXCEPT;

/// ZrBlobByteLen returns the length of the content in `*length`.
///
/// @param length  receives the length in bytes; unchanged after a failure.
/// @return
///   - ZR_R_OK                 `*length` was written.
///   - ZR_R_INVALID_ARGUMENTS  `blob` or `length` is null, or the handle is damaged.
ZR_API ZRRESULT ZrBlobByteLen(ZRBLOB blob, uint32_t* length) ZR_NOEXCEPT;

/// ZrCompareBlob reports whether two blobs have the same content. Positions are not compared; blobs have no order.
///
/// @param equal  receives 1 or 0; unchanged after a failure.
/// @return
///   - ZR_R_OK                 `*equal` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null.
///   - ZR_R_FAILED             a handle is damaged.
///
/// Linear if the lengths are equal; constant if the bytes are shared.
ZR_API ZRRESULT ZrCompareBlob(ZRBLOB left, ZRBLOB right, uint8_t* equal) ZR_NOEXCEPT;

// ---- The position --------------------------------------------------------------------------------------------------

/// ZrBlobPosition returns the position in `*position`. After ZrRemoveBlob it may lie past the end.
///
/// @param position  receives the position; unchanged after a failure.
/// @return
///   - ZR_R_OK                 `*position` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null.
///   - ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE  the handle is damaged.
ZR_API ZRRESULT ZrBlobPosition(ZRBLOB blob, uint32_t* position) ZR_NOEXCEPT;

/// ZrSeekBlob moves the position, but never forward past the end. It detaches.
///
/// ZrRemoveBlob may have left the position past the end. After a backward move it may still be there; any other move
/// brings it back.
///
/// @param offset     in bytes; may be 0.
/// @param origin     ZR_BLOB_SEEK_START moves to the offset, or to the end if the offset is greater.
///                   ZR_BLOB_SEEK_POSITION moves by the offset: forward at most to the end, backward at most to the
///                   start. A forward sum above 0xFFFFFFFF wraps around, so the position moves back. ZR_BLOB_SEEK_END
///                   moves to the end and ignores the offset.
/// @param direction  used with ZR_BLOB_SEEK_POSITION only: ZR_BLOB_FORWARD, or any other value for backward.
/// @return
///   - ZR_R_OK                 the position was set.
///   - ZR_R_INVALID_ARGUMENTS  `blob` is null; or, after detaching, `origin` is not one of the three. The position is
///                             unchanged.
///   - ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE  the handle is damaged.
/// @throws std::bad_alloc if detaching has no memory for the element; see "Exceptions" in base.h. Out of memory for the
///         detached bytes terminates the process.
ZR_API ZRRESULT ZrSeekBlob(ZRBLOB blob, uint32_t offset, uint8_t origin, uint8_t direction);

// ---- Changing ------------------------------------------------------------------------------------------------------

/// ZrWriteBlob overwrites bytes at the position and moves the position past them. The blob becomes longer if necessary.
/// The function detaches.
///
/// @param bytes  reads `count` bytes.
/// @param count  in bytes.
/// @return
///   - ZR_R_OK                 the bytes were written.
///   - ZR_R_INVALID_ARGUMENTS  `blob` or `bytes` is null or `count` is 0; or, after detaching, the position is past the
///                             end, where ZrRemoveBlob may have left it (ZrSeekBlob brings it back).
///   - ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE  the handle is damaged.
/// @throws std::bad_alloc if detaching has no memory for the element, the buffer can't grow, or the content would
///         exceed 0xFFFFFFFF bytes; see "Exceptions" in base.h. Out of memory for the detached bytes terminates the
///         process.
ZR_API ZRRESULT ZrWriteBlob(ZRBLOB blob, const void* bytes, uint32_t count);

/// ZrInsertBlob inserts bytes before the byte at `offset`. The position never moves. The function detaches.
///
/// @param offset  in bytes, at most the length. If it equals the length, the bytes are appended.
/// @param bytes   reads `count` bytes.
/// @param count   in bytes.
/// @return
///   - ZR_R_OK                 the bytes were inserted.
///   - ZR_R_INVALID_ARGUMENTS  `blob` or `bytes` is null or `count` is 0; or, after detaching, `offset` is greater than
///                             the length.
///   - ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE  the handle is damaged.
/// @throws std::bad_alloc as for ZrWriteBlob; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrInsertBlob(ZRBLOB blob, uint32_t offset, const void* bytes, uint32_t count);

/// ZrAppendBlob appends the content of `other` to `blob`. The position does not move. The function detaches `blob`.
///
/// @param other  may be `blob` itself, which doubles the content, or a copy of `blob`. Its length may be 0.
/// @return
///   - ZR_R_OK                 the content was appended.
///   - ZR_R_INVALID_ARGUMENTS  a handle is null; or, after detaching, the block of `other` is missing.
///   - ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE  a handle is damaged.
/// @throws std::bad_alloc as for ZrWriteBlob; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrAppendBlob(ZRBLOB blob, ZRBLOB other);

/// ZrAppendBlobData appends bytes to the content. The position does not move. The function detaches.
///
/// @param bytes  reads `count` bytes.
/// @param count  in bytes.
/// @return
///   - ZR_R_OK                 the bytes were appended.
///   - ZR_R_INVALID_ARGUMENTS  `blob` or `bytes` is null or `count` is 0.
///   - ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE  the handle is damaged.
/// @throws std::bad_alloc as for ZrWriteBlob; see "Exceptions" in base.h.
///
/// Small appends reallocate the buffer once per 1024 bytes. Each reallocation copies the content, unless the heap can
/// extend the buffer in place.
ZR_API ZRRESULT ZrAppendBlobData(ZRBLOB blob, const void* bytes, uint32_t count);

/// ZrRemoveBlob removes bytes and closes the gap. The position does not move, so it may be past the end afterwards. The
/// function detaches.
///
/// @param offset  in bytes, at most the length. If it equals the length, nothing is removed.
/// @param count   in bytes. If the content has fewer bytes from the offset on, those are removed.
/// @return
///   - ZR_R_OK                 the bytes, if any, were removed.
///   - ZR_R_INVALID_ARGUMENTS  `blob` is null or `count` is 0; or, after detaching, `offset` is greater than
///                             the length.
///   - ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE  the handle is damaged.
/// @throws std::bad_alloc if detaching has no memory for the element; see "Exceptions" in base.h. Out of memory for the
///         detached bytes terminates the process.
///
/// The buffer keeps its size. The bytes past the new end that were content are overwritten with 0xFE.
ZR_API ZRRESULT ZrRemoveBlob(ZRBLOB blob, uint32_t offset, uint32_t count);

#endif
