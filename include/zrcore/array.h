// ZrCore: safe arrays, with one element type and any number of dimensions.
//
// A ZRSAFEARRAY is a handle on an array. Each dimension has a count and a lower bound of its own, and the element type
// is a tag of variant.h. The array owns its elements, which lie in one block; the last dimension varies fastest:
//
//     bounds {2, 0} {3, 1}        | (0,1) | (0,2) | (0,3) | (1,1) | (1,2) | (1,3) |   a bound is {count, lower bound}
//
// Numbers, booleans and UUIDs lie in the block directly, and variants as ZRVARIANT records. Strings, blobs, REFs, SREFs
// and interface objects lie in it as one pointer each, which may be null.
//
//     const ZrSafeArrayBound bound = {3, 1};                              // three elements, indices 1 to 3
//     ZRSAFEARRAY array = ZrSafeArrayCreate(ZR_VT_I4, 1, &bound);         // ZrSafeArrayDestroy(array) frees it
//     uint32_t index = 2;
//     int32_t value = 42;
//     ZRRESULT result = ZrSafeArrayPutElement(array, &index, &value);     // the address of a variable of the type
//
// Some arrays cannot have elements: those without dimensions, and those whose tag is ZR_VT_EMPTY, ZR_VT_OPAQUE or not
// assigned. Such an array can be created and destroyed, but it has no storage, and nothing can be put into it. An array
// that merely has no elements, because the count of a dimension is 0, is different: it can get elements by
// ZrSafeArrayRedim.
//
// In this family a null handle, or a null pointer that the function needs, returns ZR_R_INVALID_POINTER, unless a
// comment says otherwise. ZR_R_FAILED means that the array cannot have elements, unless a comment says otherwise.
// Whoever creates an array frees it with ZrSafeArrayDestroy, or stores it in a variant, which then owns it.
//
// ## Threads
// Any thread, before ZrInitialize too. Each array has an access flag. Four functions set it:
//
//   - ZrSafeArrayGetElement and ZrSafeArrayPutElement set the flag and clear it before they return.
//   - ZrSafeArrayLock and ZrSafeArrayAccessData set the flag, and it stays set until ZrSafeArrayUnlock or
//     ZrSafeArrayUnaccessData clears it.
//
// If the flag is already set, even by the calling thread, these four functions return ZR_R_INVALID_OBJECT_STATE at
// once. They never wait.
//
// No other function checks the flag. While one thread destroys, copies, converts, compares or reshapes an array, no
// other thread may use it: the caller must prevent that, or it is a data race.
//
// ## Out of memory
// See "Exceptions" in base.h. What happens depends on the function and on what the memory is for:
//
//     ZrSafeArrayCreate, ZrSafeArrayCopy       the array's object      throws std::bad_alloc
//                                              all else, the copies    terminates the process
//                                              of elements included
//     ZrSafeArrayRedim, ZrSafeArrayChangeType  all                     throws std::bad_alloc; the array is unchanged
//     ZrSafeArrayGetElement                    all                     throws std::bad_alloc
//     ZrSafeArrayPutElement                    all                     throws std::bad_alloc; the element may be null
//
// Three cases differ:
//
//   - A text that an element is converted to: the element becomes null, and nothing is thrown. If it is the text of a
//     UUID, or of a ZR_VT_CHAR32 in a variant, the element also counts as not converted.
//   - A blob that an element is converted to: the call throws or terminates the process as ZrCreateBlob does.
//   - A variant that owns an array: copying it copies that array, which may terminate the process as ZrSafeArrayCopy
//     does.
//
// ## Callbacks
// AddRef and Release of objects in elements must not throw. Their exceptions terminate the process or pass through the
// function that called them, which may leave the array unusable.

#ifndef ZRCORE_ARRAY_H
#define ZRCORE_ARRAY_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/variant.h"

/// ZrSafeArrayBound describes one dimension.
typedef struct ZrSafeArrayBound {
  uint32_t elementCount;
  int32_t lowerBound;  ///< the smallest index; the greatest is lowerBound + elementCount - 1
} ZrSafeArrayBound;

ZR_STATIC_ASSERT(sizeof(ZrSafeArrayBound) == 8 && offsetof(ZrSafeArrayBound, elementCount) == 0 &&
                     offsetof(ZrSafeArrayBound, lowerBound) == 4,
                 "two words of 32 bits");

// ---- Lifetime ------------------------------------------------------------------------------------------------------

