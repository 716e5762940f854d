// The C boundary of the kit: checks arguments, and keeps exceptions inside.

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <utility>

#include "hostkit/folder_discovery.h"
#include "hostkit/list_block.h"
#include "hostkit/module_path.h"
#include "hostkit/system.h"
#include "zr/result.hpp"
#include "zrhost/host.h"

// Sets the folders that a caller names. Returns false if one of them is not a path.
static bool SetFolders(const WCHAR* const* folders, uint32_t folderCount, Sources& sources) {
  for (uint32_t index = 0; index < folderCount; ++index) {
    if (folders[index] == nullptr) return false;
    std::optional<std::filesystem::path> folder = AbsolutePathOf(folders[index]);
    if (!folder) return false;
    sources.folders.push_back(std::move(*folder));
  }
  return true;
}

static void SetDefaultFolders(Sources& sources) {
  for (const std::filesystem::path& folder : EnvironmentFolders()) {
    sources.folders.push_back(std::filesystem::absolute(folder));
  }
  if (!sources.folders.empty()) return;
  sources.folders = InstalledModuleFolders();
  sources.isFolderOptional = true;  // the first module that is installed makes it
}

ZRRESULT ZrHostCreateFolderDiscovery(const WCHAR* const* folders, uint32_t folderCount, const WCHAR* configurationFile,
                                     uint32_t flags, IZrComponentDiscovery** discovery) noexcept {
  if (discovery == nullptr) return ZR_R_INVALID_ARGUMENTS;
  *discovery = nullptr;
  if ((flags & ~ZRHOST_ALLOW_OUTSIDE) != 0 || (folders == nullptr && folderCount != 0)) return ZR_R_INVALID_ARGUMENTS;
  return zr::Guard([&]() -> ZRRESULT {
    Sources sources;
    sources.isOutsideAllowed = (flags & ZRHOST_ALLOW_OUTSIDE) != 0;
    if (!SetFolders(folders, folderCount, sources)) return ZR_R_INVALID_ARGUMENTS;
    if (folderCount == 0) SetDefaultFolders(sources);
    if (configurationFile != nullptr) {
      sources.configurationFile = AbsolutePathOf(configurationFile);
      if (!sources.configurationFile) return ZR_R_INVALID_ARGUMENTS;
    }
    *discovery = zr::MakeObject<CFolderDiscovery>(std::move(sources)).Detach();
    return ZR_R_OK;
  });
}

ZRRESULT ZrHostRefresh(IZrComponentDiscovery* discovery) noexcept {
  return zr::Guard([&]() -> ZRRESULT {
    CFolderDiscovery* const own = CFolderDiscovery::From(discovery);
    if (own == nullptr) return ZR_R_INVALID_ARGUMENTS;
    own->Refresh();
    return ZR_R_OK;
  });
}

// Makes a list of rows. write(block, row) returns the record of one row, and writes into the block what it points to.
template <class Record, class Rows, class Write>
static ZRRESULT List(Record** list, uint32_t* count, const Rows& rows, const Write& write) {
  const ZRRESULT result = CListBlock::MakeList(list, [&](CListBlock& block) {
    Record* const records = block.Reserve<Record>(rows.size());
    std::size_t index = 0;
    for (const auto& row : rows) CListBlock::Put<Record>(records, index++, write(block, row));
    return records;
  });
  if (!zr::Failed(result)) *count = static_cast<uint32_t>(rows.size());
  return result;
}

// Checks the arguments of a list function, and calls make(discovery).
template <class Record, class Make>
static ZRRESULT ListOf(IZrComponentDiscovery* discovery, Record** list, uint32_t* count, const Make& make) noexcept {
  if (list != nullptr) *list = nullptr;
  if (count != nullptr) *count = 0;
  if (list == nullptr || count == nullptr) return ZR_R_INVALID_ARGUMENTS;
  return zr::Guard([&]() -> ZRRESULT {
    CFolderDiscovery* const own = CFolderDiscovery::From(discovery);
    return own != nullptr ? make(*own) : ZR_R_INVALID_ARGUMENTS;
  });
}

static const ZrHostInterface* WriteInterfaces(CListBlock& block, const std::vector<ManifestInterface>& interfaces) {
  ZrHostInterface* const records = block.Reserve<ZrHostInterface>(interfaces.size());
  for (std::size_t index = 0; index < interfaces.size(); ++index) {
    CListBlock::Put(records, index, ZrHostInterface{interfaces[index].id, block.Text(interfaces[index].name)});
  }
  return records;
}

ZRRESULT ZrHostListClasses(IZrComponentDiscovery* discovery, ZrHostClass** classes, uint32_t* count) noexcept {
  return ListOf(discovery, classes, count, [&](const CFolderDiscovery& own) {
    const auto catalogue = own.Catalogue();
    return List(classes, count, catalogue->Classes(), [](CListBlock& block, const CatalogueClass* row) {
      ZrHostClass record = {};
      record.classId = row->entry.id;
      record.name = block.Text(row->entry.name);
      record.description = block.Text(row->entry.description);
      record.moduleFile = block.SharedText(row->manifest->module);
      record.manifestFile = block.SharedText(row->manifest->file);
      record.moduleVersion = block.SharedText(row->manifest->version);
      record.interfaces = WriteInterfaces(block, row->entry.interfaces);
      record.interfaceCount = static_cast<uint32_t>(row->entry.interfaces.size());
      return record;
    });
  });
}

ZRRESULT ZrHostListProblems(IZrComponentDiscovery* discovery, ZrHostProblem** problems, uint32_t* count) noexcept {
  return ListOf(discovery, problems, count, [&](const CFolderDiscovery& own) {
    const auto catalogue = own.Catalogue();
    return List(problems, count, catalogue->Problems(), [](CListBlock& block, const Problem& row) {
      ZrHostProblem record = {};
      record.file = block.SharedText(row.file);
      record.reason = block.Text(row.reason);
      record.severity = static_cast<uint32_t>(row.severity);
      record.line = row.place.line;
      record.column = row.place.column;
      return record;
    });
  });
}

ZRRESULT ZrHostListFolders(IZrComponentDiscovery* discovery, const WCHAR*** folders, uint32_t* count) noexcept {
  return ListOf(discovery, folders, count, [&](const CFolderDiscovery& own) {
    return List(folders, count, own.ReadFrom().folders,
                [](CListBlock& block, const std::filesystem::path& row) { return block.Text(TextOfPath(row)); });
  });
}

void ZrHostDestroyList(void* list) noexcept { std::free(list); }
