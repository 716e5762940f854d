// ZrCore: components. A client names a class and receives an object, without knowing the module that implements it.
//
// The library has no classes of its own. A host registers discovery objects (IZrComponentDiscovery), and a discovery
// reports where a class is implemented: in a module file, by its path, or in functions that it hands over. A lookup
// asks the discoveries in ascending order of their cookies; the first result of zero or above wins. The library
// remembers the class until that discovery is removed.
//
// A module is loaded when the first object is created from it, and started once with ZrInitModule. It is unloaded when
// the library has removed every class of which the module has made an object.
//
//     host     ZrInitialize, ZrAddComponentDiscovery            client   ZrCreateInstance -> object
//     module   ZrInitModule, ZrCreateInstanceModule ... ZrExitModule
//
//     void* object = nullptr;
//     ZRRESULT result = ZrCreateInstance(&kClassId, 0, &kInterfaceId, 0, &object);
//     if (ZR_SUCCEEDED(result)) static_cast<IExample*>(object)->Release();   // when it is no longer needed
//
// The library tracks neither objects nor running creations. Before a discovery is removed, or the last ZrUninitialize
// removes all of them, all objects of its modules must have been released and no ZrCreateInstance of its classes may be
// running. The removal unloads the code of the modules, and a later call into that code is undefined behaviour.
//
// Locks. The management lock is recursive. It is held during every lookup, addition and removal and during every call
// of a discovery, except the query for "ZrCore" (configuration.h) at the end of an addition. A slow discovery blocks
// all other threads. A discovery that is being called may call component functions on the same thread, except in the
// case below. It may even remove itself: the library releases it after it has returned. ZrExitModule runs under the
// management lock, and in the last ZrUninitialize under the lifecycle lock too.
//
// Objects are created without any lock. Here and in the comments below this means that the library takes no lock for
// the call. If the caller is a discovery or ZrExitModule, its thread still holds the locks above.
//
// Deadlock: a discovery must not create an object of a module whose ZrInitModule calls component functions. The
// discovery holds the management lock and waits for the module's start, while the thread that starts the module waits
// for the management lock.
//
// Deadlock: ZrExitModule must not wait for a thread that needs one of the two locks.
//
// All functions return ZR_R_NO_INIT while ZrInitialize is not in force, and ZR_R_INVALID_ARGUMENTS for a null result
// pointer; identifiers that they read must not be null. Exceptions from discoveries and modules, and out of memory,
// become the result code that each function names, which is never ZR_R_NO_MEMORY. While an addition reads "ZrCore",
// they are thrown to its caller instead. All functions: any thread, any time.

#ifndef ZRCORE_COMPONENT_H
#define ZRCORE_COMPONENT_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/string.h"
#include "zrcore/uuid.h"

typedef struct IZrUnknown IZrUnknown;
typedef struct IZrComponentDiscovery IZrComponentDiscovery;
typedef struct IZrConfiguration IZrConfiguration;

// ---- What a module provides ----------------------------------------------------------------------------------------
//
// A module is a loadable file that exports all three functions that are declared here. The declarations specify C
// linkage and visibility: a module includes this header and defines the functions with exactly these signatures. In
// CMake, zrcore_add_module(NAME sources...) builds such a file and fails if one of the three is missing.

#define ZR_MODULE_API ZR_EXTERN_C ZR_EXPORT

/// ZrInitModule starts the module. The library calls it once per start, before the module makes its first object.
///
/// It runs under the module's start lock: other threads that want a first object wait until it returns. It may call
/// component functions, with two exceptions:
///   - It must not create an object of its own module. That deadlocks.
///   - It must not cause the removal of its own discovery. That unloads the module while its code runs.
///
/// @return zero or above if the module can be used. A negative result refuses the start: the module is unloaded and
///         ZrCreateInstance returns ZR_R_NOT_SUPPORTED. The next creation loads the module again and uses it without
///         calling ZrInitModule a second time.
///
/// If it throws, ZrCreateInstance returns ZR_R_UNEXPECTED. The module stays loaded, and ZrInitModule is not called a
/// second time either.
ZR_MODULE_API ZRRESULT ZrInitModule(void);

/// ZrExitModule stops the module. The library calls it before it unloads a started module, except at the end of the
/// process (lifecycle.h). A stopped module that is still loaded may be started again.
///
/// It must not throw (base.h). Deadlock: it must not wait for a thread that needs the management lock or, in the last
/// ZrUninitialize, the lifecycle lock.
ZR_MODULE_API void ZrExitModule(void);

