#include "hostkit/manifest.h"

#include <string>
#include <system_error>
#include <utility>

#include "hostkit/json_reader.h"
#include "hostkit/module_path.h"
#include "hostkit/system.h"

static std::vector<ManifestInterface> ReadInterfaces(CJsonReader& reader, const JsonValue& object,
                                                     const Subject& what) {
  std::vector<ManifestInterface> interfaces;
  const JsonValue* const list = reader.Optional(object, "interfaces", JsonValue::Kind::List);
  if (list == nullptr) return interfaces;
  const Subject each = {"an interface", {}, &what};
  for (const JsonValue& item : list->Items()) {
    if (!reader.Has(item, JsonValue::Kind::Object, each)) continue;
    reader.WarnOfOthers(item, {"id", "name"}, each);
    ManifestInterface made{{}, reader.OptionalText(item, "name")};
    if (reader.ReadId(item, each, made.id)) interfaces.push_back(std::move(made));
  }
  return interfaces;
}

static Configurations ReadConfigurations(CJsonReader& reader, const JsonValue& object, const Subject& what) {
  Configurations configurations;
  const JsonValue* const all = reader.Optional(object, "configurations", JsonValue::Kind::Object);
  if (all == nullptr) return configurations;
  for (const JsonMember& member : all->Members()) {
    const Subject each = {"the configuration", member.key, &what};
    if (!reader.Has(member.value, JsonValue::Kind::Object, each)) continue;
    configurations[TextOf(member.key)] = ReadSettings(reader, member.value, each);
  }
  return configurations;
}

static std::optional<ManifestClass> ReadClass(CJsonReader& reader, const JsonValue& object) {
  const Subject unnamed = {"a class"};
  if (!reader.Has(object, JsonValue::Kind::Object, unnamed)) return std::nullopt;
  const JsonValue* const name = reader.Required(object, "name", JsonValue::Kind::Text, unnamed);
  if (name == nullptr) return std::nullopt;
  if (name->Text().empty()) {
    reader.Error(name->place, "a class has an empty \"name\"");
    return std::nullopt;
  }
  const Subject what = {"the class", name->Text()};
  reader.WarnOfOthers(object, {"name", "id", "description", "interfaces", "configurations"}, what);
  ManifestClass made;
  if (!reader.ReadId(object, what, made.id)) return std::nullopt;
  made.name = TextOf(name->Text());
  made.place = object.place;
  made.description = reader.OptionalText(object, "description");
  made.interfaces = ReadInterfaces(reader, object, what);
  made.configurations = ReadConfigurations(reader, object, what);
  return made;
}

// Whether the manifest itself may be read: it must not be a link to a file outside its folder.
static bool IsInPlace(const std::filesystem::path& file, const zr::String& name,
                      const std::filesystem::path& realFolder, CProblems& problems) {
  std::error_code error;
  if (realFolder.empty() || IsWithin(file, realFolder, error)) return true;
  std::string reason = "the manifest is outside the folder, through a symbolic link";
  if (error) reason = "can't read the file: " + error.message();
  problems.AddError(name, {}, reason);
  return false;
}

std::optional<Manifest> ReadManifest(const std::filesystem::path& file, const std::filesystem::path& realFolder,
                                     CProblems& problems) {
  Manifest manifest;
  manifest.file = TextOfPath(file);
  if (!IsInPlace(file, manifest.file, realFolder, problems)) return std::nullopt;
  const std::optional<JsonValue> root = ReadJsonFile(file, manifest.file, problems);
  CJsonReader reader(manifest.file, problems);
  const Subject what = {"the manifest"};
  if (!root || !reader.HasSchema(*root, what)) return std::nullopt;
  reader.WarnOfOthers(*root, {"$schema", "schema", "module", "version", "description", "classes"}, what);
  const JsonValue* const module = reader.Required(*root, "module", JsonValue::Kind::Text, what);
  const JsonValue* const classes = reader.Required(*root, "classes", JsonValue::Kind::List, what);
  manifest.version = reader.OptionalText(*root, "version");
  const zr::String description = reader.OptionalText(*root, "description");
  if (module == nullptr || classes == nullptr) return std::nullopt;

  std::string reason;
  const std::optional<std::filesystem::path> found = FindModuleFile(file, realFolder, module->Text(), reason);
  if (!found) {
    reader.Error(module->place, reason);
    return std::nullopt;
  }
  manifest.module = TextOfPath(*found);
  for (const JsonValue& item : classes->Items()) {
    std::optional<ManifestClass> made = ReadClass(reader, item);
    if (!made) continue;
    if (made->description.IsEmpty()) made->description = description;
    manifest.classes.push_back(std::move(*made));
  }
  return manifest;
}
