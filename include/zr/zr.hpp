// The whole C++ layer of ZrCore: owners and values in the namespace zr, over the C boundary of zrcore/zrcore.h.
//
// The layer is header-only C++17. It has no state of its own: each operation calls the exports that a careful user
// would call by hand. result.hpp explains errors, and each header the type of its name. The verbs are the same for all
// owners:
//
//     Get()       lends the handle or record to functions of the C boundary
//     Put()       releases what is owned, and returns the address for an out-parameter
//     Detach()    gives what is owned to the caller
//     Adopt(x)    takes what the caller owns
//
// Array<T> has no Put and no Adopt, because an array from elsewhere may have another element type: use AnyArray, then
// Array<T>::From. Memory has no Put, and Lock has only Get.
//
// An owner has the size of its handle or record. A moved-from owner is empty and can be used.
//
// ostream.hpp, fmt.hpp and format.hpp print values. This header doesn't include them.
//
// These exports have no counterpart here:
//
//   - Second names of one function: ZrCreateZRSTRfromWCHAR, ZrCreateZRSTRfromUTF16, ZrCreateStringLen,
//     ZrCreateStringLen_2, ZrCreateString and ZrReCreateString...: construct a String. ZrUTF8toZRSTR:
//     String::FromUtf8. ZrStringByteLen: String::Length. ZrVariantInit, ZrCreateUUID, ZrCreateREF and ZrCreateSREF: the
//     default constructors.
//   - Comparisons that an operator makes without a call: ZrCompareUUID, ZrCompareREF, ZrCompareStringW. ZRREFLess,
//     ZRREFGreater, ZRSREFLess, ZRSREFGreater and ZrCompareSREF: Compare of Ref and Sref returns their order.
//   - Writers into a caller's buffer, and conversions between other encodings, whose sizes are easy to get wrong:
//     ZrCreateWCHARfromZRSTR, ZrCreateUTF16fromZRSTR, ZrCreateUTF32fomZRSTR, ZrCreateUTF8fromZRSTR, ZrCopyZRSTR2WCHAR,
//     ZrCopyWCHAR2ZRSTR, ZrUTF32toUTF16, ZrUTF32toUTF8 and ZrUTF8toUTF32: use View, ToUtf8, ToUtf32, FromUtf8 and
//     FromUtf32.
//   - Parts of what Bounds and Lend return: ZrSafeArrayGetLBound, ZrSafeArrayGetUBound, ZrSafeArrayLock,
//     ZrSafeArrayUnlock.
//   - Atomic integers, ZrInterlocked...: use std::atomic.

#ifndef ZR_ZR_HPP
#define ZR_ZR_HPP

#include "zr/any_array.hpp"
#include "zr/array.hpp"
#include "zr/blob.hpp"
#include "zr/configuration.hpp"
#include "zr/date_time.hpp"
#include "zr/discovery.hpp"
#include "zr/library.hpp"
#include "zr/lock.hpp"
#include "zr/memory.hpp"
#include "zr/module.hpp"
#include "zr/object.hpp"
#include "zr/ptr.hpp"
#include "zr/ref.hpp"
#include "zr/result.hpp"
#include "zr/sref.hpp"
#include "zr/string.hpp"
#include "zr/time_span.hpp"
#include "zr/uuid.hpp"
#include "zr/variant.hpp"

#endif