/// ZrCreateInstanceModule makes an object. It is called without any lock, by any number of threads at once.
///
/// It may call all component functions, but it must not cause the removal of its own discovery: that unloads the module
/// while its code runs.
///
/// @param classId      lends the class identifier for the call.
/// @param argument1    what the caller passed to ZrCreateInstance; its meaning is between caller and module.
/// @param interfaceId  lends the identifier of the wanted interface for the call.
/// @param argument2    like `argument1`.
/// @param object       the caller's result pointer; gives the caller an object with one reference.
/// @return passed unchanged to the caller of ZrCreateInstance. A negative result means that no object was made.
ZR_MODULE_API ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId,
                                              uint64_t argument2, void** object);

typedef ZRRESULT (*ZrInitModuleFunction)(void);
typedef void (*ZrExitModuleFunction)(void);
typedef ZRRESULT (*ZrCreateInstanceModuleFunction)(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId,
                                                   uint64_t argument2, void** object);

/// ZrModuleEntryPoints contains the functions of a module that has no file.
///
/// If `createInstance` is null, ZrCreateInstance returns ZR_R_FAILED. `init` and `exit` may be null; they are skipped
/// then.
typedef struct ZrModuleEntryPoints {
  ZrCreateInstanceModuleFunction createInstance;
  ZrInitModuleFunction init;
  ZrExitModuleFunction exit;
} ZrModuleEntryPoints;

ZR_STATIC_ASSERT(sizeof(ZrModuleEntryPoints) == 24 && offsetof(ZrModuleEntryPoints, createInstance) == 0 &&
                     offsetof(ZrModuleEntryPoints, init) == 8 && offsetof(ZrModuleEntryPoints, exit) == 16,
                 "three function pointers");

// ---- What a host provides ------------------------------------------------------------------------------------------
//
// The object interfaces are tables of operations. The position of an operation in the table is part of the binary
// interface. In C++ the interfaces are abstract classes without a virtual destructor. In C they are structs that point
// to a struct of function pointers, each of which takes the object as its first argument.

#ifdef __cplusplus

/// IZrUnknown is the base of every object that crosses the library's boundary. The object counts its own references.
struct IZrUnknown {
  /// AddRef adds one reference. By custom it returns the new count; the library ignores the result.
  virtual uint32_t AddRef() = 0;

  /// Release releases one reference; the last one frees the object. The library ignores the result.
  virtual uint32_t Release() = 0;

  /// QueryInterface gives another interface of the object. The library never calls it: host and modules agree on
  /// identifiers and result codes. By custom it returns ZR_R_NO_INTERFACE for an unknown interface.
  virtual ZRRESULT QueryInterface(const ZRUUID* interfaceId, void** object) = 0;

 protected:
  ~IZrUnknown() = default;
};

/// IZrComponentDiscovery reports where classes are implemented and what they are called. A host or a module implements
/// it.
///
/// A negative result means that this discovery doesn't know the class or name. The library discards the code and asks
/// the next discovery. An exception ends the whole lookup.
struct IZrComponentDiscovery : IZrUnknown {
  /// QueryComponent reports where a class is implemented: in a module file or in functions.
  ///
  /// @param classId      lends the class identifier for the call.
  /// @param modulePath   null on entry; may receive the path of a module file, which the library takes whatever the
  ///                     result is. The path ends at its first zero unit. Without a slash in it, the system's loader
  ///                     searches for the file. Paths that differ in any unit name different modules.
  /// @param entryPoints  all null on entry; may receive the functions of a module instead. They must stay null if
  ///                     `*modulePath` is written: otherwise the library may call them instead of loading the file.
  /// @return zero or above if this discovery knows the class.
  virtual ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints* entryPoints) = 0;

  /// QueryConfiguration gives the configuration of a class.
  ///
  /// ZrAddComponentDiscovery calls it without any lock for the configuration "ZrCore" (configuration.h) of the nil
  /// class, 16 zero bytes. It ignores the result then: a null object means that there is no configuration.
  ///
  /// @param classId        lends the class identifier for the call.
  /// @param name           lends the name of the configuration for the call.
  /// @param configuration  null on entry; gives the caller an object with one reference.
  /// @return becomes the result of ZrQueryComponentConfiguration.
  virtual ZRRESULT QueryConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** configuration) = 0;

  /// QueryClassId finds the identifier of a class by its name.
  ///
  /// @param className  lends the name for the call; null means an empty name.
  /// @param classId    receives the identifier. This is the record of the caller of ZrCLSIDFromClassName.
  /// @return zero or above if this discovery knows the name.
  virtual ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) = 0;

  /// QueryClassName finds the name of a class by its identifier.
  ///
  /// If it returns zero or above, it must have written `*className`: the library reads the variable then. Leak: if it
  /// returns a negative code, it must not have written `*className`, because the next discovery overwrites the string.
  ///
  /// @param classId    lends the class identifier for the call.
  /// @param className  gives the caller a string, or null. This is the variable of the caller of ZrClassNameFromCLSID,
  ///                   with the content that the caller left in it.
  /// @return zero or above if this discovery knows the class.
  virtual ZRRESULT QueryClassName(const ZRUUID* classId, ZRSTR* className) = 0;

 protected:
  ~IZrComponentDiscovery() = default;
};

