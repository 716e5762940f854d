// ZrHost: a ready discovery for hosts. It finds modules by their manifests, and configures their classes.
//
// A manifest is a JSON file NAME.zrmodule beside a module. It lists the classes of the module (docs/manifests.md). A
// host calls ZrInitialize, creates one discovery, and adds it to the library, which keeps its own reference:
//
//     IZrComponentDiscovery* discovery = NULL;
//     ZRRESULT result = ZrHostCreateFolderDiscovery(NULL, 0, NULL, 0, &discovery);
//     if (ZR_FAILED(result)) return result;
//     uint32_t cookie = 0;
//     result = ZrAddComponentDiscovery(discovery, &cookie);
//     discovery->Release();                    // in C: discovery->table->Release(discovery)
//
// ZrRemoveComponentDiscovery(cookie) removes the discovery again, after all objects of its classes were released.
//
// The discovery reads files when it is created and when ZrHostRefresh is called. It never loads a module: the library
// loads a module when the first object of one of its classes is created.
//
// A file that is wrong never stops the host. Each problem becomes one report, which ZrHostListProblems gives, and
// everything else keeps working.
//
// The conventions of zrcore/base.h hold for this header. Every function may be called by any thread, before
// ZrInitialize and after ZrUninitialize, too. It must not be called from a destructor of a static object or from an
// atexit handler. No function throws.

#ifndef ZRHOST_HOST_H
#define ZRHOST_HOST_H

#include <stddef.h>

#include "zrcore/base.h"
#include "zrcore/component.h"
#include "zrcore/uuid.h"

// ZRHOST_API marks a function that libzrhost exports, with C linkage and an undecorated name.
#ifdef ZRHOST_BUILDING
#define ZRHOST_API ZR_EXTERN_C ZR_EXPORT
#else
#define ZRHOST_API ZR_EXTERN_C ZR_IMPORT
#endif

// ---- The discovery -------------------------------------------------------------------------------------------------

/// A flag of ZrHostCreateFolderDiscovery: a manifest may name a module file outside its own folder, with an absolute
/// path, with "..", or through a symbolic link, and a manifest may be a symbolic link to a file outside the folder.
/// Without the flag, such a manifest is a problem, and its classes are not found. The check is made when the discovery
/// reads the manifest. It doesn't protect against somebody who can change the folder afterwards.
#define ZRHOST_ALLOW_OUTSIDE 1u

/// ZrHostCreateFolderDiscovery makes a discovery of the modules in folders.
///
/// It reads each file whose name ends in ".zrmodule" directly in one of the folders, and not in their subfolders. A
/// folder that is named twice is read once. If two manifests contain a class with the same name or the same identifier,
/// the first one counts, by the order of the folders and then by the bytes of the file names. The other class becomes a
/// problem. So does a folder that can't be read, except a missing folder of the installation.
///
/// The discovery also serves configurations: for each class those of its manifest, and for the library itself the one
/// called "ZrCore" (zrcore/configuration.h). A value in the configuration file of the host replaces the value of the
/// manifest with the same name, and is converted to its type.
///
/// @param folders            reads `folderCount` paths, each ended by a zero unit. A relative path starts in the
///                           current folder of the process at the time of this call.
/// @param folderCount        0 for the folders of the environment variable ZRCORE_MODULE_PATH, which are separated by
///                           ":" (";" on Windows). Empty entries are ignored. A folder of the variable that doesn't
///                           exist is a problem. On Linux, a process with more rights than its user, such as a
///                           set-user-ID program, ignores the variable. If no entry is left, the folder is
///                           zrcore/modules beside the library libzrhost itself (on Windows
///                           ../lib/zrcore/modules), where zrcore_install_module installs modules. Debian's package
///                           searches /usr/local/lib/zrcore/modules first, for modules that aren't from packages.
/// @param configurationFile  reads the path of the host's configuration file, ended by a zero unit; null for no file.
///                           An empty path is not allowed. A relative path starts in the current folder of the process
///                           at the time of this call. A file that is missing or can't be read is a problem, and not a
///                           failure. Its settings of the library itself are in force only if this discovery is the
///                           first one that is added (zrcore/configuration.h).
/// @param flags              0 or ZRHOST_ALLOW_OUTSIDE.
/// @param discovery          gives an object with one reference. It is set to null first.
/// @return
///   - ZR_R_OK                 the discovery was made, even if there are problems or no folder exists.
///   - ZR_R_INVALID_ARGUMENTS  `discovery` is null; `folders` or one of its paths is null although `folderCount` is not
///                             0; a path is empty or not UTF-16; or `flags` has an unknown bit.
///   - ZR_R_NO_MEMORY          out of memory.
///   - ZR_R_UNEXPECTED         a path is relative, and the current folder of the process can't be determined; or the
///                             system failed in another unexpected way.
///
/// Cost: reads all manifests, about 5 microseconds per class. Looking up a class takes a time that is logarithmic in
/// the number of classes, and a lock that is held for a few instructions.
ZRHOST_API ZRRESULT ZrHostCreateFolderDiscovery(const WCHAR* const* folders, uint32_t folderCount,
                                                const WCHAR* configurationFile, uint32_t flags,
                                                IZrComponentDiscovery** discovery) ZR_NOEXCEPT;