/// ZrSafeArrayCreate creates an array. Its elements are zeros, null pointers or empty variants.
///
/// @param tag         the element type; flags in it are ignored. With a tag that elements cannot have, the array has no
///                    storage.
/// @param dimensions  the number of dimensions. With 0 the array has no storage.
/// @param bounds      reads one record per dimension, and reads the first record even if `dimensions` is 0. The product
///                    of the counts is a 32-bit number and wraps around.
/// @return gives an array (ZrSafeArrayDestroy, or a variant that owns it); null if `bounds` is null.
/// @throws std::bad_alloc if there is no memory for the array's object; see "Exceptions" in base.h. Out of memory for
///         anything else, the elements included, terminates the process.
///
/// At most two allocations, one of them for the elements.
ZR_API ZRSAFEARRAY ZrSafeArrayCreate(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds);

/// ZrSafeArrayDestroy releases the elements and frees the array, even if the access flag is set.
///
/// @param array  takes the array.
/// @return
///   - ZR_R_OK               the array was freed.
///   - ZR_R_INVALID_POINTER  `array` is null.
///
/// Throws nothing, and needs no memory; see "Exceptions" in base.h. An exception from Release of an object in an
/// element terminates the process.
ZR_API ZRRESULT ZrSafeArrayDestroy(ZRSAFEARRAY array);

/// ZrSafeArrayCopy creates an array with copies of the elements. The copy's access flag is clear.
///
/// Strings and blobs are shared, and interface objects get one more reference. UUIDs, REFs and SREFs are copied, and
/// variants are copied as ZrVariantCopy does; errors of these copies are ignored. A null element stays null. An SREF
/// with neither a ref nor a text becomes null.
///
/// @param copy  the address of a variable. Initialise the variable: if it contains an array, that array is destroyed
///              first. It must not contain `source`: otherwise the behaviour is undefined. The variable receives the
///              new array, or null if `source` has no dimensions. It is unchanged if `source` is null.
/// @return
///   - ZR_R_OK                    `*copy` gives the new array.
///   - ZR_R_INVALID_POINTER       an argument is null.
///   - ZR_R_INVALID_OBJECT_STATE  `source` has no dimensions.
/// @throws std::bad_alloc if there is no memory for the new array's object; `*copy` is null then. Out of memory for
///         anything else, the copies of elements included, terminates the process. See "Exceptions" in base.h.
ZR_API ZRRESULT ZrSafeArrayCopy(ZRSAFEARRAY source, ZRSAFEARRAY* copy);

/// ZrSafeArrayRedim changes the shape of an array.
///
/// Elements keep their position in the block, not their indices. If the new shape has fewer elements, the last ones are
/// released. If it has more, the additional ones are zeros, null pointers or empty variants. The elements that remain
/// are copied as ZrSafeArrayCopy does, except that a null string becomes an empty string.
///
/// The array's handle stays valid. Pointers from ZrSafeArrayAccessData and ZrSafeArrayGetBounds must not be used any
/// more. Nor must handles and records that were read from elements through such a pointer, unless they are strings or
/// interface pointers: the array now has copies of them. The access flag is neither checked nor changed.
///
/// @param dimensions  the new number of dimensions, above 0. It may differ from the old one.
/// @param bounds      reads one record per dimension. It must not point at the array's own records, which this call
///                    overwrites or frees.
/// @return The first failure that applies. Nothing changed after a failure.
///   - ZR_R_OK                    the array has the new shape.
///   - ZR_R_INVALID_POINTER       `array` is null.
///   - ZR_R_INVALID_OBJECT_STATE  the array has no dimensions.
///   - ZR_R_INVALID_ARGUMENTS     `bounds` is null or `dimensions` is 0.
///   - ZR_R_FAILED                elements cannot have the array's tag.
/// @throws std::bad_alloc if there is no memory for the bounds, the elements or their copies; the array is unchanged
///         then. See "Exceptions" in base.h.
ZR_API ZRRESULT ZrSafeArrayRedim(ZRSAFEARRAY array, uint32_t dimensions, const ZrSafeArrayBound* bounds);

// ---- Elements ------------------------------------------------------------------------------------------------------
//
// Elements are copied in and out. The caller owns what ZrSafeArrayGetElement stores in the variable, as if
// ZrVariantCopy or the copy function of the element's family had made it. The caller also keeps the value that it
// passes to ZrSafeArrayPutElement. A value is always passed by the address of a variable of the element type: an
// int32_t, a ZRSTR, a ZRREF*, a ZRVARIANT; for a UUID it is the address of the ZRUUID itself.
//
// An index is 32 bits wide; a negative index is passed as its two's complement. The library computes one 32-bit offset
// from all indices. Only a negative offset is refused: the indices are not compared with the bounds one by one. An
// index above the upper bound reads or writes another element, or memory past the end of the block, which is undefined
// behaviour. Counts, their product and offsets wrap around at 32 bits.

