// The host kit in C++ (zrhost/host.h): a discovery that finds modules by their manifests, and what it has found.
//
//     const zr::Library library;
//     const auto discovery = zr::MakeFolderDiscovery({u"./modules"}).Value();
//     const zr::Registration registration(discovery);
//     const auto mars = zr::CreateByName<IPlanet>(u"Planets.Mars").Value();
//
//     const auto problems = zr::ListHostProblems(*discovery).Value();
//     for (const ZrHostProblem& problem : problems) Show(problem.file, problem.reason);
//
// Include zr/zr.hpp too: this header defines neither Library nor Registration. A text of a record becomes UTF-8 with
// zr::String(problem.reason).ToUtf8(). zr.hpp doesn't include this header, because its functions are in the library
// libzrhost: link ZrCore::zrhost in CMake, or the package zrhost of pkg-config. zrhost/host.h is the reference.

#ifndef ZR_HOST_HPP
#define ZR_HOST_HPP

#include <cstddef>
#include <cstdint>
#include <utility>

#include "zr/object.hpp"
#include "zr/ptr.hpp"
#include "zr/result.hpp"
#include "zr/string.hpp"
#include "zrhost/host.h"

namespace zr {

/// MakeFolderDiscovery makes a discovery of the modules in folders.
///
/// @param folders            the folders to search, such as {u"./modules"}; for a std::vector<zr::String>,
///                           {vector.data(), vector.size()}. If the list is empty, those of the environment variable
///                           ZRCORE_MODULE_PATH; without it, the module folder of the installation.
/// @param configurationFile  the host's configuration file; an empty string for none.
/// @param flags              0 or ZRHOST_ALLOW_OUTSIDE.
/// @return a discovery, even if the folders have problems; or a failure of ZrHostCreateFolderDiscovery.
///         ZR_R_INVALID_ARGUMENTS also if a folder is an empty string.
///
/// Any thread, any time.
inline Result<Ptr<IZrComponentDiscovery>> MakeFolderDiscovery(const Rows<String>& folders = {},
                                                              const String& configurationFile = {},
                                                              uint32_t flags = 0) {
  static_assert(sizeof(String) == sizeof(const WCHAR*), "a list of strings is a list of pointers");
  Ptr<IZrComponentDiscovery> discovery;
  const auto* const paths = reinterpret_cast<const WCHAR* const*>(folders.begin());
  const ZRRESULT result = ZrHostCreateFolderDiscovery(paths, static_cast<uint32_t>(folders.size()),
                                                      configurationFile.Get(), flags, discovery.Put());
  if (Failed(result)) return Failure{result};
  return discovery;
}

/// HostList owns a list of the host kit. The texts to which its records point are part of the list.
template <class Record>
class HostList {
 public:
  HostList() noexcept = default;
  /// Takes a list that a function of zrhost/host.h gave.
  HostList(Record* records, uint32_t count) noexcept : records_(records), count_(count) {}
  HostList(HostList&& other) noexcept
      : records_(std::exchange(other.records_, nullptr)), count_(std::exchange(other.count_, 0)) {}
  HostList& operator=(HostList other) noexcept {
    std::swap(records_, other.records_);
    std::swap(count_, other.count_);
    return *this;
  }
  ~HostList() { ZrHostDestroyList(records_); }

  /// The records, which lie next to each other.
  [[nodiscard]] const Record* begin() const noexcept { return records_; }
  [[nodiscard]] const Record* end() const noexcept { return records_ + count_; }
  [[nodiscard]] std::size_t size() const noexcept { return count_; }

 private:
  Record* records_ = nullptr;
  uint32_t count_ = 0;
};

namespace detail {

template <class Record>
Result<HostList<Record>> ListOfHost(ZRRESULT (*list)(IZrComponentDiscovery*, Record**, uint32_t*),
                                    IZrComponentDiscovery& discovery) noexcept {
  Record* records = nullptr;
  uint32_t count = 0;
  if (const ZRRESULT result = list(&discovery, &records, &count); Failed(result)) return Failure{result};
  return HostList<Record>(records, count);
}

}  // namespace detail

/// ListHostClasses returns the classes of a folder discovery, sorted by name. The failures are those of
/// ZrHostListClasses.
inline Result<HostList<ZrHostClass>> ListHostClasses(IZrComponentDiscovery& discovery) noexcept {
  return detail::ListOfHost(ZrHostListClasses, discovery);
}

/// ListHostProblems returns what was wrong with folders and files at the last reading. The failures are those of
/// ZrHostListProblems.
inline Result<HostList<ZrHostProblem>> ListHostProblems(IZrComponentDiscovery& discovery) noexcept {
  return detail::ListOfHost(ZrHostListProblems, discovery);
}

/// ListHostFolders returns the absolute paths of the folders that a folder discovery reads. The failures are those of
/// ZrHostListFolders.
inline Result<HostList<const WCHAR*>> ListHostFolders(IZrComponentDiscovery& discovery) noexcept {
  return detail::ListOfHost(ZrHostListFolders, discovery);
}

}  // namespace zr

#endif
