// ZrCore: the lifecycle of the component system.
//
// ZrInitialize adds 1 to a count, and ZrUninitialize subtracts 1. ZrInitialize is in force while the count is above 0.
// The functions of component.h and configuration.h return ZR_R_NO_INIT while the count is 0. Everything else works at
// any time: all state of the library exists from the moment it is loaded. So these two functions create and destroy
// nothing, except that the last ZrUninitialize, the one that reaches 0, empties the component registry.
//
//     ZRRESULT result = ZrInitialize();
//     ...                                  // add discoveries, create objects, release the objects
//     result = ZrUninitialize();
//
// After the last ZrUninitialize, ZrInitialize may be called again. The last ZrUninitialize does not reset these things:
//
//   - the last cookie that was issued,
//   - the class names and class identifiers that lookups have found,
//   - the texts of registered result codes,
//   - the settings of the item caches, and the count of discoveries that decides how long they stay (configuration.h).
//
// If the process ends or the library is unloaded while the count is above 0, the library writes one text to the
// standard output stream for each kind of entry that is left in the registry. No newline follows a text:
//
//     "Not all Component-Discoveries removed while destroying CGlobalData"
//     "Not all Component-Assemblies removed while destroying CGlobalData"
//     "Not all Components removed while destroying CGlobalData"
//
// Then it unloads the modules that are still loaded, without a call of their ZrExitModule, and releases the discovery
// objects.

#ifndef ZRCORE_LIFECYCLE_H
#define ZRCORE_LIFECYCLE_H

#include "zrcore/base.h"

/// ZrInitialize adds 1 to the library's count of initialisations.
///
/// Each call must be balanced by one ZrUninitialize. The count is an unsigned 32-bit number that is not checked for
/// overflow: 2^32 unbalanced calls make it 0.
///
/// @return
///   - ZR_R_OK  always.
///
/// Any thread, any time. Locks the lifecycle lock; if that fails, the process is terminated. While another thread runs
/// the last ZrUninitialize, the call waits for its end.
ZR_API ZRRESULT ZrInitialize(void) ZR_NOEXCEPT;

/// ZrUninitialize subtracts 1 from the count. The call that reaches 0 empties the component registry. A call at count 0
/// changes nothing.
///
/// The call that reaches 0 runs ZrExitModule of every started module, then unloads every module, then releases every
/// discovery object. All of this happens on the calling thread, under the lifecycle lock and the management lock.
///
/// Deadlock: ZrExitModule must not wait for a thread that calls a function of this header, component.h or
/// configuration.h: such a thread needs one of the two locks.
///
/// Before the last call, release all objects that modules made, and wait until no ZrCreateInstance runs. The library
/// does not track objects: a call into the code of an unloaded module is undefined behaviour.
///
/// ZrExitModule must not throw. If it does, the first exception passes through to the caller. By then every module has
/// been unloaded, the registry is empty, the count is 0, and both locks are free. To use an exception whose class is
/// defined in an unloaded module is undefined behaviour.
///
/// @return
///   - ZR_R_OK  always.
/// @throws std::system_error if one of the two locks can't be locked; nothing has changed then. See "Exceptions" in
///         base.h.
///
/// Any thread, any time.
ZR_API ZRRESULT ZrUninitialize(void);

#endif