/// ZrSafeArrayGetElement copies one element into a variable.
///
/// @param indices  reads one 32-bit index per dimension.
/// @param value    receives the element; a variable of the element type. Set a variable for a string, blob, REF, SREF
///                 or interface pointer to null before the call:
///                   - If the element is a null string, blob, REF or SREF, the variable is unchanged. An SREF with
///                     neither a ref nor a text sets the variable to null.
///                   - If the array has no elements, the object that a non-null interface pointer in the variable
///                     points at gets one more reference, which leaks.
///                 A variable for a variant must have been initialised: the value that it holds is released before the
///                 element is read, so it must not be the variant that owns this array.
/// @return
///   - ZR_R_OK                    the element was copied.
///   - 1                          the array has no elements, and nothing was copied.
///   - ZR_R_INVALID_POINTER       an argument is null.
///   - ZR_R_INVALID_OBJECT_STATE  the access flag is set.
///   - ZR_R_INVALID_ARGUMENTS     the offset is negative, and the elements are not variants.
///   - ZR_R_FAILED                the offset is negative, and the elements are variants; or the array cannot have
///                                elements.
///   - other codes                of ZrVariantCopy, if the elements are variants. The variant then has the element's
///                                tag word and a null Value.
/// @throws std::bad_alloc if there is no memory for the copy of a blob's handle, a REF, an SREF or what a variant
///         holds. The variable is unchanged then, except a variant: its old value was released, and it has the
///         element's tag word and a null Value. No other element needs memory. See "Exceptions" in base.h.
///
/// Leak: a string, blob, REF, SREF or interface pointer that the variable held is overwritten and not released.
///
/// Two atomic exchanges.
ZR_API ZRRESULT ZrSafeArrayGetElement(ZRSAFEARRAY array, const uint32_t* indices, void* value);

/// ZrSafeArrayPutElement replaces one element with a copy of the value.
///
/// The old element is released before the value is copied. The value must not be something that only the old element
/// keeps alive: that is undefined behaviour.
///
/// @param indices  reads one 32-bit index per dimension.
/// @param value    reads a variable of the element type. A null string is stored as an empty string; a null blob or
///                 interface pointer is stored as null.
/// @return
///   - ZR_R_OK                    the element was replaced.
///   - 1                          the array has no elements, or the value is an SREF with neither a ref nor a text (the
///                                element is null then).
///   - ZR_R_INVALID_POINTER       an argument is null.
///   - ZR_R_INVALID_OBJECT_STATE  the access flag is set.
///   - ZR_R_INVALID_ARGUMENTS     the offset is negative; or the value is a null REF or SREF (the element is null
///                                then).
///   - ZR_R_FAILED                the array cannot have elements.
///   - other codes                of ZrVariantCopy, if the elements are variants. The element then has the value's tag
///                                word and a null Value.
/// @throws std::bad_alloc if there is no memory for the copy of a blob's handle, a REF, an SREF or what a variant
///         holds. The old element was released; the element is null then, or a variant with the value's tag word and a
///         null Value. No other element needs memory. See "Exceptions" in base.h.
///
/// Leak: if the offset is negative or the array has no elements, a copy of a string, blob, REF, SREF or interface
/// pointer has already been made, and it is not released. Check the indices before the call.
///
/// Two atomic exchanges.
ZR_API ZRRESULT ZrSafeArrayPutElement(ZRSAFEARRAY array, const uint32_t* indices, const void* value);

// ---- The access flag and direct access -----------------------------------------------------------------------------
//
// If a thread does not clear the flag, nothing deadlocks, but every ZrSafeArrayGetElement, ZrSafeArrayPutElement,
// ZrSafeArrayLock and ZrSafeArrayAccessData fails until some thread clears the flag.

/// ZrSafeArrayLock sets the access flag. It does not wait and does not count: a second call fails.
///
/// @return
///   - ZR_R_OK                    the flag was clear and is now set.
///   - ZR_R_INVALID_POINTER       `array` is null.
///   - ZR_R_INVALID_OBJECT_STATE  the flag is set already, possibly by this caller.
ZR_API ZRRESULT ZrSafeArrayLock(ZRSAFEARRAY array) ZR_NOEXCEPT;

