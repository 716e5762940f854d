// ZrCore: the conventions of all headers, the code unit, the result codes and the export macro.
//
// The conventions on this page hold for every header. The header of a family and the comment of a function state only
// what differs. Every header compiles as C11 and as C++17 or later, alone and in any order.
//
// ## Ownership
//
//     gives     The caller now owns one reference or one object, and must release it with the function that is named;
//               otherwise it leaks.
//     lends     The lender remains the owner. The pointer is valid until the moment that the comment names, or else
//               until the call returns.
//     takes     The function now owns the argument: always, or only on success if the comment says so.
//     reads     The function uses the memory only during the call. An argument without any of these words is read.
//     receives  The function stores a result in the caller's variable and doesn't release what the variable held.
//
// The library and its callers must share the C runtime's malloc: memory that crosses the boundary comes from there.
//
// ## Null
// A null handle is not an object. Where a ZRSTR is read, null is an empty string, unless a comment says otherwise. Each
// family names the result code that it returns for a null argument that it refuses. If no comment says what happens for
// a null pointer, to pass one is undefined behaviour.
//
// ## Threads
//
//     any thread, any time                     Calls may overlap with any other call.
//     any thread, one at a time for an object  Two calls for one object that overlap are a data race.
//     under the management lock                Such calls never overlap in the process, see component.h.
//
// Only the functions of component.h and configuration.h need ZrInitialize. All others work before it and without it.
//
// ## Results
// A negative ZRRESULT is a failure; zero and above is a success. ZR_R_OK is zero. Positive successes exist: some array
// and reference functions return 1 if they did nothing or not everything, and modules return others, such as
// ZR_R_SAME_VALUE. Never test for success with == ZR_R_OK:
//
//     uint32_t length = 0;
//     ZRRESULT result = ZrBlobByteLen(blob, &length);
//     if (ZR_FAILED(result)) return result;
//
// When a module or an object of the host returns a code, the library passes the code on unchanged.
//
// ## Text
// Text is in 16-bit code units (WCHAR) on every system. It should be UTF-16, but the library checks that only where a
// comment says so. 8-bit text occurs only in the functions that have UTF8 in their names, and as ASCII in
// ZrUUIDFromString.
//
// ## Exceptions
// A function that is declared ZR_NOEXCEPT throws nothing. This table lists what the other 43 functions throw:
//
//     blob.h        ZrCreateBlob, ZrCopyBlob               std::bad_alloc: out of memory for the handle
//                   the seven that detach                  std::bad_alloc: out of memory for detaching or growing
//     array.h       Create, Copy, Redim, ChangeType,       std::bad_alloc: out of memory
//                   GetElement and PutElement
//     variant.h     Copy, CopyInd and ChangeType           std::bad_alloc: out of memory
//     uuid.h, reference.h   the nine that make a record    std::bad_alloc: out of memory
//     lock.h        ZrInitializeCriticalSection            std::bad_alloc: out of memory
//     unicode.h     the four range converters              std::bad_alloc: out of memory
//     error_info.h  all three                              std::bad_alloc: out of memory for the table or a new row;
//                                                          std::system_error: the mutex can't be locked
//     datetime.h    ZrDateTimeToTimeT                      CZrException: years 1900 to 1969, and moments that are not
//                                                          within 1970 to 3000
//     component.h   ZrAddComponentDiscovery                what configuration objects throw; std::bad_alloc while
//                                                          their values are read
//                   both discovery functions               std::system_error: a mutex can't be locked
//     lifecycle.h   ZrUninitialize                         what ZrExitModule throws; std::system_error as above
//     array.h, variant.h    Destroy, Clear and Compare     nothing of their own; objects in values may throw, see below
//
// Out of memory terminates the process, and nothing is thrown, if the memory is for one of these:
//
//   - the bytes of a new blob or of a blob that detaches (blob.h);
//   - a new array or a copy of an array, its elements included. Only the first allocation, the array's object, throws.
//
// This also happens when a function creates a blob or copies an array as one of its steps, such as ZrVariantCopy.
//
// When a function that throws std::bad_alloc or terminates the process gets no memory, it first calls the C++
// new-handler, if one is set, and tries again. Functions that only create a string or a memory block return null or
// ZR_R_NO_MEMORY when out of memory. Component functions return the codes that their comments name. A function that is
// declared ZR_NOEXCEPT terminates the process if it cannot lock a mutex and has no result code for that.
//
// A caller in C or another language cannot catch exceptions. An exception that passes from an export into such a frame
// terminates the process; if a C++ function further up the stack catches it, the behaviour is undefined. So out of
// memory terminates such a program wherever the table says std::bad_alloc. To prevent that, call the export through a
// C++ function that catches. Such a program must pass only years below 1900 and from 1971 to 2999 to ZrDateTimeToTimeT.
//
// In any language, AddRef and Release of every object, all operations of configuration objects, and ZrExitModule must
// not throw. An exception from one of these passes through the export, terminates the process, becomes a result code or
// is lost. An exception from any other operation of a discovery or a module becomes a result code, except an exception
// from QueryConfiguration when ZrAddComponentDiscovery calls it, which passes through.
//
// ## Binary compatibility
// A program or module that was built with these headers runs with every later library of the same major version. Within
// a major version, no export, record, result code or position in a table of operations is changed or removed.

#ifndef ZRCORE_BASE_H
#define ZRCORE_BASE_H

#include <stdint.h>

