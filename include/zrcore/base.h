// ZrCore: what every other header stands on: the code unit, the result code and its table, the export macro.
//
// A ZRRESULT tells success from failure by its sign alone. Zero is ZR_R_OK, and successes above zero exist: 1 from some
// functions for arrays and references, for nothing done or not all of it, and what modules answer, such as
// ZR_R_SAME_VALUE. Test with ZR_SUCCEEDED or ZR_FAILED, never with == ZR_R_OK. A code that a module or a host's object
// answers travels to the caller unchanged.
//
// Text crosses the boundary as 16-bit code units (WCHAR) on every system, never as narrow characters, except where a
// function's name or comment says otherwise. Memory that crosses the boundary comes from one heap, that of the C
// runtime which library and callers share.
//
// These headers compile as C11 and as C++17 or later, alone and in any order.

#ifndef ZRCORE_BASE_H
#define ZRCORE_BASE_H

#include <stdint.h>

#if defined(_WIN32)
#include <wchar.h>
#elif !defined(__cplusplus)
#include <uchar.h>
#endif

// The version of these headers. What was built with them runs with every later library of the same major version: no
// export, record or place in a table of operations changes or goes within it.
#define ZRCORE_VERSION_MAJOR 1
#define ZRCORE_VERSION_MINOR 0
#define ZRCORE_VERSION_PATCH 0

#ifdef __cplusplus
#define ZR_EXTERN_C extern "C"
#define ZR_NOEXCEPT noexcept
#define ZR_STATIC_ASSERT(claim, text) static_assert(claim, text)
#define ZR_RESULT_CODE(bits) static_cast<ZRRESULT>(bits)
#else
#define ZR_EXTERN_C extern
#define ZR_NOEXCEPT
#define ZR_STATIC_ASSERT(claim, text) _Static_assert(claim, text)
#define ZR_RESULT_CODE(bits) ((ZRRESULT)(bits))
#endif

// ZR_API marks what the library exports: plain C linkage, undecorated names. ZR_EXPORT alone makes a symbol of the
// module being built visible to the loader.
#if defined(_WIN32)
#define ZR_EXPORT __declspec(dllexport)
#define ZR_IMPORT __declspec(dllimport)
#else
#define ZR_EXPORT __attribute__((visibility("default")))
#define ZR_IMPORT __attribute__((visibility("default")))
#endif
#ifdef ZRCORE_BUILDING
#define ZR_API ZR_EXTERN_C ZR_EXPORT
#else
#define ZR_API ZR_EXTERN_C ZR_IMPORT
#endif

/// WCHAR is one 16-bit code unit of text, by contract on every system.
#if defined(_WIN32)
typedef wchar_t WCHAR;
#else
typedef char16_t WCHAR;
#endif
ZR_STATIC_ASSERT(sizeof(WCHAR) == 2, "text is made of 16-bit code units");

/// ZRRESULT is the result of most exports: negative is failure, zero and above is success.
typedef int32_t ZRRESULT;

#define ZR_SUCCEEDED(result) ((result) >= 0)
#define ZR_FAILED(result) ((result) < 0)