/// ZrSafeArrayUnlock clears the access flag, whichever thread or call has set it.
///
/// @return
///   - ZR_R_OK                    the flag was set and is now clear.
///   - ZR_R_INVALID_POINTER       `array` is null.
///   - ZR_R_INVALID_OBJECT_STATE  the flag was clear.
ZR_API ZRRESULT ZrSafeArrayUnlock(ZRSAFEARRAY array) ZR_NOEXCEPT;

/// ZrSafeArrayAccessData sets the access flag and lends the elements.
///
/// @param data  receives the address of the first element, or null if the array has no elements; unchanged after a
///              failure. Lent until the shape or the type of the array changes or the array is destroyed. Do not use
///              the elements after the flag has been cleared: if another thread then changes them, that is a data race.
/// @return
///   - ZR_R_OK                    the flag is now set, and `*data` was written.
///   - ZR_R_INVALID_POINTER       an argument is null.
///   - ZR_R_INVALID_OBJECT_STATE  the flag is set already, possibly by this caller.
ZR_API ZRRESULT ZrSafeArrayAccessData(ZRSAFEARRAY array, void** data) ZR_NOEXCEPT;

/// ZrSafeArrayUnaccessData is ZrSafeArrayUnlock under a second name.
ZR_API ZRRESULT ZrSafeArrayUnaccessData(ZRSAFEARRAY array) ZR_NOEXCEPT;

// ---- Type and shape ------------------------------------------------------------------------------------------------
//
// These functions return ZR_R_OK whenever the handle is not null, even if they have nothing to report and leave the
// variable unchanged. Initialise the variable before the call. A null pointer for a result is not a failure either:
// nothing is written then. ZrSafeArrayGetVartype alone needs its pointer.

/// ZrSafeArrayGetVartype returns the tag of the elements, without flags, in `*tag`.
///
/// @param tag  receives the tag. It must not be null: that is undefined behaviour.
/// @return
///   - ZR_R_OK               `*tag` was written.
///   - ZR_R_INVALID_POINTER  `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetVartype(ZRSAFEARRAY array, uint16_t* tag) ZR_NOEXCEPT;

/// ZrSafeArrayGetBounds returns the number of dimensions and lends their records.
///
/// @param dimensions  receives the number. Nothing is written if this is null.
/// @param bounds      receives the address of the first record, which is the array's own: lent until the array is
///                    destroyed or gets another shape. Nothing is written if this is null.
/// @return
///   - ZR_R_OK               both were written; or nothing was written because a pointer is null or the array has no
///                           dimensions.
///   - ZR_R_INVALID_POINTER  `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetBounds(ZRSAFEARRAY array, uint32_t* dimensions,
                                     const ZrSafeArrayBound** bounds) ZR_NOEXCEPT;

/// ZrSafeArrayGetElementCount returns the number of elements and their size.
///
/// @param count  receives the product of the dimensions' counts, a 32-bit number that wraps around. It is 1 if there
///               are no dimensions, although the array has no elements then. Nothing is written if `count` is null.
/// @param bytes  receives `*count` times the size of an element in bytes; may be null.
/// @return
///   - ZR_R_OK               the results were written; or nothing was written because `count` is null or elements
///                           cannot have the array's tag.
///   - ZR_R_INVALID_POINTER  `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetElementCount(ZRSAFEARRAY array, uint32_t* count, uint64_t* bytes) ZR_NOEXCEPT;

/// ZrSafeArrayGetLBound returns the smallest index of a dimension.
///
/// @param dimension  counts from 1. Nothing is written if there is no such dimension.
/// @param bound      receives the index; a negative index is its two's complement.
/// @return
///   - ZR_R_OK               `*bound` was written, or there is no such dimension, or `bound` is null.
///   - ZR_R_INVALID_POINTER  `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetLBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) ZR_NOEXCEPT;

/// ZrSafeArrayGetUBound returns the greatest index of a dimension. For a dimension without elements it is the smallest
/// index minus 1.
///
/// @param dimension  counts from 1. Nothing is written if there is no such dimension.
/// @param bound      receives the index; a negative index is its two's complement.
/// @return
///   - ZR_R_OK               `*bound` was written, or there is no such dimension, or `bound` is null.
///   - ZR_R_INVALID_POINTER  `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetUBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) ZR_NOEXCEPT;

// ---- Conversion and comparison -------------------------------------------------------------------------------------

