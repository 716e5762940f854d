#include "hostkit/catalogue.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "hostkit/configuration_file.h"
#include "hostkit/module_path.h"

static zr::String TextOf(const std::string& utf8) { return zr::String::FromUtf8(utf8).Value(); }

static zr::Ptr<zr::ConfigurationTable> TableOf(std::vector<Setting>& settings) {
  std::vector<zr::ConfigurationTable::Row> rows;
  for (Setting& setting : settings) rows.push_back({TextOf(setting.name), std::move(setting.value)});
  return zr::MakeObject<zr::ConfigurationTable>(zr::ConfigurationTable::Rows(rows.data(), rows.size()));
}

CCatalogue::CCatalogue(const Sources& sources) {
  for (const std::filesystem::path& folder : sources.folders) ReadFolder(folder, sources.isOutsideAllowed);
  AddClasses();

  std::map<std::string, Configurations*, std::less<>> configurationsOf;
  std::map<const ManifestClass*, Configurations> configurations;
  for (const auto& [id, found] : byId_) {
    Configurations& own = configurations[found.entry] = found.entry->configurations;
    configurationsOf[found.entry->name] = &own;
  }
  std::vector<Setting> library;
  if (sources.configurationFile) {
    ReadConfigurationFile(*sources.configurationFile, configurationsOf, library, problems_);
  }
  if (!library.empty()) library_ = TableOf(library);
  for (auto& [id, found] : byId_) {
    for (auto& [name, settings] : configurations[found.entry]) found.configurations[TextOf(name)] = TableOf(settings);
  }
}

void CCatalogue::ReadFolder(const std::filesystem::path& folder, bool isOutsideAllowed) {
  std::error_code error;
  std::vector<std::filesystem::path> files;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    if (entry->path().extension() == kManifestSuffix) files.push_back(entry->path());
  }
  if (error) problems_.AddError(folder, {}, "can't read the folder: " + error.message());
  std::sort(files.begin(), files.end(),
            [](const auto& left, const auto& right) { return left.filename().u8string() < right.filename().u8string(); });
  for (const std::filesystem::path& file : files) {
    if (!IsText(file)) {
      problems_.AddError(file, {}, "the path is not UTF-8");
    } else if (std::optional<Manifest> manifest = ReadManifest(file, isOutsideAllowed, problems_)) {
      manifests_.push_back(std::move(*manifest));
    }
  }
}

// Adds the classes of all manifests. The first one of an identifier and of a name counts.
void CCatalogue::AddClasses() {
  for (const Manifest& manifest : manifests_) {
    const zr::String modulePath = TextOf(Utf8Of(manifest.module));
    for (const ManifestClass& entry : manifest.classes) {
      const zr::String name = TextOf(entry.name);
      const CatalogueClass* const sameName = Find(name);
      const CatalogueClass* const same = sameName != nullptr ? sameName : Find(entry.id);
      if (same != nullptr) {
        problems_.AddError(manifest.file, entry.place,
                           "the class " + Quoted(entry.name) + " is not used, because the class " +
                               Quoted(same->entry->name) + " of " + Quoted(Utf8Of(same->manifest->file)) +
                               (sameName != nullptr ? " has the same name" : " has the same \"id\""));
        continue;
      }
      const auto added = byId_.emplace(entry.id, CatalogueClass{entry.id, name, modulePath, {}, &manifest, &entry}).first;
      byName_.emplace(name, &added->second);
    }
  }
}

const CatalogueClass* CCatalogue::Find(const zr::Uuid& id) const noexcept {
  const auto found = byId_.find(id);
  return found != byId_.end() ? &found->second : nullptr;
}

const CatalogueClass* CCatalogue::Find(const zr::String& name) const noexcept {
  const auto found = byName_.find(name);
  return found != byName_.end() ? found->second : nullptr;
}

std::vector<const CatalogueClass*> CCatalogue::Classes() const {
  std::vector<const CatalogueClass*> classes;
  for (const auto& [name, found] : byName_) classes.push_back(found);
  return classes;
}
