// The discovery of the host kit and its lists, as owners and UTF-8.

#ifndef ZRMODULE_KIT_LIST_H
#define ZRMODULE_KIT_LIST_H

#include <string>
#include <vector>

#include "zr/library.hpp"
#include "zr/ptr.hpp"
#include "zr/string.hpp"
#include "zr/uuid.hpp"
#include "zrhost/host.h"
#include "zrmodule/output.h"

/// CKitList is one list of a discovery. Throws zr::Error if it can't be made.
template <class Record>
class CKitList {
 public:
  using ListFunction = ZRRESULT (*)(IZrComponentDiscovery*, Record**, uint32_t*);

  CKitList(IZrComponentDiscovery& discovery, ListFunction list) {
    const ZRRESULT result = list(&discovery, &records_, &count_);
    if (zr::Failed(result)) throw zr::Error(result);
  }
  CKitList(const CKitList&) = delete;
  CKitList& operator=(const CKitList&) = delete;
  ~CKitList() { ZrHostDestroyList(records_); }

  [[nodiscard]] const Record* begin() const noexcept { return records_; }
  [[nodiscard]] const Record* end() const noexcept { return records_ + count_; }
  [[nodiscard]] uint32_t Count() const noexcept { return count_; }

 private:
  Record* records_ = nullptr;
  uint32_t count_ = 0;
};

inline std::string Utf8(const WCHAR* text) { return zr::String(text).ToUtf8(); }

/// An identifier as manifests and zr::Uuid want it, without braces.
inline std::string Utf8(const ZRUUID& id) { return zr::Uuid(id).ToString().ToUtf8().substr(1, 36); }

/// MakeDiscovery makes a discovery of folders; of those where hosts look if the list is empty. Throws zr::Error, or
/// std::runtime_error for a path that is not UTF-8.
[[nodiscard]] zr::Ptr<IZrComponentDiscovery> MakeDiscovery(const std::vector<std::string>& folders,
                                                           const std::string& configurationFile = {});

/// Reports a problem of a discovery as a finding of the kind "manifest".
void ReportProblem(COutput& output, const ZrHostProblem& problem);

#endif
