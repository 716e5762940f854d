// ZrCore: safe arrays, of one element type and any number of dimensions, each with a lower bound of its own.
//
// The element type is a tag of variant.h, and the elements lie in one block, the last dimension varying fastest. Plain
// values and UUIDs stand in it as they are, variants as whole records; strings, blobs, REFs, SREFs and interface
// objects as one pointer each, null for none. The array owns its elements:
//
//     bounds {2, 0} {3, 1}        elements  (0,1) (0,2) (0,3) (1,1) (1,2) (1,3)      a dimension: {count, lower bound}
//
// Elements can be of every tag but ZR_VT_EMPTY, ZR_VT_OPAQUE and those that are not assigned. An array of another tag,
// or without dimensions, can be made and destroyed, and has no storage: nothing can be put into it.
//
// Elements are copied in and out. What a get delivers belongs to the caller, as if ZrVariantCopy or the family's own
// copy had made it, and what a put was given stays the caller's. A value is always passed by the address of a variable
// of the element's type: of an int32_t, of a ZRSTR, of a ZRUUID, of a ZRVARIANT.
//
// Indices are 32 bits each, one for each dimension, in order; negative ones as their two's complement. Together they
// make one offset into the elements, and only an offset that comes out negative is refused: bounds are not compared one
// by one, and staying within the upper ones is the caller's part. Counts, their product and offsets are 32 bits and
// wrap around.
//
// In this family a null handle or a null pointer that is needed gives ZR_R_INVALID_POINTER. An array without what an
// operation needs, made as above, gives ZR_R_FAILED.
//
// Out of memory (see "Exceptions" in base.h):
//
//     a new array, a copy     its object      throws std::bad_alloc
//                             all the rest    terminates the process, the copies of elements included
//     shape, type, get, put   all             throws std::bad_alloc
//     any                     new text        a null element; for the text of a UUID the element didn't convert
//     any                     new blob        throws or terminates the process as ZrCreateBlob does
//
// Copying an element that is a variant with an array copies that array, and may terminate the process like any copy of
// an array. After an exception of ZrSafeArrayRedim or ZrSafeArrayChangeType the array is as before; after one of a put
// the element may be null.
//
// AddRef and Release of objects in elements must not throw. What they throw passes through the function that called
// them, which may leave the array unusable, or terminates the process.
//
// Threads: before ZrInitialize too. An array has a flag that is taken and left at once, never waited for: by
// ZrSafeArrayLock, by ZrSafeArrayAccessData, and for its duration by each get and put, which fail while it is taken,
// the holder's too. Nothing else looks at it: whoever destroys, copies, converts, compares or changes the shape of an
// array keeps all others from it.

#ifndef ZRCORE_ARRAY_H
#define ZRCORE_ARRAY_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/variant.h"

/// ZrSafeArrayBound is one dimension.
typedef struct ZrSafeArrayBound {
  uint32_t elementCount;
  int32_t lowerBound;  ///< the smallest index; the greatest is lowerBound + elementCount - 1
} ZrSafeArrayBound;

ZR_STATIC_ASSERT(sizeof(ZrSafeArrayBound) == 8 && offsetof(ZrSafeArrayBound, lowerBound) == 4, "two words of 32 bits");

// ---- Life ----------------------------------------------------------------------------------------------------------

/// ZrSafeArrayCreate makes an array of zeros; of nulls where elements are pointers, of empty variants.
///
/// @param tag         of the elements; flags in it are dropped. With a tag that elements can't have, or 0 dimensions,
///                    the array has no storage.
/// @param dimensions  any number.
/// @param bounds      reads one record for each dimension, and the first of them even for 0.
/// @return gives an array (ZrSafeArrayDestroy, or a variant that owns it); null if `bounds` is null.
/// @throws std::bad_alloc if there is no memory for the array's object; see "Exceptions" in base.h. No memory for
///         anything else terminates the process.
///
/// Five allocations, one of them for the elements.
ZR_API ZRSAFEARRAY ZrSafeArrayCreate(uint16_t tag, uint32_t dimensions, const ZrSafeArrayBound* bounds);