/// ZrHostRefresh reads the same folders and files again. It evaluates neither ZRCORE_MODULE_PATH nor the current folder
/// again.
///
/// From then on, lookups use the new state; other threads use the old one until then. The library remembers the module
/// file of each class that it has looked up, until the discovery is removed. It remembers each class name with its
/// identifier until the process ends. It doesn't remember configurations: the next ZrQueryComponentConfiguration gives
/// the new values, also for a class in use. Lists and configurations that were given before stay valid and unchanged.
/// Only ZrAddComponentDiscovery reads the settings of the library itself.
///
/// @param discovery  made by ZrHostCreateFolderDiscovery.
/// @return
///   - ZR_R_OK                 the new state is in force, even if there are problems.
///   - ZR_R_INVALID_ARGUMENTS  `discovery` is null or made by something else.
///   - ZR_R_NO_MEMORY          out of memory. The old state remains.
///   - ZR_R_UNEXPECTED         the system failed in an unexpected way. The old state remains.
///
/// Threads that refresh one discovery wait for each other. Cost: as ZrHostCreateFolderDiscovery.
ZRHOST_API ZRRESULT ZrHostRefresh(IZrComponentDiscovery* discovery) ZR_NOEXCEPT;

// ---- Lists ---------------------------------------------------------------------------------------------------------
//
// A list is one memory block, which the caller releases with ZrHostDestroyList. The texts to which its records point
// are in the same block and must not be released on their own. Each text ends with a zero unit. No text is null; a text
// that is not known is empty. A list is a copy of the state at the time of the call. It stays valid when the discovery
// is refreshed or released.

/// ZrHostInterface is one interface that a class implements.
typedef struct ZrHostInterface {
  ZRUUID interfaceId;
  const WCHAR* name;  ///< empty if the manifest has no name for it
} ZrHostInterface;

ZR_STATIC_ASSERT(sizeof(ZrHostInterface) == 24 && offsetof(ZrHostInterface, interfaceId) == 0 &&
                     offsetof(ZrHostInterface, name) == 16,
                 "a record and a pointer");

/// ZrHostClass is one class of the discovery.
typedef struct ZrHostClass {
  ZRUUID classId;
  const WCHAR* name;                  ///< unique among the classes of the discovery
  const WCHAR* description;           ///< of the class, or of the module if the class has none
  const WCHAR* moduleFile;            ///< the absolute path of the module
  const WCHAR* manifestFile;          ///< the absolute path of the manifest
  const WCHAR* moduleVersion;         ///< of the module, as the manifest states it
  const ZrHostInterface* interfaces;  ///< `interfaceCount` records; null if `interfaceCount` is 0
  uint32_t interfaceCount;
  uint32_t reserved;  ///< 0
} ZrHostClass;

