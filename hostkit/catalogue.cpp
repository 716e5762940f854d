#include "hostkit/catalogue.h"

#include <algorithm>
#include <cstring>
#include <system_error>
#include <utility>

#include "hostkit/configuration_file.h"
#include "hostkit/module_path.h"
#include "hostkit/system.h"

static zr::Ptr<zr::ConfigurationTable> TableOf(std::vector<Setting>& settings) {
  std::vector<zr::ConfigurationTable::Row> rows;
  rows.reserve(settings.size());
  for (Setting& setting : settings) rows.push_back({std::move(setting.name), std::move(setting.value)});
  return zr::MakeObject<zr::ConfigurationTable>(zr::ConfigurationTable::Rows(rows.data(), rows.size()));
}

// Four units at a time: names of a project begin alike, and the standard library compares unit by unit.
bool CCatalogue::ByUnits::operator()(zr::StringView left, zr::StringView right) const noexcept {
  const std::size_t common = std::min(left.size(), right.size());
  std::size_t at = 0;
  for (; at + 4 <= common; at += 4) {
    if (std::memcmp(left.data() + at, right.data() + at, 4 * sizeof(WCHAR)) != 0) break;  // compiles to one comparison
  }
  while (at < common && left[at] == right[at]) ++at;
  return at < common ? left[at] < right[at] : left.size() < right.size();
}

CCatalogue::CCatalogue(const Sources& sources) {
  for (const std::filesystem::path& folder : sources.folders) ReadFolder(folder, sources);
  ReadConfigurations(sources);
}

void CCatalogue::ReadFolder(const std::filesystem::path& folder, const Sources& sources) {
  std::error_code error;
  const std::filesystem::path realFolder = RealPath(folder, error);
  if (!error && !realFolders_.insert(realFolder).second) return;  // named twice
  if (error == std::errc::no_such_file_or_directory && sources.isFolderOptional) return;
  std::vector<std::filesystem::path> names;
  if (!error) names = NamesIn(folder, error);
  if (error) problems_.AddError(TextOfPath(folder), {}, "can't read the folder: " + error.message());
  std::sort(names.begin(), names.end(),
            [](const auto& left, const auto& right) { return left.native() < right.native(); });
  for (const std::filesystem::path& name : names) {
    if (name.extension() != kManifestSuffix) continue;
    const std::filesystem::path file = folder / name;
    const std::size_t firstProblem = problems_.Rows().size();
    if (!HasText(file)) {
      problems_.AddError(TextOfPath(file), {}, "the path is not UTF-8");
    } else if (auto manifest = ReadManifest(file, sources.isOutsideAllowed ? "" : realFolder, problems_)) {
      AddManifest(std::move(*manifest));
    }
    problems_.EndFile(firstProblem);
  }
}

// Adds the classes of a manifest, except those whose name or identifier is known.
void CCatalogue::AddManifest(Manifest manifest) {
  const Manifest& kept = manifests_.emplace_back(std::move(manifest));
  for (ManifestClass& entry : std::exchange(manifests_.back().classes, {})) {
    CatalogueClass& added = classes_.emplace_back(CatalogueClass{std::move(entry), &kept, {}});
    const auto [named, isNewName] = byName_.try_emplace(added.entry.name.View(), &added);
    const auto [known, isNewId] = isNewName ? byId_.try_emplace(added.entry.id, &added) : std::pair(byId_.end(), false);
    if (isNewId) continue;
    const CatalogueClass& first = isNewName ? *known->second : *named->second;
    problems_.AddError(kept.file, added.entry.place,
                       "the class " + Quoted(added.entry.name) + " is not used, because the class " +
                           Quoted(first.entry.name) + " of " + Quoted(first.manifest->file) + " has the same " +
                           (isNewName ? "\"id\"" : "name"));
    if (isNewName) byName_.erase(named);
    classes_.pop_back();
  }
}

void CCatalogue::ReadConfigurations(const Sources& sources) {
  if (sources.configurationFile) {
    const std::size_t firstProblem = problems_.Rows().size();
    const auto find = [&](const zr::String& name) {
      const auto found = byName_.find(name.View());
      return found != byName_.end() ? &found->second->entry.configurations : nullptr;
    };
    std::vector<Setting> library = ReadConfigurationFile(*sources.configurationFile, find, problems_);
    if (!library.empty()) library_ = TableOf(library);
    problems_.EndFile(firstProblem);
  }
  for (CatalogueClass& row : classes_) {
    for (auto& [name, settings] : row.entry.configurations) row.configurations.emplace(name, TableOf(settings));
    row.entry.configurations.clear();
  }
}

const CatalogueClass* CCatalogue::Find(const zr::Uuid& id) const noexcept {
  const auto found = byId_.find(id);
  return found != byId_.end() ? found->second : nullptr;
}

const CatalogueClass* CCatalogue::Find(zr::StringView name) const noexcept {
  const auto found = byName_.find(name);
  return found != byName_.end() ? found->second : nullptr;
}

std::vector<const CatalogueClass*> CCatalogue::Classes() const {
  std::vector<const CatalogueClass*> classes;
  classes.reserve(byName_.size());
  for (const auto& [name, row] : byName_) classes.push_back(row);
  return classes;
}
