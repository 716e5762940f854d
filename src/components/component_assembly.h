// An assembly: the unit of code that holds component classes. A module file, loaded when an object is first wanted, or
// three functions that a discovery handed over.
//
//     state      module       functions               started
//     new        none         none, or handed over    no
//     loaded     set          set                     no
//     running    as before    set                     yes: ZrInitModule has been called
//     stopped    as before    set                     no: ZrExitModule has been called, the next creation starts it
//     unloaded   none         none, or handed over    no; or yes after a refused start, which is not tried again
//
// Objects are made without the management lock, so creations meet one another and the steps that end an assembly:
//   1. startMutex_ is held while ZrInitModule runs, so all first creations wait for the one start. It is never taken
//      under the management lock.
//   2. stateMutex_ guards what the two sides share. It is a leaf: no foreign code runs and no lock is taken under it.
//   3. ZrExitModule may call back and end the assembly that it belongs to. The unload step then clears the handle and
//      the entry points at once, so that a creation in the same call loads and starts the module anew. Only the release
//      of the handle waits until ZrExitModule has returned, because its code must stay mapped until then.
//   4. A module whose functions are being called may be unloaded by the removal of its discovery. That is the host's
//      responsibility, and no lock here could take it over: objects outlive calls.

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
  virtual ~CComponentAssembly();  // unloads, but does not call ZrExitModule

  const CAssemblyKey& Key() const noexcept { return key_; }

  // Makes an object: loads and starts the code if need be, and records the class. Answers ZrCreateInstanceModule's own
  // result, or why it wasn't called.
  [[nodiscard]] ZRRESULT CreateInstance(const ZRUUID& classId, uint64_t argument1, const ZRUUID& interfaceId,
                                        uint64_t argument2, void** object) noexcept;

  // Calls ZrExitModule if the assembly is started, which it then no longer is. Under the management lock.
  void Exit();

  // Releases the module, at once or when its ZrExitModule has returned. Functions that came from it are forgotten,
  // handed-over ones kept.
  void Unload() noexcept;

  // Strikes a class off the record; without any class left, exits and unloads. Under the management lock.
  void Forget(const ZRUUID& classId);

 private:
  using ClassMap =
      std::map<ZRUUID, ZRUUID, CByteWiseLess>;  // Fixed by contract: a set as a map, each value is its key.

  // What a creation needs to know of the shared state, as of one moment.
  struct Snapshot {
    ZrCreateInstanceModuleFunction createInstance;
    uint32_t forgotten;
    bool isRecorded;
  };

  ZRRESULT LoadAndCreate(const ZRUUID& classId, uint64_t argument1, const ZRUUID& interfaceId, uint64_t argument2,
                         void** object);
  Snapshot Look(const ZRUUID& classId);
  ZRRESULT Load();
  ZRRESULT Start();

  // Forgets the module and the functions that came from it. Returns the handle that the caller has to release, under no
  // lock. Returns null if no module was loaded, or if a call of ZrExitModule still needs the module: it is released
  // when that call has returned.
  [[nodiscard]] ModuleHandle DetachModule() noexcept;

  // One call of ZrExitModule, for as long as it lasts.
  class CExitCall;

  std::atomic<bool> started_{false};        // true from the moment ZrInitModule is about to be called
  std::atomic<bool> startReturned_{false};  // and it has come back since: nobody needs to wait for startMutex_
  CMutex startMutex_;

  const CAssemblyKey key_;

  CMutex stateMutex_;
  ZrModuleEntryPoints entryPoints_ ZR_GUARDED_BY(stateMutex_);  // those in force
  ModuleHandle module_ ZR_GUARDED_BY(stateMutex_) = nullptr;
  CExitCall* innermostExit_ ZR_GUARDED_BY(stateMutex_) = nullptr;  // calls nest, on the thread with the management lock
  ClassMap classes_ ZR_GUARDED_BY(stateMutex_);                    // those of which at least one object was made
  std::atomic<uint32_t> forgotten_{0};  // counts the classes struck off; written under stateMutex_
};