/// ZrSafeArrayDestroy releases the elements and the array, whatever its flag.
///
/// @param array  takes the array.
/// @return
///   - ZR_R_OK               the array was released.
///   - ZR_R_INVALID_POINTER  `array` is null.
///
/// Throws nothing, and needs no memory; see "Exceptions" in base.h. An exception from Release of an object in an
/// element terminates the process.
ZR_API ZRRESULT ZrSafeArrayDestroy(ZRSAFEARRAY array);

/// ZrSafeArrayCopy makes an array with copies of the elements, its flag free. Strings and blobs are shared, interface
/// objects get one more reference, records are copied, and variants as ZrVariantCopy does. Nulls stay, and an SREF with
/// neither ref nor text becomes null.
///
/// @param copy  an array in it is destroyed first, so it must be null or a handle other than `source`; receives the new
///              array, or null if `source` has no dimensions. Unchanged if `source` is null.
/// @return
///   - ZR_R_OK                    `*copy` gives the new array.
///   - ZR_R_INVALID_POINTER       an argument is null.
///   - ZR_R_INVALID_OBJECT_STATE  `source` has no dimensions.
/// @throws std::bad_alloc if there is no memory for the new array's object; `*copy` is null then. No memory for
///         anything else, the copies of elements included, terminates the process. See "Exceptions" in base.h.
ZR_API ZRRESULT ZrSafeArrayCopy(ZRSAFEARRAY source, ZRSAFEARRAY* copy);

/// ZrSafeArrayRedim gives the array another shape. Elements keep their place in the block, not their indices: as many
/// as both shapes have stay, the rest is released, new ones are zero. Those that stay are copied as ZrSafeArrayCopy
/// does, but null strings become empty ones. The array's handle stays; addresses that ZrSafeArrayAccessData and
/// ZrSafeArrayGetBounds gave are dead, and so are blobs, REFs and SREFs that were read there.
///
/// @param dimensions  of the new shape, above 0; may differ from what the array had.
/// @param bounds      reads one record for each; not the array's own, which end here.
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `array` is null; ZR_R_INVALID_OBJECT_STATE if it has no dimensions;
///         ZR_R_INVALID_ARGUMENTS if `bounds` is null or `dimensions` is 0; ZR_R_FAILED if it can't have elements.
///         Nothing has changed after a failure.
/// @throws std::bad_alloc if there is no memory for the bounds, the elements or their copies; the array is as before.
///         See "Exceptions" in base.h.
ZR_API ZRRESULT ZrSafeArrayRedim(ZRSAFEARRAY array, uint32_t dimensions, const ZrSafeArrayBound* bounds);

// ---- Elements ------------------------------------------------------------------------------------------------------

/// ZrSafeArrayGetElement copies an element out.
///
/// @param indices  reads one for each dimension.
/// @param value    address of a variable of the element's type. A null string, blob, REF or SREF leaves it as it was; a
///                 variable for an interface pointer must be null before, one for a variant must hold a variant, which
///                 is released before the element is read; it must not be the one that owns this array.
/// @return ZR_R_OK; 1, a success without a value, if the array has no elements; ZR_R_INVALID_POINTER if an argument is
///         null; ZR_R_INVALID_OBJECT_STATE if the flag is taken; ZR_R_INVALID_ARGUMENTS, or ZR_R_FAILED for variants,
///         if the offset is negative; ZR_R_FAILED as for the family; the codes of ZrVariantCopy for variants.
/// @throws std::bad_alloc if there is no memory for the copy of a blob's handle, a REF, an SREF or what a variant
///         holds. The variable is unchanged then; a variant was released, and has the element's tag word and a null
///         Value. No other element needs memory. See "Exceptions" in base.h.
///
/// Two atomic exchanges.
ZR_API ZRRESULT ZrSafeArrayGetElement(ZRSAFEARRAY array, const uint32_t* indices, void* value);