#else

typedef struct IZrUnknownTable {
  uint32_t (*AddRef)(IZrUnknown* self);
  uint32_t (*Release)(IZrUnknown* self);
  ZRRESULT (*QueryInterface)(IZrUnknown* self, const ZRUUID* interfaceId, void** object);
} IZrUnknownTable;

struct IZrUnknown {
  const IZrUnknownTable* table;
};

// clang-format off
typedef struct IZrComponentDiscoveryTable {
  uint32_t (*AddRef)(IZrComponentDiscovery* self);
  uint32_t (*Release)(IZrComponentDiscovery* self);
  ZRRESULT (*QueryInterface)(IZrComponentDiscovery* self, const ZRUUID* interfaceId, void** object);
  ZRRESULT (*QueryComponent)(IZrComponentDiscovery* self, const ZRUUID* classId, ZRSTR* modulePath,
                             ZrModuleEntryPoints* entryPoints);
  ZRRESULT (*QueryConfiguration)(IZrComponentDiscovery* self, const ZRUUID* classId, ZRSTR name,
                                 IZrConfiguration** configuration);
  ZRRESULT (*QueryClassId)(IZrComponentDiscovery* self, ZRSTR className, ZRUUID* classId);
  ZRRESULT (*QueryClassName)(IZrComponentDiscovery* self, const ZRUUID* classId, ZRSTR* className);
} IZrComponentDiscoveryTable;
// clang-format on

struct IZrComponentDiscovery {
  const IZrComponentDiscoveryTable* table;
};

#endif

/// ZrAddComponentDiscovery registers a discovery object. The same object may be added more than once.
///
/// Of the discovery's queries, adding calls only QueryConfiguration, for "ZrCore". It does so after the registration,
/// without any lock, even if the settings have been decided by an earlier discovery (configuration.h). The settings
/// that it reads don't change the result.
///
/// The objects that are asked must not throw: the exception passes through to the caller. After this exception, and
/// after those named below, the discovery is registered under `*cookie` nevertheless, but it is not counted as added
/// (configuration.h). Its removal is counted as a removal, so the count of discoveries is one too low from then on.
///
/// @param discovery  must not be null. The library adds a reference and releases it after the removal. The caller must
///                   keep its own reference until the call returns: another thread may remove the discovery meanwhile.
/// @param cookie     receives the number of the registration, which is never 0. Numbers count up over the life of the
///                   process; after they have wrapped, numbers in use are skipped. After a failure `*cookie` is 0.
///                   After ZR_R_UNEXPECTED it may also be a number under which nothing is registered.
/// @return the first that applies:
///   - ZR_R_INVALID_ARGUMENTS  `cookie` is null.
///   - ZR_R_NO_INIT            ZrInitialize is not in force.
///   - ZR_R_INVALID_ARGUMENTS  `discovery` is null.
///   - ZR_R_FAILED             0xFFFFFFFF discoveries are registered.
///   - ZR_R_UNEXPECTED         an exception, or out of memory, before the configuration was read.
///   - ZR_R_OK                 the discovery was registered.
/// @throws std::bad_alloc if there is no memory to convert a value of the configuration; see "Exceptions" in base.h.
/// @throws std::system_error if the mutex of the item caches' settings can't be locked.
ZR_API ZRRESULT ZrAddComponentDiscovery(IZrComponentDiscovery* discovery, uint32_t* cookie);

