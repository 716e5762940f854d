// ZrCore: references to objects: by six numbers (REF), or by numbers or a text that may turn out to be such (SREF).
//
// A ZRREF is six unsigned 32-bit words, and its text is the six decimal numbers with dots between them. A ZRSREF holds
// a ZRREF, a text, or both:
//
//     ZRREF   | word 0 | word 1 | ... | word 5 |     "1.2.3.4.5.6"        what the words mean is the caller's business
//     ZRSREF  | ref (8) | text (8) |                                      it owns both; either may be null
//
// The nil ZRREF is all zero, "0.0.0.0.0.0". A ZRSREF is nil if it is null itself; if it has no ref, and no text, an
// empty text or exactly "0.0.0.0.0.0"; or if it has no text and a nil ref. With both a ref and a text it is never nil.
//
// Records that a function here gives come from a cache of their own or from the heap, and go back through ZrDestroyREF
// and ZrDestroySREF; they are overwritten with zeros then.
//
// In this family a null argument gives ZR_R_INVALID_ARGUMENTS, except for the operands of comparisons, where null
// counts as nil. The functions that make a record throw std::bad_alloc if there is no memory for it; out-values are
// unchanged then, and nothing leaks. See "Exceptions" in base.h. Any thread, any time, before ZrInitialize too; records
// have no lock.

#ifndef ZRCORE_REFERENCE_H
#define ZRCORE_REFERENCE_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/string.h"

#ifndef __cplusplus
#include <stdbool.h>
#endif

/// ZRREF is a reference by numbers.
typedef struct tagZRREF {
  uint32_t words[6];
} ZRREF;

/// ZRSREF is a reference by numbers, by text, or by both. It owns what it points at.
typedef struct tagZRSREF {
  ZRREF* ref;
  ZRSTR text;
} ZRSREF;

ZR_STATIC_ASSERT(sizeof(ZRREF) == 24, "a ZRREF is six words");
ZR_STATIC_ASSERT(sizeof(ZRSREF) == 16 && offsetof(ZRSREF, text) == 8, "a ZRSREF is two pointers");

// ---- Records -------------------------------------------------------------------------------------------------------

/// ZrCreateREF makes a nil record.
///
/// @return gives a record (ZrDestroyREF); never null.
/// @throws std::bad_alloc if there is no memory for the record; see "Exceptions" in base.h.
ZR_API ZRREF* ZrCreateREF(void);

/// ZrCreateSREF makes a record with neither ref nor text.
///
/// @return gives a record (ZrDestroySREF); never null.
/// @throws std::bad_alloc if there is no memory for the record; see "Exceptions" in base.h.
ZR_API ZRSREF* ZrCreateSREF(void);

/// ZrCopyREF makes a record with the words of `source`.
///
/// @param copy  gives the record (ZrDestroyREF). Unchanged after a failure or an exception.
/// @return
///   - ZR_R_OK                 `*copy` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null.
/// @throws std::bad_alloc if there is no memory for the record; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrCopyREF(const ZRREF* source, ZRREF** copy);

/// ZrCopySREF makes a record with a copy of the source's ref and one more reference on its text.
///
/// @param copy  gives the record (ZrDestroySREF). Unchanged after a failure or an exception.
/// @return
///   - ZR_R_OK                 `*copy` was written.
///   - 1                       a success: the source has neither ref nor text, and `*copy` is null.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null.
/// @throws std::bad_alloc if there is no memory for the record or for its ref; see "Exceptions" in base.h.
ZR_API ZRRESULT ZrCopySREF(const ZRSREF* source, ZRSREF** copy);

/// ZrDestroyREF takes a record, overwrites it with zeros and releases it. Null is ignored.
ZR_API void ZrDestroyREF(ZRREF* ref) ZR_NOEXCEPT;

/// ZrDestroySREF takes a record with its ref and its text, clears it and releases it. Null is ignored.
ZR_API void ZrDestroySREF(ZRSREF* sref) ZR_NOEXCEPT;

// ---- Text ----------------------------------------------------------------------------------------------------------

/// ZrREFToString writes the six numbers with dots between them, without blanks or leading zeros.
///
/// @param string  receives the text, which the caller destroys; null when memory is exhausted, which no code tells.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with `*string` unchanged, if an argument is null.
///
/// One allocation.
ZR_API ZRRESULT ZrREFToString(const ZRREF* ref, ZRSTR* string) ZR_NOEXCEPT;

/// ZrSREFToString gives the text of a reference: that of its numbers if it has any, whatever its text says; else one
/// more reference on its text; else an empty string.
///
/// @param string  receives the text, which the caller destroys; null when memory is exhausted, which no code tells.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with `*string` unchanged, if an argument is null.
///
/// One allocation for numbers, none for a text.
ZR_API ZRRESULT ZrSREFToString(const ZRSREF* sref, ZRSTR* string) ZR_NOEXCEPT;

