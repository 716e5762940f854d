// ZrCore: components: from a class identifier to an object of a module that the caller never named.
//
// The library knows no class by itself. A host registers discovery objects (IZrComponentDiscovery); a lookup asks them
// in ascending order of their cookies, the first answer of zero or above wins, and it is remembered until that
// discovery is removed. A discovery tells where a class lives: in a module file, by path, or behind entry points that
// it hands over. The module is loaded when an object is first wanted, started once by ZrInitModule, and unloaded when
// the last class that was used from it is gone. Neither objects nor creations are tracked: before a discovery goes, by
// the last ZrUninitialize too, release the objects of its modules, and have no ZrCreateInstance of its classes running.
//
//     host     ZrInitialize, ZrAddComponentDiscovery            client   ZrCreateInstance -> object
//     module   ZrInitModule, ZrCreateInstanceModule ... ZrExitModule
//
// Locks. The management lock, which is recursive, serialises every lookup, addition and removal, and every call into a
// discovery is made under it, but for the question about "ZrCore" (configuration.h) that an addition ends with: a
// discovery may call back on the same thread, and a slow one stalls all others. (It had better not make objects of a
// module whose ZrInitModule calls back: the one holds the management lock and waits for the module's start, the other
// the reverse.) Objects are made without it. ZrExitModule runs under it, and under the lifecycle lock too in the last
// ZrUninitialize: a thread that it waits for must not want either.
//
// The exports answer ZR_R_NO_INIT while ZrInitialize is not in force. Exceptions from discoveries and modules are
// caught and become the code that each export names, except where an addition reads "ZrCore"; so does exhausted memory,
// which never reads as ZR_R_NO_MEMORY. All exports: any thread, any time.

#ifndef ZRCORE_COMPONENT_H
#define ZRCORE_COMPONENT_H

#include "zrcore/base.h"
#include "zrcore/string.h"
#include "zrcore/uuid.h"

typedef struct IZrUnknown IZrUnknown;
typedef struct IZrComponentDiscovery IZrComponentDiscovery;
typedef struct IZrConfiguration IZrConfiguration;

// ---- What a module provides ----------------------------------------------------------------------------------------
//
// A module is a loadable file that exports the three functions declared here, all of them. The declarations give C
// linkage and visibility: a module includes this header and defines the functions, with these signatures. In CMake,
// zrcore_add_module(NAME sources...) builds such a file and fails if one of the three is missing.

#define ZR_MODULE_API ZR_EXTERN_C ZR_EXPORT

/// ZrInitModule starts the module, once before the first object is made.
///
/// Called under the module's own start lock: other threads that want a first object wait. It may call component
/// exports, but not make an object of its own module, nor have its own discovery removed.
///
/// @return negative to refuse: the module is unloaded, the creation answers ZR_R_NOT_SUPPORTED, and the next attempt
///         loads it again and does not call ZrInitModule a second time. After an exception, which is ZR_R_UNEXPECTED,
///         the module stays loaded, and it isn't called a second time either.
ZR_MODULE_API ZRRESULT ZrInitModule(void);

/// ZrExitModule stops the module, before it is unloaded. A stopped module that is still loaded may be started again.
ZR_MODULE_API void ZrExitModule(void);

/// ZrCreateInstanceModule makes an object. Called without any lock, from any number of threads at once; it may call
/// component exports freely, but not have its own discovery removed.
///
/// @param classId      the class; lent for the call.
/// @param argument1    passed on from ZrCreateInstance unchanged; its meaning is between caller and module.
/// @param interfaceId  the wanted interface; lent for the call.
/// @param argument2    as argument1.
/// @param object       the caller's result pointer; receives an object with one reference for the caller.
/// @return handed to the caller of ZrCreateInstance as it is; negative means that no object was made.
ZR_MODULE_API ZRRESULT ZrCreateInstanceModule(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId,
                                              uint64_t argument2, void** object);

typedef ZRRESULT (*ZrInitModuleFunction)(void);
typedef void (*ZrExitModuleFunction)(void);
typedef ZRRESULT (*ZrCreateInstanceModuleFunction)(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId,
                                                   uint64_t argument2, void** object);

/// ZrModuleEntryPoints offers a module's functions without a file. Without createInstance no object can be made; init
/// and exit may be null and are then skipped.
typedef struct ZrModuleEntryPoints {
  ZrCreateInstanceModuleFunction createInstance;
  ZrInitModuleFunction init;
  ZrExitModuleFunction exit;
} ZrModuleEntryPoints;