#if defined(_WIN32)
#include <wchar.h>
#elif !defined(__cplusplus)
#include <uchar.h>
#endif

// The version of these headers; "Binary compatibility" above says what a major version promises.
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

// ZR_API marks a function that the library exports, with C linkage and an undecorated name. ZR_EXPORT alone makes a
// symbol of the module that is being built visible to the loader.
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

/// WCHAR is one 16-bit code unit of text, on every system.
#if defined(_WIN32)
typedef wchar_t WCHAR;
#else
typedef char16_t WCHAR;
#endif
ZR_STATIC_ASSERT(sizeof(WCHAR) == 2, "text is made of 16-bit code units");

/// ZRRESULT is the result of most exports: a negative value is a failure, zero or a positive value is a success.
typedef int32_t ZRRESULT;

#define ZR_SUCCEEDED(result) ((result) >= 0)
#define ZR_FAILED(result) ((result) < 0)

// The result codes. The library itself never returns a code marked (module); modules and hosts may return it.
// 0x8000001E and 0x8000001F are not assigned and never will be.
// clang-format off
#define ZR_R_OK                         ZR_RESULT_CODE(0)            ///< success
#define ZR_R_SAME_VALUE                 ZR_RESULT_CODE(0x000000CA)   ///< success: it had this value already (module)
#define ZR_R_FAILED                     ZR_RESULT_CODE(0x80000000u)  ///< failure without a more specific code
#define ZR_R_NOT_SUPPORTED              ZR_RESULT_CODE(0x80000001u)  ///< no such operation or conversion
#define ZR_R_CANCELLED                  ZR_RESULT_CODE(0x80000002u)  ///< (module)
#define ZR_R_TIMEOUT                    ZR_RESULT_CODE(0x80000003u)  ///< (module)
#define ZR_R_INVALID_ARGUMENTS          ZR_RESULT_CODE(0x80000004u)  ///< a null or invalid argument, or an invalid text
#define ZR_R_ACCESS_DENIED              ZR_RESULT_CODE(0x80000005u)  ///< (module)
#define ZR_R_INVALID_POINTER            ZR_RESULT_CODE(0x80000006u)  ///< null variant or array, or null blob to destroy
#define ZR_R_FILE_NOT_FOUND             ZR_RESULT_CODE(0x80000007u)  ///< a module could not be loaded, for any reason
#define ZR_R_NO_INIT                    ZR_RESULT_CODE(0x80000008u)  ///< ZrInitialize is not in force, see lifecycle.h
#define ZR_R_NO_INTERFACE               ZR_RESULT_CODE(0x80000009u)  ///< (module)
#define ZR_R_INVALID_OBJECT_STATE       ZR_RESULT_CODE(0x8000000Au)  ///< the object is not usable in its state
#define ZR_R_UNEXPECTED                 ZR_RESULT_CODE(0x8000000Bu)  ///< an exception or an impossible state
#define ZR_R_EXISTS                     ZR_RESULT_CODE(0x8000000Cu)  ///< (module)
#define ZR_R_ABANDONED                  ZR_RESULT_CODE(0x8000000Du)  ///< (module)
#define ZR_R_REQUEST_ABORTED            ZR_RESULT_CODE(0x8000000Eu)  ///< an exception ended a lookup
#define ZR_R_UNKNOWN_IDENTIFIER         ZR_RESULT_CODE(0x8000000Fu)  ///< no entry has this identifier
#define ZR_R_INCONSISTENT_CONFIGURATION ZR_RESULT_CODE(0x80000010u)  ///< (module)
#define ZR_R_REQUEST_REJECTED           ZR_RESULT_CODE(0x80000011u)  ///< (module)
#define ZR_R_SUBSCRIPTION_LOST          ZR_RESULT_CODE(0x80000012u)  ///< (module)
#define ZR_R_NOT_IMPLEMENTED            ZR_RESULT_CODE(0x80000013u)  ///< (module)
#define ZR_R_EMPTY_VALUE                ZR_RESULT_CODE(0x80000014u)  ///< a damaged blob has no buffer
#define ZR_R_NO_AGGREGATION             ZR_RESULT_CODE(0x80000015u)  ///< (module)
#define ZR_R_CONNECTION_LOST            ZR_RESULT_CODE(0x80000016u)  ///< (module)
#define ZR_R_INVALID_SUBSCRIPTION       ZR_RESULT_CODE(0x80000017u)  ///< (module)
#define ZR_R_INVALID_SYSTEM             ZR_RESULT_CODE(0x80000018u)  ///< a module lacks one of its three exports
#define ZR_R_INVALID_CREF               ZR_RESULT_CODE(0x80000019u)  ///< (module)
#define ZR_R_INVALID_OTYPE              ZR_RESULT_CODE(0x8000001Au)  ///< (module)
#define ZR_R_INVALID_LANGUAGE           ZR_RESULT_CODE(0x8000001Bu)  ///< (module)
#define ZR_R_NOT_EXISTING               ZR_RESULT_CODE(0x8000001Cu)  ///< the code has no text, or no byte is left
#define ZR_R_NO_MEMORY                  ZR_RESULT_CODE(0x8000001Du)  ///< out of memory
#define ZR_R_ALREADY_REGISTERED         ZR_RESULT_CODE(0x80000020u)  ///< the code already has a text
#define ZR_R_CLASS_NOT_REGISTERED       ZR_RESULT_CODE(0x80000021u)  ///< no discovery knows the class
// clang-format on

#endif