/// ZrSafeArrayPutElement releases an element and puts a copy of the value in its place.
///
/// @param indices  reads one for each dimension.
/// @param value    address of a variable of the element's type; not one that the element itself holds, since that is
///                 released first. A null string is put as an empty one, a null blob or interface as null.
/// @return as ZrSafeArrayGetElement, but ZR_R_INVALID_ARGUMENTS for negative offsets of variants too. For a REF or
///         SREF also what ZrCopyREF or ZrCopySREF answers if it isn't ZR_R_OK, with the element null then:
///         ZR_R_INVALID_ARGUMENTS for a null one, 1 for an SREF with neither ref nor text.
/// @throws std::bad_alloc if there is no memory for the copy of a blob's handle, a REF, an SREF or what a variant
///         holds. The old element was released then: the element is null, or a variant with the value's tag word and a
///         null Value. No other element needs memory. See "Exceptions" in base.h.
///
/// Where a put of a pointer has no place, by its offset or for want of elements, the copy that was made for it stays
/// behind unowned.
ZR_API ZRRESULT ZrSafeArrayPutElement(ZRSAFEARRAY array, const uint32_t* indices, const void* value);

// ---- The flag and direct access ------------------------------------------------------------------------------------

/// ZrSafeArrayLock takes the flag. It doesn't wait and doesn't count.
///
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `array` is null; ZR_R_INVALID_OBJECT_STATE if the flag is taken, be it by
///         this caller.
ZR_API ZRRESULT ZrSafeArrayLock(ZRSAFEARRAY array) ZR_NOEXCEPT;

/// ZrSafeArrayUnlock leaves the flag, whoever took it.
///
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `array` is null; ZR_R_INVALID_OBJECT_STATE if it was free.
ZR_API ZRRESULT ZrSafeArrayUnlock(ZRSAFEARRAY array) ZR_NOEXCEPT;

/// ZrSafeArrayAccessData takes the flag and lends the elements.
///
/// @param data  receives the address of the first element, null for an array without elements; lent until the shape or
///              the type changes or the array is destroyed, to be used until the flag is left.
/// @return as ZrSafeArrayLock; ZR_R_INVALID_POINTER also if `data` is null.
ZR_API ZRRESULT ZrSafeArrayAccessData(ZRSAFEARRAY array, void** data) ZR_NOEXCEPT;

/// ZrSafeArrayUnaccessData is ZrSafeArrayUnlock under a second name.
ZR_API ZRRESULT ZrSafeArrayUnaccessData(ZRSAFEARRAY array) ZR_NOEXCEPT;

// ---- Questions -----------------------------------------------------------------------------------------------------
//
// They answer ZR_R_OK once the array is there, also where they have nothing to say and leave the variable as it was:
// give it a value before. A null variable is no failure either, but ZrSafeArrayGetVartype must have one; where two are
// written, the first or, for the bounds, either one being null leaves both.

/// ZrSafeArrayGetVartype tells the tag of the elements, without flags.
///
/// @param tag  receives it; must not be null.
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetVartype(ZRSAFEARRAY array, uint16_t* tag) ZR_NOEXCEPT;

/// ZrSafeArrayGetBounds tells the number of dimensions and lends their records. Nothing is written if there are none.
///
/// @param dimensions  receives the number.
/// @param bounds      receives the address of the first record; the array's own, until it is destroyed or gets
///                    another shape.
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetBounds(ZRSAFEARRAY array, uint32_t* dimensions,
                                     const ZrSafeArrayBound** bounds) ZR_NOEXCEPT;

/// ZrSafeArrayGetElementCount tells the number of elements and their size. Nothing is written for an array that can't
/// have elements.
///
/// @param count  receives the product of the dimensions' counts; 1 for none.
/// @param bytes  receives the size of all; may be null.
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetElementCount(ZRSAFEARRAY array, uint32_t* count, uint64_t* bytes) ZR_NOEXCEPT;

/// ZrSafeArrayGetLBound tells the smallest index of a dimension.
///
/// @param dimension  from 1; nothing is written for any other.
/// @param bound      receives it, negative ones as their two's complement.
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetLBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) ZR_NOEXCEPT;