/// ZrSafeArrayChangeType converts all elements to another type, in place.
///
/// An element that cannot be converted becomes zero or null; its old value is lost. The other elements are converted.
///
/// Elements that are not variants convert as ZrVariantChangeType converts values, with these differences:
///
///   - A boolean or a ZR_VT_CHAR32 converts as a number, to text too: 1 becomes "1", not "TRUE".
///   - ZR_VT_UI1 and ZR_VT_BYTE become booleans without a change of the byte: 2 stays 2.
///   - ZR_VT_QWORD converts to ZR_VT_DATETIME as a number, not as an address.
///   - ZR_VT_TIME and ZR_VT_DATETIME convert only to 64-bit integers, to ZR_VT_CY and to each other (the bits stay the
///     same), and to ZR_VT_R8, ZR_VT_STR and ZR_VT_VARIANT.
///   - A null string converts as an empty string. Converted to ZR_VT_STR it becomes an empty string.
///   - A null REF, a null SREF and an SREF with neither a ref nor a text do not convert, not even to their own type. As
///     variants they become empty variants.
///   - An interface pointer converts to its own type and to ZR_VT_VARIANT; ZR_VT_DISPATCH also converts to
///     ZR_VT_UNKNOWN.
///   - Every element converts to ZR_VT_VARIANT. The variant has the plain tag if several tags have the same storage:
///     ZR_VT_UI1 for booleans and ZR_VT_BYTE, ZR_VT_UI2 for ZR_VT_WORD, ZR_VT_UI4 for ZR_VT_DWORD and ZR_VT_CHAR32,
///     ZR_VT_UI8 for ZR_VT_QWORD.
///
/// Elements that are variants convert as ZrVariantChangeType converts them, by their own types. So a boolean becomes
/// the text "TRUE", and a ZR_VT_QWORD that becomes a ZR_VT_DATETIME is an address. There are these differences:
///
///   - ZR_VT_UI1 and ZR_VT_BYTE become booleans without a change of the byte, unless a by-reference ZR_VT_VARIANT
///     refers to them.
///   - ZR_VT_DISPATCH converts to ZR_VT_UNKNOWN too.
///   - A by-reference variant converts by the value that it refers to, but never to an interface pointer.
///   - A variant whose tag word has ZR_VT_ARRAY does not convert. A by-reference ZR_VT_VARIANT that refers to a variant
///     with an array becomes zero or null; it counts as converted if all elements of that array convert.
///   - Converted to ZR_VT_VARIANT, each variant is copied as by ZrVariantCopy; errors are ignored.
///
/// @param flags  has no effect; pass 0.
/// @param tag    the new element type; flags in it are ignored.
/// @return After a failure the elements are unchanged.
///   - ZR_R_OK               all elements were converted.
///   - 1                     the array has the new type, but some elements could not be converted.
///   - ZR_R_INVALID_POINTER  `array` is null.
///   - ZR_R_FAILED           elements cannot have the new tag, or the array has no elements or cannot have any. If
///                           elements can have the new tag and the array has dimensions, the type is half changed:
///                           ZrSafeArrayGetVartype still returns the old type, but elements that ZrSafeArrayRedim adds
///                           later have the new type.
/// @throws std::bad_alloc if there is no memory for the new block or, as for ZrVariantChangeType, for a new element;
///         the array is unchanged then. Elements that become ZR_VT_BLOB may terminate the process as ZrCreateBlob does.
///         See "Exceptions" in base.h.
///
/// Linear. Conversions between numbers allocate only the new block.
ZR_API ZRRESULT ZrSafeArrayChangeType(ZRSAFEARRAY array, uint32_t flags, uint16_t tag);

/// ZrSafeArrayCompare reports whether two arrays have equal elements.
///
/// Numbers and UUIDs are equal if their bytes are equal, so 0.0 differs from -0.0 and a NaN equals the same NaN.
/// Interface pointers are equal if they are the same address. Other elements are compared as their families compare
/// them; if that comparison fails or writes no result, as for null blobs, the elements differ.
///
/// These results may surprise:
///
///   - An array equals itself, whatever its elements are.
///   - Two arrays of the same shape are equal if their tags differ, or if they cannot have elements.
///   - A left array without dimensions equals every other array.
///   - An array whose type is half changed, see ZR_R_FAILED of ZrSafeArrayChangeType, has the old tag but differs from
///     an array of the old type.
///
/// @param equal  receives 1 or 0. Set it to 0 before the call: nothing is written if the shapes, lower bounds included,
///               differ.
/// @return
///   - ZR_R_OK               the arrays were compared, or their shapes differ and `*equal` was not written.
///   - ZR_R_INVALID_POINTER  an argument is null.
///
/// Throws nothing, and needs no memory; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrSafeArrayCompare(ZRSAFEARRAY left, ZRSAFEARRAY right, uint8_t* equal);

#endif