/// ZrRemoveComponentDiscovery removes a discovery and the classes that it reported.
///
/// All objects of its modules must have been released before the call, and no creation of its classes may be running:
/// their code is unloaded. The function does this under the management lock, in this order:
///
///   1. It calls ZrExitModule of each started module that implements one of the classes. If the module also implements
///      classes of other discoveries, the next creation of such a class starts it again.
///   2. It unloads each module that implements one of the classes, unless the module has made an object of a class that
///      remains. If the module has been started again since step 1, the function calls ZrExitModule once more.
///   3. It releases the discovery object.
///
/// Class names that were learnt from the discovery stay known.
///
/// When as many discoveries have been removed with ZR_R_OK as were added, the item caches are switched off and emptied
/// (configuration.h). Other threads must not make or destroy REFs and SREFs during that call: it is a data race that
/// corrupts the caches.
///
/// @return
///   - ZR_R_OK                  the discovery was removed.
///   - ZR_R_NO_INIT             ZrInitialize is not in force.
///   - ZR_R_UNKNOWN_IDENTIFIER  no discovery has this cookie.
///   - ZR_R_UNEXPECTED          an exception, or out of memory. The steps before it remain done. The discovery may or
///                              may not be registered still.
/// @throws std::system_error if the mutex of the item caches' settings can't be locked; see "Exceptions" in base.h. The
///         discovery has been removed then, but isn't counted as removed.
ZR_API ZRRESULT ZrRemoveComponentDiscovery(uint32_t cookie);

/// ZrCreateInstance creates an object of a class.
///
/// @param classId      must not be null.
/// @param argument1    passed to the module unchanged; 0 if the module doesn't define a meaning.
/// @param interfaceId  must not be null; passed to the module.
/// @param argument2    like `argument1`.
/// @param object       gives an object with one reference. It is set to null before anything else is checked, so it is
///                     null after a failure, unless the module stored something and failed nevertheless.
/// @return the module's own result, which may be positive; or the first of these that applies:
///   - ZR_R_NO_INIT               ZrInitialize is not in force.
///   - ZR_R_INVALID_ARGUMENTS     `object` is null.
///   - ZR_R_CLASS_NOT_REGISTERED  no discovery knows the class.
///   - ZR_R_REQUEST_ABORTED       an exception, or out of memory, in the lookup.
///   - ZR_R_FILE_NOT_FOUND        the module can't be loaded.
///   - ZR_R_INVALID_SYSTEM        the module lacks one of its three exports.
///   - ZR_R_NOT_SUPPORTED         the module's ZrInitModule refused the start.
///   - ZR_R_FAILED                the discovery reported neither a path nor a function that creates objects.
///   - ZR_R_UNEXPECTED            an exception, or out of memory, in the module or after the lookup.
///
/// If a module can't be loaded or lacks an export, the library writes one line with the path and the reason to the
/// debugger's channel, which is the standard error stream on POSIX systems. Each creation tries again, except that
/// ZrInitModule is not called again after it has refused or thrown. An exception from a static constructor of a module
/// terminates the process.
///
/// The lookup runs under the management lock. The module is loaded, started and called without it.
ZR_API ZRRESULT ZrCreateInstance(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId,
                                 uint64_t argument2, void** object) ZR_NOEXCEPT;

/// ZrCLSIDFromClassName finds the identifier of a class by its name.
///
/// Names are compared exactly, as by ZrCompareString. The library remembers each name that a discovery knew until the
/// process ends, even after the discovery has been removed.
///
/// @param className  null means an empty name.
/// @param classId    receives the identifier. A failure doesn't clear it; it may contain what a failing discovery left
///                   there.
/// @return
///   - ZR_R_OK                 the identifier was found.
///   - ZR_R_NO_INIT            ZrInitialize is not in force.
///   - ZR_R_INVALID_ARGUMENTS  `classId` is null.
///   - ZR_R_FAILED             no discovery knows the name; or an exception, or out of memory.
ZR_API ZRRESULT ZrCLSIDFromClassName(ZRSTR className, ZRUUID* classId) ZR_NOEXCEPT;

/// ZrClassNameFromCLSID finds the name of a class by its identifier.
///
/// The library remembers each name until the process ends, like ZrCLSIDFromClassName. The two functions remember
/// separately: a name that one of them has learnt is unknown to the other.
///
/// @param classId    must not be null.
/// @param className  gives the name (ZrDestroyString), or null if the discovery reported null. `*className` must be
///                   null before the call: if a discovery returns a success without writing it, the library uses the
///                   old content as a string. A failure doesn't clear it.
/// @return
///   - ZR_R_OK                 the name was found.
///   - ZR_R_NO_INIT            ZrInitialize is not in force.
///   - ZR_R_INVALID_ARGUMENTS  `className` is null.
///   - ZR_R_FAILED             no discovery knows the class; or an exception, or out of memory.
ZR_API ZRRESULT ZrClassNameFromCLSID(const ZRUUID* classId, ZRSTR* className) ZR_NOEXCEPT;

#endif