/// ZrSafeArrayGetUBound tells the greatest index of a dimension, which is below the smallest if it has no elements.
///
/// @param dimension  from 1; nothing is written for any other.
/// @param bound      receives it.
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if `array` is null.
ZR_API ZRRESULT ZrSafeArrayGetUBound(ZRSAFEARRAY array, uint32_t dimension, uint32_t* bound) ZR_NOEXCEPT;

// ---- Conversion and comparison -------------------------------------------------------------------------------------

/// ZrSafeArrayChangeType converts all elements to another type, in place, as ZrVariantChangeType converts values.
///
/// Elements that don't convert become zero, null or empty, and the others are kept: there is no way back. What differs
/// from variants:
///
///   - A boolean or a ZR_VT_CHAR32 is taken for its number, also as text. ZR_VT_UI1 and ZR_VT_BYTE become booleans as
///     they are: 2 stays 2. ZR_VT_QWORD is a number to ZR_VT_DATETIME too, not an address (but an address where it is
///     the type of an element that is a variant).
///   - ZR_VT_TIME and ZR_VT_DATETIME convert only to 64-bit integers, ZR_VT_CY and each other (bit by bit), ZR_VT_R8,
///     ZR_VT_STR and ZR_VT_VARIANT.
///   - A null string converts as an empty one, and becomes one in its own type too. A null REF or SREF, or an SREF with
///     neither ref nor text, doesn't convert, to its own type neither; it becomes an empty variant.
///   - Interface pointers convert to their own type, and ZR_VT_DISPATCH to ZR_VT_UNKNOWN.
///   - Every element becomes a ZR_VT_VARIANT, with the plain name's tag where several types are one (for a
///     boolean ZR_VT_UI1).
///   - Elements that are variants convert by their own types, by-reference ones too, but for interface pointers; those
///     with arrays don't convert. One that refers to a variant with an array counts as converted if all of that array's
///     elements do, and becomes zero or null.
///
/// @param flags  no effect; pass 0.
/// @param tag    of the new elements; flags in it are dropped.
/// @return ZR_R_OK if all elements converted; 1 if the array has the new type but some have not; with the elements as
///         they were: ZR_R_INVALID_POINTER if `array` is null; ZR_R_FAILED if elements can't have the tag, or the array
///         has none to convert. In the latter case, if it has dimensions, ZrSafeArrayGetVartype still tells the old
///         type, but elements that ZrSafeArrayRedim may bring are of the new one.
/// @throws std::bad_alloc if there is no memory for the small object that knows the new type, for the new block or, as
///         for ZrVariantChangeType, for a new element; the array is as before. Elements that become ZR_VT_BLOB may
///         terminate the process as ZrCreateBlob does. See "Exceptions" in base.h.
///
/// Between numbers nothing is allocated but the new block and a small object that knows the new type.
ZR_API ZRRESULT ZrSafeArrayChangeType(ZRSAFEARRAY array, uint32_t flags, uint16_t tag);

/// ZrSafeArrayCompare tells whether two arrays have equal elements.
///
/// Numbers and UUIDs are equal if their bytes are (so 0.0 and -0.0 differ, and the same NaN is equal), interface
/// pointers if they are the same, others as their families compare them; where those fail or give no answer, as for
/// null blobs, the elements differ. An array equals itself, whatever it holds. Arrays of one shape count as equal if
/// their element types differ, or if they can't have elements; one without dimensions on the left equals any. An array
/// whose type was changed while it had no elements keeps its old tag, although the elements that it gets later have the
/// new type. It differs from an array of the old type.
///
/// @param equal  receives 1 or 0. Left as it was for arrays of different shapes, lower bounds included: set it to
///               0 before.
/// @return ZR_R_OK; ZR_R_INVALID_POINTER if an argument is null.
///
/// Throws nothing, and needs no memory; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrSafeArrayCompare(ZRSAFEARRAY left, ZRSAFEARRAY right, uint8_t* equal);

#endif