ZR_STATIC_ASSERT(sizeof(ZrHostClass) == 72 && offsetof(ZrHostClass, classId) == 0 &&
                     offsetof(ZrHostClass, name) == 16 && offsetof(ZrHostClass, description) == 24 &&
                     offsetof(ZrHostClass, moduleFile) == 32 && offsetof(ZrHostClass, manifestFile) == 40 &&
                     offsetof(ZrHostClass, moduleVersion) == 48 && offsetof(ZrHostClass, interfaces) == 56 &&
                     offsetof(ZrHostClass, interfaceCount) == 64 && offsetof(ZrHostClass, reserved) == 68,
                 "a ZrHostClass has no gaps");

/// ZrHostListClasses gives the classes of the discovery, sorted by name.
///
/// @param discovery  made by ZrHostCreateFolderDiscovery.
/// @param classes    gives a list of `*count` records, or null if `*count` is 0. Set to null on a failure.
/// @param count      receives the number of records. Set to 0 on a failure.
/// @return
///   - ZR_R_OK                 the list was made.
///   - ZR_R_INVALID_ARGUMENTS  an argument is null, or `discovery` was made by something else.
///   - ZR_R_NO_MEMORY          out of memory.
///
/// Cost: linear in the size of the list, which is one allocation.
ZRHOST_API ZRRESULT ZrHostListClasses(IZrComponentDiscovery* discovery, ZrHostClass** classes,
                                      uint32_t* count) ZR_NOEXCEPT;

#define ZRHOST_WARNING 1u  ///< a severity: everything in the file is in use except the part that the report names
#define ZRHOST_ERROR 2u    ///< a severity: the folder, the file, or the part of it that the report names is not in use

/// ZrHostProblem is one report.
typedef struct ZrHostProblem {
  const WCHAR* file;    ///< the absolute path of the folder, manifest or configuration file
  const WCHAR* reason;  ///< a sentence without a period, such as: the class "A" has no "id"
  uint32_t severity;    ///< ZRHOST_WARNING or ZRHOST_ERROR
  uint32_t line;        ///< from 1; 0 if the problem concerns the whole file
  uint32_t column;      ///< in bytes, from 1; 0 if the problem concerns the whole file
  uint32_t reserved;    ///< 0
} ZrHostProblem;

ZR_STATIC_ASSERT(sizeof(ZrHostProblem) == 32 && offsetof(ZrHostProblem, file) == 0 &&
                     offsetof(ZrHostProblem, reason) == 8 && offsetof(ZrHostProblem, severity) == 16 &&
                     offsetof(ZrHostProblem, line) == 20 && offsetof(ZrHostProblem, column) == 24 &&
                     offsetof(ZrHostProblem, reserved) == 28,
                 "a ZrHostProblem has no gaps");

/// ZrHostListProblems gives the problems of the last reading, in the order of folders, files and lines. Those of the
/// configuration file come last. At most 100 are of one file; the last of these says how many there are from its place
/// on. The arguments and results are those of ZrHostListClasses.
ZRHOST_API ZRRESULT ZrHostListProblems(IZrComponentDiscovery* discovery, ZrHostProblem** problems,
                                       uint32_t* count) ZR_NOEXCEPT;

/// ZrHostListFolders gives the absolute paths of the folders that the discovery reads, in their order, whether they
/// exist or not. The arguments and results are those of ZrHostListClasses.
ZRHOST_API ZRRESULT ZrHostListFolders(IZrComponentDiscovery* discovery, const WCHAR*** folders,
                                      uint32_t* count) ZR_NOEXCEPT;

/// ZrHostDestroyList releases a list of one of the functions above, with its texts. Null is allowed.
ZRHOST_API void ZrHostDestroyList(void* list) ZR_NOEXCEPT;

#endif