// The codes. Those marked (module) are the family's vocabulary: no path of this library produces them, modules and
// hosts may. The numbers 0x8000001E and 0x8000001F are unassigned and stay so.
// clang-format off
#define ZR_R_OK                         ZR_RESULT_CODE(0)            ///< success
#define ZR_R_SAME_VALUE                 ZR_RESULT_CODE(0x000000CA)   ///< success: the value was this one already (module)
#define ZR_R_FAILED                     ZR_RESULT_CODE(0x80000000u)  ///< failure without a nearer name
#define ZR_R_NOT_SUPPORTED              ZR_RESULT_CODE(0x80000001u)  ///< no such operation or conversion
#define ZR_R_CANCELLED                  ZR_RESULT_CODE(0x80000002u)  ///< (module)
#define ZR_R_TIMEOUT                    ZR_RESULT_CODE(0x80000003u)  ///< (module)
#define ZR_R_INVALID_ARGUMENTS          ZR_RESULT_CODE(0x80000004u)  ///< an argument is null, out of its range, or a text that doesn't read
#define ZR_R_ACCESS_DENIED              ZR_RESULT_CODE(0x80000005u)  ///< (module)
#define ZR_R_INVALID_POINTER            ZR_RESULT_CODE(0x80000006u)  ///< a null variant or array, or a null blob to destroy
#define ZR_R_FILE_NOT_FOUND             ZR_RESULT_CODE(0x80000007u)  ///< a module file could not be loaded, for any reason
#define ZR_R_NO_INIT                    ZR_RESULT_CODE(0x80000008u)  ///< ZrInitialize is not in force
#define ZR_R_NO_INTERFACE               ZR_RESULT_CODE(0x80000009u)  ///< (module)
#define ZR_R_INVALID_OBJECT_STATE       ZR_RESULT_CODE(0x8000000Au)  ///< the object holds nothing (any more), or its flag is taken
#define ZR_R_UNEXPECTED                 ZR_RESULT_CODE(0x8000000Bu)  ///< an exception or an impossible state
#define ZR_R_EXISTS                     ZR_RESULT_CODE(0x8000000Cu)  ///< (module)
#define ZR_R_ABANDONED                  ZR_RESULT_CODE(0x8000000Du)  ///< (module)
#define ZR_R_REQUEST_ABORTED            ZR_RESULT_CODE(0x8000000Eu)  ///< an exception ended a lookup
#define ZR_R_UNKNOWN_IDENTIFIER         ZR_RESULT_CODE(0x8000000Fu)  ///< no entry bears this identifier
#define ZR_R_INCONSISTENT_CONFIGURATION ZR_RESULT_CODE(0x80000010u)  ///< (module)
#define ZR_R_REQUEST_REJECTED           ZR_RESULT_CODE(0x80000011u)  ///< (module)
#define ZR_R_SUBSCRIPTION_LOST          ZR_RESULT_CODE(0x80000012u)  ///< (module)
#define ZR_R_NOT_IMPLEMENTED            ZR_RESULT_CODE(0x80000013u)  ///< (module)
#define ZR_R_EMPTY_VALUE                ZR_RESULT_CODE(0x80000014u)  ///< the value is empty
#define ZR_R_NO_AGGREGATION             ZR_RESULT_CODE(0x80000015u)  ///< (module)
#define ZR_R_CONNECTION_LOST            ZR_RESULT_CODE(0x80000016u)  ///< (module)
#define ZR_R_INVALID_SUBSCRIPTION       ZR_RESULT_CODE(0x80000017u)  ///< (module)
#define ZR_R_INVALID_SYSTEM             ZR_RESULT_CODE(0x80000018u)  ///< a module lacks one of its three exports
#define ZR_R_INVALID_CREF               ZR_RESULT_CODE(0x80000019u)  ///< (module)
#define ZR_R_INVALID_OTYPE              ZR_RESULT_CODE(0x8000001Au)  ///< (module)
#define ZR_R_INVALID_LANGUAGE           ZR_RESULT_CODE(0x8000001Bu)  ///< (module)
#define ZR_R_NOT_EXISTING               ZR_RESULT_CODE(0x8000001Cu)  ///< nothing is known under this code, or no byte is left to read
#define ZR_R_NO_MEMORY                  ZR_RESULT_CODE(0x8000001Du)  ///< the heap is exhausted
#define ZR_R_ALREADY_REGISTERED         ZR_RESULT_CODE(0x80000020u)  ///< the code has its text already
#define ZR_R_CLASS_NOT_REGISTERED       ZR_RESULT_CODE(0x80000021u)  ///< no discovery knows the class
// clang-format on

#endif
