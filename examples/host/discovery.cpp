// The host's discovery: serves the library's queries from a list of classes in memory.

#include "host/discovery.h"

#include "code_units.h"

void CTableDiscovery::Add(const ZRUUID& classId, ZRSTR className, ZRSTR modulePath) {
  entries_.push_back(Entry{classId, StringOwner(ZrCopyString(className)), StringOwner(ZrCopyString(modulePath))});
}

const CTableDiscovery::Entry* CTableDiscovery::Find(const ZRUUID* classId) const {
  for (const Entry& entry : entries_) {
    uint8_t isEqual = 0;
    if (ZR_SUCCEEDED(ZrCompareUUID(&entry.classId, classId, &isEqual)) && isEqual != 0) return &entry;
  }
  return nullptr;
}

uint32_t CTableDiscovery::AddRef() { return ZrInterlockedIncrementU32(&references_); }

uint32_t CTableDiscovery::Release() {
  const uint32_t left = ZrInterlockedDecrementU32(&references_);
  if (left == 0) delete this;
  return left;
}

ZRRESULT CTableDiscovery::QueryInterface(const ZRUUID*, void** object) {
  if (object != nullptr) *object = nullptr;
  return ZR_R_NO_INTERFACE;
}

ZRRESULT CTableDiscovery::QueryComponent(const ZRUUID* classId, ZRSTR* modulePath, ZrModuleEntryPoints*) {
  const Entry* entry = Find(classId);
  if (entry == nullptr) return ZR_R_UNKNOWN_IDENTIFIER;  // a failure makes the library ask the next discovery
  lastModulePath_ = entry->modulePath.get();
  *modulePath = ZrCopyString(lastModulePath_);
  return ZR_R_OK;
}

ZRRESULT CTableDiscovery::QueryConfiguration(const ZRUUID*, ZRSTR name, IZrConfiguration** configuration) {
  if (Units(name) != W("ZrCore")) return ZR_R_NOT_EXISTING;
  settings_->AddRef();
  *configuration = settings_;
  return ZR_R_OK;
}

ZRRESULT CTableDiscovery::QueryClassId(ZRSTR className, ZRUUID* classId) {
  for (const Entry& entry : entries_) {
    int32_t order = 0;
    if (ZR_FAILED(ZrCompareString(entry.className.get(), className, &order)) || order != 0) continue;
    *classId = entry.classId;
    return ZR_R_OK;
  }
  return ZR_R_NOT_EXISTING;
}

ZRRESULT CTableDiscovery::QueryClassName(const ZRUUID* classId, ZRSTR* className) {
  const Entry* entry = Find(classId);
  if (entry == nullptr) return ZR_R_NOT_EXISTING;
  // The library remembers class names until the process ends and never releases them. A deep copy keeps that reference
  // off the host's own string, whose references are counted at the end.
  *className = ZrDeepCopyString(entry->className.get());
  return *className == nullptr ? ZR_R_NO_MEMORY : ZR_R_OK;
}
