// References: records, conversion from and to text, and comparison. The exports differ in what they check and return;
// CompareRefs and CompareSrefs contain all rules of comparison.
//
// An SREF owns its ref and one reference on its text. The ref is made before the record of the SREF; a CRefHolder
// releases it if there is no memory for the record.

#include "identifiers/reference.h"

#include "identifiers/reference_records.h"
#include "identifiers/reference_text.h"
#include "text/code_units.h"
#include "text/counted_string.h"

// ---- Order ---------------------------------------------------------------------------------------------------------

// No text, an empty text, or exactly the text of a nil REF. " 0.0.0.0.0.0" isn't nil, although it would be parsed as
// nil.
static bool IsNilText(ZRSTR text) noexcept {
  static constexpr auto kNil = WideLiteral("0.0.0.0.0.0");
  const CTextView units = ViewOf(text);
  return units.empty() || units == ViewOf(kNil);
}

// A ref decides only without a text: an SREF with both is never nil.
static bool IsNilSref(const ZRSREF* sref) noexcept {
  if (sref == nullptr) return true;
  if (sref->ref == nullptr) return IsNilText(sref->text);
  return sref->text == nullptr && IsNilRef(*sref->ref);
}

// Compares units up to the terminator, not by the length: a zero unit inside `right` ends the comparison.
static int32_t CompareTerminated(const WCHAR* left, const WCHAR* right) noexcept {
  for (; *left == *right; ++left, ++right) {
    if (*left == 0) return 0;
  }
  return *left < *right ? -1 : 1;
}

// Compares a ref on the left with a text on the right, or the other way round if `isSwapped`.
//
// If the text is that of a REF, numbers are compared. Otherwise the ref is written as signed numbers, and texts are
// compared: "-1.0.0.0.0.0", which isn't the text of a REF, equals a ref whose word 0 is 0xFFFFFFFF. Callers rely on the
// signed form, and on getting ZR_R_INVALID_ARGUMENTS together with this order.
static CSrefOrder CompareRefWithText(const ZRREF& ref, ZRSTR text, bool isSwapped) noexcept {
  ZRREF read;
  if (ReadRef(ViewOf(text), read) == RefReading::Read) {
    // Swapped rather than negated: the difference -2^31 has no positive counterpart.
    return {isSwapped ? RefDifference(read, ref) : RefDifference(ref, read), ZR_R_OK};
  }
  WCHAR written[kSignedRefUnits];
  WriteSignedRef(ref, written);
  const int32_t order = CompareTerminated(written, text);
  return {isSwapped ? -order : order, ZR_R_INVALID_ARGUMENTS};
}

// The first of these rules that applies decides:
//   1. Nil references are equal and come before all others.
//   2. Two refs compare by numbers, whatever the texts are.
//   3. Two texts compare by bytes.
//   4. What remains is a ref alone and a text alone: CompareRefWithText.
CSrefOrder CompareSrefs(const ZRSREF* left, const ZRSREF* right) noexcept {
  const bool leftIsNil = IsNilSref(left), rightIsNil = IsNilSref(right);
  if (leftIsNil || rightIsNil) return {int{rightIsNil} - int{leftIsNil}, ZR_R_OK};
  if (left->ref != nullptr && right->ref != nullptr) return {RefDifference(*left->ref, *right->ref), ZR_R_OK};
  if (left->text != nullptr && right->text != nullptr) return {CompareStrings(left->text, right->text), ZR_R_OK};
  if (left->ref != nullptr) return CompareRefWithText(*left->ref, right->text, false);
  return CompareRefWithText(*right->ref, left->text, true);
}

// ---- Records -------------------------------------------------------------------------------------------------------

ZRREF* ZrCreateREF() { return AllocateRef({}); }

ZRSREF* ZrCreateSREF() { return AllocateSref({}); }