/// ZrStringToREF reads the text that ZrREFToString writes, and no other: no sign, no leading zero, no blank inside, no
/// number above 4294967295. White space around it (blank, tab, line feed, vertical tab, form feed, carriage return) is
/// passed over.
///
/// A zero unit behind the last number ends the text, but not the count of dots: one more dot anywhere is refused.
///
/// @param ref  receives a new record. An old one is overwritten unseen.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS otherwise. `*ref` is unchanged then if an argument is null, if the text
///         hasn't exactly five dots or if there is nothing at all in front of, between or behind two of them; it is
///         null if there are six fields but not in the form above.
/// @throws std::bad_alloc if there is no memory for the record; `*ref` is unchanged then. See "Exceptions" in base.h.
///
/// Linear; no allocation but the record.
ZR_API ZRRESULT ZrStringToREF(ZRSTR string, ZRREF** ref);

/// ZrStringToSREF makes a reference of any text: by numbers alone if ZrStringToREF reads it, and then its exact form,
/// such as blanks around it, is gone; else by the text alone, as one more reference on `string`.
///
/// @param sref  receives a new record with either ref or text.
/// @return ZR_R_OK for every string, an empty one too; ZR_R_INVALID_ARGUMENTS, with `*sref` unchanged, if an argument
///         is null.
/// @throws std::bad_alloc if there is no memory for the record or for its ref; `*sref` is unchanged then. See
///         "Exceptions" in base.h.
ZR_API ZRRESULT ZrStringToSREF(ZRSTR string, ZRSREF** sref);

/// ZrSplitRefName reads a text as ZrStringToREF does, into six numbers of the caller's.
///
/// @param word0  receives the first word, or is null if that isn't wanted; and so do the others.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS, with nothing stored, if `string` is null or ZrStringToREF refuses it.
///
/// No allocation.
ZR_API ZRRESULT ZrSplitRefName(ZRSTR string, uint32_t* word0, uint32_t* word1, uint32_t* word2, uint32_t* word3,
                               uint32_t* word4, uint32_t* word5) ZR_NOEXCEPT;

// ---- Comparison by numbers -----------------------------------------------------------------------------------------
//
// The first unequal pair of words decides, by its difference modulo 2^32 read as a signed number. So words that lie
// more than 2147483647 apart order the wrong way round: the order is not transitive over the whole range.

/// ZrCompareREF tells whether two references are equal. Null equals null and nil.
///
/// @param left, right  may be null.
/// @param equal        receives 1 or 0.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `equal` is null.
ZR_API ZRRESULT ZrCompareREF(const ZRREF* left, const ZRREF* right, uint8_t* equal) ZR_NOEXCEPT;

/// ZrCompareREF_ThreeWay orders two references. Null equals null and nil, and comes before every other.
///
/// @param left, right  may be null.
/// @param order        receives 0 if they are equal, a negative number if `left` comes first, else a positive one: the
///                     difference of the deciding words; -1 or 1 beside a null.
/// @return ZR_R_OK; ZR_R_INVALID_ARGUMENTS if `order` is null.
ZR_API ZRRESULT ZrCompareREF_ThreeWay(const ZRREF* left, const ZRREF* right, int32_t* order) ZR_NOEXCEPT;

/// ZRREFGreater is whether `left` comes after `right` in the order of ZrCompareREF_ThreeWay.
ZR_API bool ZRREFGreater(const ZRREF* left, const ZRREF* right) ZR_NOEXCEPT;

/// ZRREFLess is whether `left` comes before `right` in the order of ZrCompareREF_ThreeWay.
ZR_API bool ZRREFLess(const ZRREF* left, const ZRREF* right) ZR_NOEXCEPT;

// ---- Comparison by numbers or text ---------------------------------------------------------------------------------
//
// In this order: nil references are all equal and come before every other. Two refs compare by numbers, whatever the
// texts. Two texts compare by bytes, as ZrCompareString does. A ref alone and a text alone compare by numbers if the
// text reads as a ref; if not, by code units up to the terminator, the ref being written with *signed* numbers. So the
// text "-1.0.0.0.0.0" equals a ref whose word 0 is 4294967295.

/// ZrCompareSREF tells whether two references are equal, by the rules above.
///
/// @param left, right  may be null.
/// @param equal        receives 1 or 0, whenever it is not null.
/// @return ZR_R_OK. ZR_R_INVALID_ARGUMENTS if `equal` is null, *and* if a text had to be compared with a ref and didn't
///         read as one: `*equal` is valid all the same then. Read it first.
///
/// No allocation. Two refs compare without looking at any text.
ZR_API ZRRESULT ZrCompareSREF(const ZRSREF* left, const ZRSREF* right, uint8_t* equal) ZR_NOEXCEPT;

/// ZrCompareSREF_ThreeWay orders two references, by the rules above.
///
/// @param left, right  may be null.
/// @param order        receives 0 if they are equal, a negative number if `left` comes first, else a positive one.
/// @return as ZrCompareSREF, with `*order` as valid.
ZR_API ZRRESULT ZrCompareSREF_ThreeWay(const ZRSREF* left, const ZRSREF* right, int32_t* order) ZR_NOEXCEPT;

/// ZRSREFGreater is whether `left` comes after `right` in the order of ZrCompareSREF_ThreeWay.
ZR_API bool ZRSREFGreater(const ZRSREF* left, const ZRSREF* right) ZR_NOEXCEPT;

/// ZRSREFLess is whether `left` comes before `right` in the order of ZrCompareSREF_ThreeWay.
ZR_API bool ZRSREFLess(const ZRSREF* left, const ZRSREF* right) ZR_NOEXCEPT;

#endif