ZR_STATIC_ASSERT(sizeof(ZrModuleEntryPoints) == 3 * sizeof(void*), "three function pointers");

// ---- What a host provides ------------------------------------------------------------------------------------------
//
// The object interfaces are tables of operations, and the place in the table is the contract. In C++ they are abstract
// classes without a virtual destructor; in C a struct that points to a struct of function pointers, each of which takes
// the object first.

#ifdef __cplusplus

/// IZrUnknown is the base of every object that crosses the boundary. The object counts its references itself.
struct IZrUnknown {
  /// AddRef takes one more reference. The library doesn't read the result; by custom it is the new count.
  virtual uint32_t AddRef() = 0;

  /// Release gives up one reference, the last one frees the object. The library doesn't read the result.
  virtual uint32_t Release() = 0;

  /// QueryInterface gives another interface of the object. The library never calls it: identifiers and codes are
  /// between host and modules, ZR_R_NO_INTERFACE by custom where there is none.
  virtual ZRRESULT QueryInterface(const ZRUUID* interfaceId, void** object) = 0;

 protected:
  ~IZrUnknown() = default;
};

/// IZrComponentDiscovery tells where classes live and what they are called. A host or a module implements it.
///
/// A negative answer means "not mine": its code is not kept, and the next discovery is asked. An exception ends the
/// whole lookup.
struct IZrComponentDiscovery : IZrUnknown {
  /// QueryComponent tells where a class lives.
  ///
  /// @param classId      lent for the call.
  /// @param modulePath   null on entry; may receive the path of a module file, as a string that the library takes,
  ///                     whatever the result. Paths that differ in any unit name different modules. It is read up to
  ///                     its first zero unit; without a slash in it, the system's loader searches for the file.
  /// @param entryPoints  all null on entry; may receive functions instead, with no path.
  /// @return zero or above if this discovery knows the class.
  virtual ZRRESULT QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints* entryPoints) = 0;

  /// QueryConfiguration gives the configuration of a class.
  ///
  /// ZrAddComponentDiscovery asks for the configuration "ZrCore" (configuration.h) of the nil class, 16 zero bytes, and
  /// does so without any lock. It does not read the result: without an object there is none.
  ///
  /// @param classId        lent for the call.
  /// @param name           name of the configuration; lent for the call.
  /// @param configuration  null on entry; receives an object with one reference for the caller.
  /// @return the result of ZrQueryComponentConfiguration.
  virtual ZRRESULT QueryConfiguration(const ZRUUID* classId, ZRSTR name, IZrConfiguration** configuration) = 0;

  /// QueryClassId turns a class name into a class identifier. Zero or above if this discovery knows the name.
  ///
  /// @param className  lent for the call; null counts as empty.
  /// @param classId    the record of the caller of ZrCLSIDFromClassName.
  virtual ZRRESULT QueryClassId(ZRSTR className, ZRUUID* classId) = 0;

  /// QueryClassName turns a class identifier into a class name. Zero or above if this discovery knows the class.
  ///
  /// @param classId    lent for the call.
  /// @param className  the variable of the caller of ZrClassNameFromCLSID, with what that caller left in it; receives a
  ///                   string that goes to the caller, or null. Write it whenever the answer is zero or above, and
  ///                   never otherwise: the next discovery wouldn't know of the string.
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

/// ZrAddComponentDiscovery registers a discovery object. One object may be added twice.
///
/// By this it is asked for the configuration "ZrCore" and for nothing else: once it is registered, under no lock, also
/// when an earlier discovery has decided already (configuration.h). What it answers changes no result. An exception of
/// the objects that are asked passes through: the discovery is then registered under `*cookie` nevertheless, but isn't
/// counted among those that were added. Its removal is counted, though, so that the count stays one too low.
///
/// @param discovery  the library takes a reference of its own (AddRef) until the discovery is removed. The caller keeps
///                   one until this returns, lest another thread remove the discovery while it is asked.
/// @param cookie     receives the number that names the registration: never 0, counting up over the process's life
///                   and skipping numbers in use after it has wrapped. 0 after a failure, except ZR_R_UNEXPECTED.
/// @return ZR_R_OK; looked for in this order: ZR_R_INVALID_ARGUMENTS if `cookie` is null, ZR_R_NO_INIT,
///         ZR_R_INVALID_ARGUMENTS if `discovery` is null, ZR_R_FAILED if 0xFFFFFFFF discoveries are registered,
///         ZR_R_UNEXPECTED for anything thrown before the configuration is read.
/// @throws std::bad_alloc if there is no memory to convert a value of the configuration; see "Exceptions" in base.h. An
///         exception of QueryConfiguration or of the configuration's objects passes through too. The discovery is
///         registered in all these cases, as described above.
/// @throws std::system_error if the mutex of the item caches' settings can't be locked.
ZR_API ZRRESULT ZrAddComponentDiscovery(IZrComponentDiscovery* discovery, uint32_t* cookie);

