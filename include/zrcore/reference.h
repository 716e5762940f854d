// ZrCore: references to objects. A REF is six numbers; an SREF is a REF, a text, or both.
//
// A ZRREF consists of six unsigned 32-bit words. What the words mean is the caller's business. Its text is the six
// decimal numbers with dots between them. A ZRSREF can have a ZRREF, a text or both, and owns them:
//
//     ZRREF   | word 0 | word 1 | ... | word 5 |     4 bytes each; text form "1.2.3.4.5.6"
//     ZRSREF  | ref (8) | text (8) |                 two pointers; either may be null
//
// A ZRREF is nil if all words are zero: "0.0.0.0.0.0". A null ZRSREF pointer is nil. A ZRSREF without a ref is nil if
// it has no text, an empty text or exactly the text "0.0.0.0.0.0". A ZRSREF without a text is nil if its ref is nil. A
// ZRSREF with both a ref and a text is never nil.
//
// Records that the library gives come from a cache or from the heap. They must be released with ZrDestroyREF or
// ZrDestroySREF, which overwrite them with zeros. A caller may keep records in memory of its own. Such a record must
// not be passed to these two functions, nor be the ref of a ZRSREF that is passed to ZrDestroySREF: freeing it is
// undefined behaviour.
//
//     ZRREF* ref = NULL;
//     if (ZR_SUCCEEDED(ZrStringToREF(text, &ref))) use(ref->words[0]);
//     ZrDestroyREF(ref);   // null is ignored
//
// For a null argument the functions return ZR_R_INVALID_ARGUMENTS, except for an operand of a comparison, where null
// means nil. The functions that make a record throw std::bad_alloc when out of memory; out-arguments are unchanged
// then, and nothing leaks. See "Exceptions" in base.h. An out-argument is overwritten: a record in the variable leaks
// unless the caller has released it.
//
// Any thread, any time, before ZrInitialize too. Records have no lock: a call that changes or destroys a record while
// another call uses it is a data race.

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

/// ZRSREF is a reference by numbers, by text, or by both. It owns its ref and one reference on its text.
typedef struct tagZRSREF {
  ZRREF* ref;
  ZRSTR text;
} ZRSREF;

ZR_STATIC_ASSERT(sizeof(ZRREF) == 24 && offsetof(ZRREF, words) == 0, "a ZRREF is six words");
ZR_STATIC_ASSERT(sizeof(ZRSREF) == 16 && offsetof(ZRSREF, ref) == 0 && offsetof(ZRSREF, text) == 8,
                 "a ZRSREF is two pointers");

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

/// ZrDestroySREF takes a record, releases its ref and its text, overwrites it with zeros and releases it. Null is
/// ignored.
ZR_API void ZrDestroySREF(ZRSREF* sref) ZR_NOEXCEPT;

// ---- Text ----------------------------------------------------------------------------------------------------------

/// ZrREFToString makes the text of a REF: the six numbers with dots between them, without blanks or leading zeros.
///
/// Out of memory is not reported by the result code: `*string` is null then.
///
/// @param string  gives the text (ZrDestroyString), or null when out of memory.
/// @return
///   - ZR_R_OK                 `*string` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null. `*string` is unchanged.
///
/// One allocation.
ZR_API ZRRESULT ZrREFToString(const ZRREF* ref, ZRSTR* string) ZR_NOEXCEPT;

/// ZrSREFToString makes the text of an SREF. If it has a ref, the text is made from the numbers, whatever its own text
/// is. Otherwise it is one more reference on its text, or an empty string if it has no text.
///
/// Out of memory is not reported by the result code: `*string` is null then.
///
/// @param string  gives the text (ZrDestroyString), or null when out of memory.
/// @return
///   - ZR_R_OK                 `*string` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null. `*string` is unchanged.
///
/// One allocation for numbers, none for a text.
ZR_API ZRRESULT ZrSREFToString(const ZRSREF* sref, ZRSTR* string) ZR_NOEXCEPT;

/// ZrStringToREF parses the text of a REF. It accepts only the form that ZrREFToString writes: no sign, no leading
/// zero, no blank inside, no number above 4294967295.
///
/// White space before and after the text is removed first: blank, tab, newline, vertical tab, form feed, carriage
/// return. A zero unit directly after the last number ends the text. What follows the zero unit is ignored, except that
/// a sixth dot is refused even there.
///
/// @param ref  gives a new record (ZrDestroyREF).
/// @return
///   - ZR_R_OK                 `*ref` was written.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null, the text doesn't have exactly five dots, or one of its six fields
///                             is empty, as in "1..3.4.5.6". `*ref` is unchanged.
///   - ZR_R_INVALID_ARGUMENTS  no field is empty, but the text doesn't have the accepted form, as "1. .3.4.5.6" and
///                             "01.2.3.4.5.6". `*ref` is null.
/// @throws std::bad_alloc if there is no memory for the record; `*ref` is unchanged then. See "Exceptions" in base.h.
///
/// Linear; the record is the only allocation.
ZR_API ZRRESULT ZrStringToREF(ZRSTR string, ZRREF** ref);

/// ZrStringToSREF makes an SREF from any text. If ZrStringToREF accepts the text, the SREF has only a ref, and the
/// exact form of the text, such as blanks around it, is lost. Otherwise it has only a text, which is one more reference
/// on `string`.
///
/// @param sref  gives a new record (ZrDestroySREF).
/// @return
///   - ZR_R_OK                 `*sref` was written. Every string is accepted, even an empty one.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null. `*sref` is unchanged.
/// @throws std::bad_alloc if there is no memory for the record or for its ref; `*sref` is unchanged then. See
///         "Exceptions" in base.h.
ZR_API ZRRESULT ZrStringToSREF(ZRSTR string, ZRSREF** sref);

