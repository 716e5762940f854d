// An assembly: the unit of code that contains component classes. It is a module file, which is loaded when the first
// object is created, or three functions that a discovery handed over.
//
//     state      module_      entryPoints_            started_
//     new        null         null, or handed over    false
//     loaded     set          set                     false
//     running    as before    set                     true: ZrInitModule has been called
//     stopped    as before    set                     false: ZrExitModule has been called
//     unloaded   null         null, or handed over    false; but true after a refused start
//
// The next creation starts a stopped module again. A refused start is not repeated: the next creation loads
// the module and uses it without a start.
//
// Functions that were handed over have no module: module_ is always null then.
//
// Objects are created without the management lock. So creations overlap with other creations and with the steps that
// stop and unload an assembly:
//   1. startMutex_ is held while ZrInitModule runs. All first creations wait there for the one start. The library never
//      locks it under the management lock.
//   2. stateMutex_ guards the state that creations share with stopping and unloading. It is a leaf: under it no
//      foreign code runs, and no other lock is taken.
//   3. ZrExitModule may make callbacks that unload its own assembly. The unload step clears the handle and the entry
//      points at once, so that a creation in the same callback loads and starts the module anew. But the handle is
//      released only after ZrExitModule has returned, because its code must stay mapped until then.
//   4. The removal of a discovery may unload a module while one of its functions runs in a creation. The host must
//      prevent this. A lock here could not prevent it, because objects outlive every call, and their code is in the
//      module.

#pragma once

#include <atomic>
#include <cstdint>
#include <map>

#include "components/assembly_key.h"
#include "identifiers/uuid.h"
#include "platform/module.h"
#include "runtime/lock.h"

class CComponentAssembly {
 public:
  explicit CComponentAssembly(const CAssemblyKey& key) : key_(key), entryPoints_(key.entryPoints) {}
  CComponentAssembly(const CComponentAssembly&) = delete;
  CComponentAssembly& operator=(const CComponentAssembly&) = delete;
  virtual ~CComponentAssembly();  // Fixed by contract: virtual. Unloads, but does not call ZrExitModule.

  const CAssemblyKey& Key() const noexcept { return key_; }

  // Creates an object: loads and starts the module if necessary, calls ZrCreateInstanceModule, and records the class.
  // Returns the result of ZrCreateInstanceModule, or a code that says why it was not called. Exceptions and out of
  // memory become ZR_R_UNEXPECTED.
  [[nodiscard]] ZRRESULT CreateInstance(const ZRUUID& classId, uint64_t argument1, const ZRUUID& interfaceId,
                                        uint64_t argument2, void** object) noexcept;

  // Calls ZrExitModule if started_ is true, and sets started_ to false before the call. Under the management lock. An
  // exception of ZrExitModule passes to the caller.
  void Exit();

  // Releases the module, at once or when its ZrExitModule has returned. Entry points of a module file are cleared;
  // functions that were handed over are kept.
  void Unload() noexcept;

  // Removes a class from the record. If no class is left, stops and unloads the module. Under the management lock. An
  // exception of ZrExitModule passes to the caller.
  void Forget(const ZRUUID& classId);

 private:
  using ClassMap =
      std::map<ZRUUID, ZRUUID, CByteWiseLess>;  // Fixed by contract: a set as a map, each value is its key.

  // The part of the shared state that a creation needs, as of one moment.
  struct Snapshot {
    ZrCreateInstanceModuleFunction createInstance;  // null: not loaded, or not handed over
    uint32_t forgotten;                             // value of forgotten_
    bool isRecorded;                                // the class is in classes_
  };

  ZRRESULT LoadAndCreate(const ZRUUID& classId, uint64_t argument1, const ZRUUID& interfaceId, uint64_t argument2,
                         void** object);
  Snapshot TakeSnapshot(const ZRUUID& classId);
  ZRRESULT Load();
  ZRRESULT Start();

  // Clears module_ and the entry points of a module file. Returns the handle, which the caller must release without
  // holding stateMutex_ or startMutex_, because module code runs then. Returns null if no module was loaded, or if a
  // call of ZrExitModule still needs the module: then that call releases it when it has returned.
  [[nodiscard]] ModuleHandle DetachModule() noexcept;

  // Exists while one call of ZrExitModule runs.
  class CExitCall;

  std::atomic<bool> started_{false};        // becomes true directly before ZrInitModule is called
  std::atomic<bool> startReturned_{false};  // the start has succeeded: creations need not wait for startMutex_
  CMutex startMutex_;

  const CAssemblyKey key_;

  CMutex stateMutex_;
  ZrModuleEntryPoints entryPoints_ ZR_GUARDED_BY(stateMutex_);  // the functions in force
  ModuleHandle module_ ZR_GUARDED_BY(stateMutex_) = nullptr;
  CExitCall* innermostExit_ ZR_GUARDED_BY(stateMutex_) = nullptr;  // calls nest, all under the management lock
  ClassMap classes_ ZR_GUARDED_BY(stateMutex_);                    // classes of which an object was made
  std::atomic<uint32_t> forgotten_{0};  // number of calls of Forget, modulo 2^32; written under stateMutex_
};
