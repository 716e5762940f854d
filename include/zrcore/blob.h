// ZrCore: blobs, growable byte buffers with a read/write position.
//
// A ZRBLOB is a handle on bytes. Copies share their bytes until one of them is changed (copy on write), so copying
// costs the same whatever the length. Content, length and position are shared together: moving the position is a change
// too, so ZrReadBlob and ZrSeekBlob give a handle that shares its bytes a copy of its own first, just as ZrWriteBlob
// does. This is called detaching. The copy that is made then starts with the position that both had. ZrReadBlobPos
// never detaches: it is the way to read bytes that others share.
//
// A handle that exists has bytes: there is no empty blob, and null is none. A length of 0 comes about by removing all
// content only. Whoever holds a handle frees it with ZrDestroyBlob.
//
// In this family a null argument and a count of 0 give ZR_R_INVALID_ARGUMENTS, except where it is said otherwise, and
// are refused before anything detaches. What is found wrong later, such as an offset, is found behind the detaching.
// ZR_R_FAILED and ZR_R_INVALID_OBJECT_STATE tell of a handle whose insides are missing or have been shared meanwhile by
// another thread; no handle that is used by one thread at a time answers them.
//
// Lengths, offsets and counts are in bytes. Memory comes in steps of 1024 bytes and is never given back before the end.
// Functions that may detach or grow throw std::bad_alloc when memory is exhausted, or when the content would exceed 32
// bits; the blob is unchanged then. The bytes of a new or detached blob are the exception: if there is no memory for
// them, the process ends.
//
// Any thread, one at a time for a handle, before ZrInitialize too. Handles that share bytes are independent of each
// other: each may be read, changed, copied and destroyed on a thread of its own.

#ifndef ZRCORE_BLOB_H
#define ZRCORE_BLOB_H

#include "zrcore/base.h"

/// ZRBLOB is a handle on a byte buffer.
typedef struct tagZRBLOB* ZRBLOB;

// Where ZrSeekBlob counts from, and which way from the position.
#define ZR_BLOB_SEEK_START 0     ///< to the offset
#define ZR_BLOB_SEEK_POSITION 1  ///< by the offset
#define ZR_BLOB_SEEK_END 2       ///< to the end; the offset is ignored
#define ZR_BLOB_BACKWARD 0
#define ZR_BLOB_FORWARD 1

// ---- Handles -------------------------------------------------------------------------------------------------------

/// ZrCreateBlob makes a blob of `size` bytes.
///
/// With bytes the position is at the end, ready to append by writing; without, it is at the start.
///
/// @param size   length of the content; 0 gives null, whatever `bytes` is.
/// @param bytes  reads `size` bytes; null for zero bytes.
/// @return gives a blob; null if `size` is 0.
/// @throws std::bad_alloc for the handle. No memory for the bytes ends the process.
///
/// Linear; four allocations.
ZR_API ZRBLOB ZrCreateBlob(uint32_t size, const void* bytes);

/// ZrCopyBlob makes a second handle on the bytes of `source`, with its position.
///
/// @return gives a blob; null if `source` is null.
/// @throws std::bad_alloc
///
/// Two small allocations and one atomic increment, whatever the length.
ZR_API ZRBLOB ZrCopyBlob(ZRBLOB source);

/// ZrDestroyBlob frees a handle; the last one on shared bytes frees them.
///
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `blob` is null.
ZR_API ZRRESULT ZrDestroyBlob(ZRBLOB blob) ZR_NOEXCEPT;

// ---- Reading -------------------------------------------------------------------------------------------------------

/// ZrReadBlobPos copies bytes from an offset. The position is neither used nor moved, and nothing detaches.
///
/// A short read is a plain success: if fewer than `count` bytes follow the offset, those are copied, the rest of
/// `buffer` stays as it was, and the number is not told.
///
/// @param buffer  receives up to `count` bytes.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `blob` or `buffer` is null or `count` is 0; ZR_R_NOT_EXISTING if no byte
///         follows the offset; ZR_R_FAILED, ZR_R_INVALID_OBJECT_STATE or ZR_R_EMPTY_VALUE if the handle's insides or
///         its bytes are missing. `buffer` is untouched by a failure.
ZR_API ZRRESULT ZrReadBlobPos(ZRBLOB blob, void* buffer, uint32_t offset, uint32_t count) ZR_NOEXCEPT;

/// ZrReadBlob copies bytes from the position and moves it behind them. Detaches.
///
/// A short read is a plain success, as for ZrReadBlobPos; the change of ZrBlobPosition tells the number.
///
/// @param buffer  receives up to `count` bytes.
/// @return as ZrReadBlobPos, with the position in place of the offset. After a failure neither the position nor
///         `buffer` has changed.
/// @throws std::bad_alloc
ZR_API ZRRESULT ZrReadBlob(ZRBLOB blob, void* buffer, uint32_t count);

/// ZrBlobGetAt reads one byte.
///
/// An index that is too large can't be told from a stored 0. The index equal to the length gives the byte behind the
/// content: 0, or 0xFE where content has been removed.
///
/// @param byte  receives the byte; 0 if `index` is greater than the length.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with `*byte` untouched, if `blob` or `byte` is null or the handle's insides
///         are missing.
ZR_API ZRRESULT ZrBlobGetAt(ZRBLOB blob, uint32_t index, uint8_t* byte) ZR_NOEXCEPT;