ZRRESULT ZrCopyREF(const ZRREF* source, ZRREF** copy) {
  if (source == nullptr || copy == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *copy = AllocateRef(*source);
  return ZR_R_OK;
}

ZRRESULT ZrCopySREF(const ZRSREF* source, ZRSREF** copy) {
  if (source == nullptr || copy == nullptr) return ZR_R_INVALID_ARGUMENTS;
  if (source->ref == nullptr && source->text == nullptr) {
    *copy = nullptr;
    return 1;  // neither ZR_R_OK nor a failure: a success without a record
  }
  CRefHolder ref(source->ref != nullptr ? AllocateRef(*source->ref) : nullptr);
  ZRSREF* record = AllocateSref({ref.get(), nullptr});
  (void)ref.release();  // the record owns it now
  if (source->text != nullptr) record->text = ShareString(source->text);
  *copy = record;
  return ZR_R_OK;
}

void ZrDestroyREF(ZRREF* ref) noexcept {
  if (ref != nullptr) RecycleRef(ref);
}

void ZrDestroySREF(ZRSREF* sref) noexcept {
  if (sref == nullptr) return;
  ZrDestroyREF(sref->ref);
  ReleaseString(sref->text);
  RecycleSref(sref);
}

// ---- Text ----------------------------------------------------------------------------------------------------------

// Out of memory isn't reported by the result code, by contract: the string is null then.
ZRRESULT ZrREFToString(const ZRREF* ref, ZRSTR* string) noexcept {
  if (ref == nullptr || string == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *string = WriteRef(*ref);
  return ZR_R_OK;
}

ZRRESULT ZrSREFToString(const ZRSREF* sref, ZRSTR* string) noexcept {
  if (sref == nullptr || string == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *string = sref->ref != nullptr ? WriteRef(*sref->ref) : ShareString(sref->text);  // no text: the shared empty string
  return ZR_R_OK;
}

// Both kinds of refusal return the same code, but they differ in `*ref`, and callers rely on it: it is unchanged if the
// text doesn't have six fields, and null if the fields are in the wrong form.
ZRRESULT ZrStringToREF(ZRSTR string, ZRREF** ref) {
  if (string == nullptr || ref == nullptr) return ZR_R_INVALID_ARGUMENTS;
  ZRREF read;
  const RefReading reading = ReadRef(ViewOf(string), read);
  if (reading == RefReading::Read) {
    *ref = AllocateRef(read);
    return ZR_R_OK;
  }
  if (reading == RefReading::NotCanonical) *ref = nullptr;
  return ZR_R_INVALID_ARGUMENTS;
}

// Never refuses a string: what isn't the text of a REF becomes the text of the SREF.
ZRRESULT ZrStringToSREF(ZRSTR string, ZRSREF** sref) {
  if (string == nullptr || sref == nullptr) return ZR_R_INVALID_ARGUMENTS;
  ZRREF read;
  CRefHolder ref(ReadRef(ViewOf(string), read) == RefReading::Read ? AllocateRef(read) : nullptr);
  ZRSREF* record = AllocateSref({ref.get(), nullptr});
  if (ref.release() == nullptr) record->text = ShareString(string);
  *sref = record;
  return ZR_R_OK;
}

ZRRESULT ZrSplitRefName(ZRSTR string, uint32_t* word0, uint32_t* word1, uint32_t* word2, uint32_t* word3,
                        uint32_t* word4, uint32_t* word5) noexcept {
  if (string == nullptr) return ZR_R_INVALID_ARGUMENTS;
  ZRREF read;
  if (ReadRef(ViewOf(string), read) != RefReading::Read) return ZR_R_INVALID_ARGUMENTS;
  const uint32_t* word = read.words;
  for (uint32_t* target : {word0, word1, word2, word3, word4, word5}) {
    if (target != nullptr) *target = *word;
    ++word;
  }
  return ZR_R_OK;
}

// ---- Comparison ----------------------------------------------------------------------------------------------------
//
// For SREFs, `*equal` and `*order` are written whatever the result code is.

ZRRESULT ZrCompareREF(const ZRREF* left, const ZRREF* right, uint8_t* equal) noexcept {
  if (equal == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *equal = CompareRefs(left, right) == 0;
  return ZR_R_OK;
}

ZRRESULT ZrCompareREF_ThreeWay(const ZRREF* left, const ZRREF* right, int32_t* order) noexcept {
  if (order == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *order = CompareRefs(left, right);
  return ZR_R_OK;
}

bool ZRREFGreater(const ZRREF* left, const ZRREF* right) noexcept { return CompareRefs(left, right) > 0; }

bool ZRREFLess(const ZRREF* left, const ZRREF* right) noexcept { return CompareRefs(left, right) < 0; }

ZRRESULT ZrCompareSREF(const ZRSREF* left, const ZRSREF* right, uint8_t* equal) noexcept {
  if (equal == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const CSrefOrder compared = CompareSrefs(left, right);
  *equal = compared.order == 0;
  return compared.result;
}

ZRRESULT ZrCompareSREF_ThreeWay(const ZRSREF* left, const ZRSREF* right, int32_t* order) noexcept {
  if (order == nullptr) return ZR_R_INVALID_ARGUMENTS;
  const CSrefOrder compared = CompareSrefs(left, right);
  *order = compared.order;
  return compared.result;
}

bool ZRSREFGreater(const ZRSREF* left, const ZRSREF* right) noexcept { return CompareSrefs(left, right).order > 0; }

bool ZRSREFLess(const ZRSREF* left, const ZRSREF* right) noexcept { return CompareSrefs(left, right).order < 0; }