/// ZrRemoveComponentDiscovery forgets a discovery and the classes that it reported.
///
/// In this order, under the management lock: ZrExitModule of each started module that its classes live in, also when
/// classes of other discoveries live there too (the module is started again for those); each module whose last used
/// class this was is unloaded; the discovery object is released. Class names learnt from it stay known. Objects made by
/// its modules must have been released before, and no creation of its classes may be running.
///
/// When this has removed, with ZR_R_OK, as many discoveries as were added, the item caches are switched off and emptied
/// (configuration.h), which is no moment for other threads to make or destroy REFs and SREFs.
///
/// @return ZR_R_OK; ZR_R_NO_INIT; ZR_R_UNKNOWN_IDENTIFIER if no discovery has this cookie; ZR_R_UNEXPECTED for anything
///         thrown, with what had been removed by then staying removed.
/// @throws std::system_error if the mutex of the item caches' settings can't be locked; see "Exceptions" in base.h. The
///         discovery has been removed then, but isn't counted as removed.
ZR_API ZRRESULT ZrRemoveComponentDiscovery(uint32_t cookie);

/// ZrCreateInstance makes an object of a class.
///
/// @param classId      must not be null.
/// @param argument1    passed to the module unchanged; 0 where the module asks for nothing.
/// @param interfaceId  must not be null; passed to the module.
/// @param argument2    as argument1.
/// @param object       set to null at once, before anything else is looked at; receives the object, with one reference
///                     for the caller.
/// @return the module's own result, positive ones included; or, looked for in this order: ZR_R_NO_INIT,
///         ZR_R_INVALID_ARGUMENTS if `object` is null, ZR_R_CLASS_NOT_REGISTERED, ZR_R_FILE_NOT_FOUND if the module
///         can't be loaded, ZR_R_INVALID_SYSTEM if it lacks one of its exports, ZR_R_NOT_SUPPORTED if its ZrInitModule
///         refused, ZR_R_FAILED if the discovery gave neither a path nor a creating function. Anything thrown is
///         ZR_R_REQUEST_ABORTED in the lookup and ZR_R_UNEXPECTED in the module.
///
/// A module that can't be loaded or lacks an export is told in one line on the debugger's channel (the standard error
/// stream on POSIX systems), with the path and the system's reason. Each creation tries anew, but for a ZrInitModule
/// that has refused or thrown. What the system's loader itself doesn't survive, nobody can turn into a code: an
/// exception from a static constructor of the module ends the process.
ZR_API ZRRESULT ZrCreateInstance(const ZRUUID* classId, uint64_t argument1, const ZRUUID* interfaceId,
                                 uint64_t argument2, void** object) ZR_NOEXCEPT;

/// ZrCLSIDFromClassName turns a class name into a class identifier.
///
/// Names compare exactly, by ZrCompareString; null counts as empty. A name that was answered once is answered from
/// memory for the rest of the process's life, also after its discovery has gone.
///
/// @param classId  receives the identifier; not cleared by a failure, and may hold what a failing discovery left there.
/// @return ZR_R_OK; ZR_R_NO_INIT; ZR_R_INVALID_ARGUMENTS if `classId` is null; ZR_R_FAILED if no discovery knows the
///         name or anything was thrown.
ZR_API ZRRESULT ZrCLSIDFromClassName(ZRSTR className, ZRUUID* classId) ZR_NOEXCEPT;

/// ZrClassNameFromCLSID turns a class identifier into a class name.
///
/// Remembers like ZrCLSIDFromClassName; the two directions are remembered apart.
///
/// @param classId    must not be null.
/// @param className  receives the name, which the caller destroys; may be null where the discovery said so. Set it to
///                   null before: a discovery that knows the class may fail to write it. Not cleared by a failure.
/// @return ZR_R_OK; ZR_R_NO_INIT; ZR_R_INVALID_ARGUMENTS if `className` is null; ZR_R_FAILED if no discovery knows the
///         class or anything was thrown.
ZR_API ZRRESULT ZrClassNameFromCLSID(const ZRUUID* classId, ZRSTR* className) ZR_NOEXCEPT;

#endif