/// ZrBlobByteLen tells the length of the content.
///
/// @param length  receives it.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with `*length` untouched, if `blob` or `length` is null or the handle's
///         insides are missing.
ZR_API ZRRESULT ZrBlobByteLen(ZRBLOB blob, uint32_t* length) ZR_NOEXCEPT;

/// ZrCompareBlob tells whether two blobs have the same content. Positions don't matter; there is no order of blobs.
///
/// @param equal  receives 1 or 0.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if an argument is null; ZR_R_FAILED if the insides of a handle are missing.
///         `*equal` is untouched by a failure.
///
/// Linear if the lengths are equal; constant if the bytes are shared.
ZR_API ZRRESULT ZrCompareBlob(ZRBLOB left, ZRBLOB right, uint8_t* equal) ZR_NOEXCEPT;

// ---- The position --------------------------------------------------------------------------------------------------

/// ZrBlobPosition tells the position. After ZrRemoveBlob it may lie behind the end.
///
/// @param position  receives it.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if an argument is null; ZR_R_FAILED or ZR_R_INVALID_OBJECT_STATE if the
///         handle's insides are missing. `*position` is untouched by a failure.
ZR_API ZRRESULT ZrBlobPosition(ZRBLOB blob, uint32_t* position) ZR_NOEXCEPT;

/// ZrSeekBlob moves the position, never forward behind the end. Detaches.
///
/// A position that ZrRemoveBlob left behind the end may stay there after a backward move; any other move ends that.
///
/// @param offset     in bytes, may be 0.
/// @param origin     ZR_BLOB_SEEK_START: to the offset, at most to the end. ZR_BLOB_SEEK_POSITION: by the offset; the
///                   32-bit sum of a forward move wraps around, a backward move stops at the start.
///                   ZR_BLOB_SEEK_END: to the end, not back from it.
/// @param direction  with ZR_BLOB_SEEK_POSITION: ZR_BLOB_FORWARD, or any other value for backward. Else ignored.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `blob` is null or, behind the detaching, for any other origin;
///         ZR_R_FAILED or ZR_R_INVALID_OBJECT_STATE as for the family. A failure leaves the position.
/// @throws std::bad_alloc
ZR_API ZRRESULT ZrSeekBlob(ZRBLOB blob, uint32_t offset, uint8_t origin, uint8_t direction);

// ---- Changing ------------------------------------------------------------------------------------------------------

/// ZrWriteBlob overwrites bytes at the position, lengthens the blob as needed and moves the position behind what it
/// wrote. Detaches.
///
/// @param bytes  reads `count` bytes.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `blob` or `bytes` is null or `count` is 0, or, behind the detaching, if
///         the position lies behind the end, as ZrRemoveBlob may leave it (ZrSeekBlob repairs it); ZR_R_FAILED or
///         ZR_R_INVALID_OBJECT_STATE as for the family.
/// @throws std::bad_alloc
ZR_API ZRRESULT ZrWriteBlob(ZRBLOB blob, const void* bytes, uint32_t count);

/// ZrInsertBlob puts bytes in front of the byte at `offset`. The position doesn't move, wherever it is. Detaches.
///
/// @param offset  at most the length; the length itself appends.
/// @param bytes   reads `count` bytes.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `blob` or `bytes` is null or `count` is 0, or, behind the detaching, if
///         `offset` is greater than the length; ZR_R_FAILED or ZR_R_INVALID_OBJECT_STATE as for the family.
/// @throws std::bad_alloc
ZR_API ZRRESULT ZrInsertBlob(ZRBLOB blob, uint32_t offset, const void* bytes, uint32_t count);

/// ZrAppendBlob puts the content of `other` behind that of `blob`. The position doesn't move. Detaches `blob`.
///
/// @param other  may be `blob` itself, whose content is doubled, or a copy of it. May have length 0.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if a handle is null or `other` has lost its bytes; ZR_R_FAILED or
///         ZR_R_INVALID_OBJECT_STATE as for the family.
/// @throws std::bad_alloc
ZR_API ZRRESULT ZrAppendBlob(ZRBLOB blob, ZRBLOB other);

/// ZrAppendBlobData puts bytes behind the content. The position doesn't move. Detaches.
///
/// @param bytes  reads `count` bytes.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `blob` or `bytes` is null or `count` is 0; ZR_R_FAILED or
///         ZR_R_INVALID_OBJECT_STATE as for the family.
/// @throws std::bad_alloc
///
/// Allocates once in 1024 bytes. A large blob that grows by small pieces is moved each time the heap can't extend it.
ZR_API ZRRESULT ZrAppendBlobData(ZRBLOB blob, const void* bytes, uint32_t count);

/// ZrRemoveBlob takes out bytes and closes the gap. The position doesn't move, and may lie behind the end
/// then. Detaches.
///
/// @param offset  at most the length; the length itself removes nothing.
/// @param count   if fewer bytes follow the offset, those are removed.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `blob` is null or `count` is 0, or, behind the detaching, if `offset` is
///         greater than the length; ZR_R_FAILED or ZR_R_INVALID_OBJECT_STATE as for the family.
/// @throws std::bad_alloc, for the detaching
///
/// The memory of the removed bytes stays with the blob; they are overwritten with 0xFE.
ZR_API ZRRESULT ZrRemoveBlob(ZRBLOB blob, uint32_t offset, uint32_t count);

#endif
