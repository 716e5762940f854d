// ZrCore: when the component system is open.
//
// All state of the library exists from the moment it is loaded. ZrInitialize and ZrUninitialize create and destroy
// nothing, they only count, and the last ZrUninitialize empties the component registry. While the count is 0 the
// component exports (component.h) answer ZR_R_NO_INIT; everything else works at any time.
//
// A new cycle may follow a finished one. Across cycles live on: the last cookie issued, the class names learnt, the
// texts of registered result codes, and the settings of the item caches (configuration.h) with the count of discoveries
// that keeps them in force.
//
// A process that ends with the count above 0 finds out from the standard output stream, which then receives, without a
// line end, one text for each kind of entry that is left in the registry:
//   "Not all Component-Discoveries removed while destroying CGlobalData"
//   "Not all Component-Assemblies removed while destroying CGlobalData"
//   "Not all Components removed while destroying CGlobalData"
// Modules that are still loaded then are released without a call of their ZrExitModule. Unloading the library ends it
// in the same way.

#ifndef ZRCORE_LIFECYCLE_H
#define ZRCORE_LIFECYCLE_H

#include "zrcore/base.h"

/// ZrInitialize adds 1 to the library's count of initialisations.
///
/// Balance every call with one ZrUninitialize. The count (32 bits, unsigned) is not guarded against overflow.
///
/// @return ZR_R_OK, always.
///
/// Any thread, any time. Takes the lifecycle lock.
ZR_API ZRRESULT ZrInitialize(void) ZR_NOEXCEPT;

/// ZrUninitialize takes 1 from the count; the call that reaches 0 empties the component registry.
///
/// That last call runs every started module's ZrExitModule, then unloads every module, then releases every discovery
/// object, all on the calling thread and under the lifecycle and the management lock. Release all objects made by
/// modules first, and have no creation running: they are not tracked, and their code goes. A call at count 0 changes
/// nothing.
///
/// ZrExitModule must not throw. The first exception of any of them passes through to the caller; by then every module
/// has been unloaded, the registry is empty, the count is 0, and both locks are free.
///
/// @return ZR_R_OK, always.
/// @throws std::system_error if one of the two locks can't be locked; nothing has changed then. See "Exceptions" in
///         base.h.
///
/// Any thread, any time.
ZR_API ZRRESULT ZrUninitialize(void);

#endif
