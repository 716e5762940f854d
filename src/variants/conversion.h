// The conversion engine: the scalar conversion that ZrVariantChangeType and arrays share.
//
// A scalar is a value that is neither an array nor by reference. Before a scalar is converted it is normalised as a
// copy would be: ZrVariantCopy turns a null string into an empty string, and an SREF with neither a ref nor a text into
// null. Target functions therefore never see these two forms. LendCopy normalises without copying the payload.

#pragma once

#include <cstdint>

#include "variants/conversion_rules.h"

// Converts a scalar to a tag other than its own and stores the payload in `value`, which must be all zeros before the
// call. A `target` with flags returns ZR_R_INVALID_ARGUMENTS.
//
// `source` must be normalised, as LendCopy returns it: a null string or an SREF without content is undefined behaviour.
// It is only read. After a failure `value` may hold what the target function had stored by then.
[[nodiscard]] ZRRESULT ConvertScalar(const ZRVARIANT& source, uint16_t target, ZRVARIANTVALUE& value);

// The rule for converting one tag to another, both without flags. It is NotSupported or Invalid also if nothing at all
// converts to the target.
[[nodiscard]] Rule RuleOf(uint16_t source, uint16_t target) noexcept;

// The record that ZrVariantCopy would make of a scalar, but it borrows the original's payload. It owns nothing: it must
// not be released, and it must not outlive the original.
//
//     STR null                     -> STR with the shared empty string
//     SREF {ref null, text null}   -> SREF null
//     any other value              -> the same value
[[nodiscard]] ZRVARIANT LendCopy(const ZRVARIANT& original) noexcept;