/// ZrSplitRefName parses a text like ZrStringToREF and stores the six numbers in variables of the caller.
///
/// @param word0  receives the first word; null if the caller doesn't need it. `word1` to `word5` likewise.
/// @return
///   - ZR_R_OK                 the words were written.
///   - ZR_R_INVALID_ARGUMENTS  `string` is null, or ZrStringToREF would refuse it. Nothing was written.
///
/// No allocation.
ZR_API ZRRESULT ZrSplitRefName(ZRSTR string, uint32_t* word0, uint32_t* word1, uint32_t* word2, uint32_t* word3,
                               uint32_t* word4, uint32_t* word5) ZR_NOEXCEPT;

// ---- Comparison by numbers -----------------------------------------------------------------------------------------
//
// The first unequal pair of words decides, by its difference modulo 2^32 read as a signed number. So words that are
// more than 2147483648 apart compare in reverse. Of two references whose deciding words are exactly 2147483648 apart,
// each comes before the other. The order is not transitive over the whole range: containers and sort functions must not
// be used with references whose words are more than 2147483647 apart.

/// ZrCompareREF reports whether two references are equal. Null equals null and nil.
///
/// @param left, right  may be null.
/// @param equal        receives 1 or 0.
/// @return
///   - ZR_R_OK                 `*equal` was written.
///   - ZR_R_INVALID_ARGUMENTS  `equal` is null.
ZR_API ZRRESULT ZrCompareREF(const ZRREF* left, const ZRREF* right, uint8_t* equal) ZR_NOEXCEPT;

/// ZrCompareREF_ThreeWay orders two references. Null equals null and nil, and comes before every other reference.
///
/// @param left, right  may be null.
/// @param order        receives 0 if they are equal, a negative number if `left` comes first, else a positive number.
///                     The number is the difference of the deciding words, or -1, 0 or 1 if an operand is null.
/// @return
///   - ZR_R_OK                 `*order` was written.
///   - ZR_R_INVALID_ARGUMENTS  `order` is null.
ZR_API ZRRESULT ZrCompareREF_ThreeWay(const ZRREF* left, const ZRREF* right, int32_t* order) ZR_NOEXCEPT;

/// ZRREFGreater returns whether `left` comes after `right` in the order of ZrCompareREF_ThreeWay.
ZR_API bool ZRREFGreater(const ZRREF* left, const ZRREF* right) ZR_NOEXCEPT;

/// ZRREFLess returns whether `left` comes before `right` in the order of ZrCompareREF_ThreeWay.
ZR_API bool ZRREFLess(const ZRREF* left, const ZRREF* right) ZR_NOEXCEPT;

// ---- Comparison by numbers or text ---------------------------------------------------------------------------------
//
// The first of these rules that applies decides:
//   1. Nil references are equal to each other and come before every other reference.
//   2. Two references that both have a ref compare by numbers, whatever their texts are.
//   3. Two references that both have a text compare by the bytes of the texts, like ZrCompareString.
//   4. A ref alone and a text alone compare by numbers if ZrStringToREF accepts the text.
//   5. Otherwise they compare by code units up to the terminator. For this the ref is written with signed numbers: the
//      text "-1.0.0.0.0.0" equals a ref whose word 0 is 4294967295.

/// ZrCompareSREF reports whether two references are equal, by the rules above.
///
/// The result code alone doesn't show whether the comparison failed: rule 5 returns ZR_R_INVALID_ARGUMENTS with a valid
/// `*equal`. If `equal` is not null, read `*equal` whatever the result code is.
///
/// @param left, right  may be null.
/// @param equal        receives 1 or 0 in every call in which it is not null.
/// @return
///   - ZR_R_OK                 `*equal` was written.
///   - ZR_R_INVALID_ARGUMENTS  `equal` is null; or rule 5 decided, and `*equal` was written.
///
/// No allocation. Two refs compare without looking at any text.
ZR_API ZRRESULT ZrCompareSREF(const ZRSREF* left, const ZRSREF* right, uint8_t* equal) ZR_NOEXCEPT;

/// ZrCompareSREF_ThreeWay orders two references, by the rules above.
///
/// @param left, right  may be null.
/// @param order        receives 0 if they are equal, a negative number if `left` comes first, else a positive number.
///                     It is written in every call in which it is not null.
/// @return
///   - ZR_R_OK                 `*order` was written.
///   - ZR_R_INVALID_ARGUMENTS  `order` is null; or rule 5 decided, and `*order` was written.
///
/// No allocation.
ZR_API ZRRESULT ZrCompareSREF_ThreeWay(const ZRSREF* left, const ZRSREF* right, int32_t* order) ZR_NOEXCEPT;

/// ZRSREFGreater returns whether `left` comes after `right` in the order of ZrCompareSREF_ThreeWay.
ZR_API bool ZRSREFGreater(const ZRSREF* left, const ZRSREF* right) ZR_NOEXCEPT;

/// ZRSREFLess returns whether `left` comes before `right` in the order of ZrCompareSREF_ThreeWay.
ZR_API bool ZRSREFLess(const ZRSREF* left, const ZRSREF* right) ZR_NOEXCEPT;

#endif
