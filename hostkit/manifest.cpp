#include "hostkit/manifest.h"

#include <system_error>

#include "hostkit/json_reader.h"
#include "hostkit/module_path.h"

static std::vector<ManifestInterface> ReadInterfaces(CJsonReader& reader, const JsonValue& object,
                                                     const std::string& what) {
  std::vector<ManifestInterface> interfaces;
  const JsonValue* const list = reader.Optional(object, "interfaces", JsonValue::Kind::List);
  if (list == nullptr) return interfaces;
  for (const JsonValue& item : list->items) {
    const std::string name = "an interface of " + what;
    if (!reader.Has(item, JsonValue::Kind::Object, name)) continue;
    reader.WarnOfOthers(item, {"id", "name"}, name);
    ManifestInterface made{{}, reader.OptionalText(item, "name")};
    const JsonValue* const id = reader.Required(item, "id", JsonValue::Kind::Text, name);
    if (id != nullptr && reader.ReadId(*id, "the \"id\" of " + name, made.id)) interfaces.push_back(std::move(made));
  }
  return interfaces;
}

static std::optional<ManifestClass> ReadClass(CJsonReader& reader, const JsonValue& object) {
  if (!reader.Has(object, JsonValue::Kind::Object, "a class")) return std::nullopt;
  const JsonValue* const name = reader.Required(object, "name", JsonValue::Kind::Text, "a class");
  if (name == nullptr) return std::nullopt;
  const std::string what = "the class " + Quoted(name->text);
  if (name->text.empty()) {
    reader.Error(*name, "a class has an empty \"name\"");
    return std::nullopt;
  }
  reader.WarnOfOthers(object, {"name", "id", "description", "interfaces", "configurations"}, what);
  ManifestClass made;
  made.name = name->text;
  made.place = object.place;
  const JsonValue* const id = reader.Required(object, "id", JsonValue::Kind::Text, what);
  if (id == nullptr || !reader.ReadId(*id, "the \"id\" of " + what, made.id)) return std::nullopt;
  made.description = reader.OptionalText(object, "description");
  made.interfaces = ReadInterfaces(reader, object, what);
  if (const JsonValue* const all = reader.Optional(object, "configurations", JsonValue::Kind::Object)) {
    for (const JsonMember& member : all->members) {
      made.configurations[member.key] =
          ReadSettings(reader, member.value, "the configuration " + Quoted(member.key) + " of " + what);
    }
  }
  return made;
}

std::optional<Manifest> ReadManifest(const std::filesystem::path& file, bool isOutsideAllowed, CProblems& problems) {
  const std::optional<JsonValue> root = ReadJsonFile(file, problems);
  CJsonReader reader(file, problems);
  if (!root || !reader.HasSchema(*root)) return std::nullopt;
  reader.WarnOfOthers(*root, {"schema", "module", "version", "description", "classes"}, "the manifest");
  const JsonValue* const module = reader.Required(*root, "module", JsonValue::Kind::Text, "the manifest");
  const JsonValue* const classes = reader.Required(*root, "classes", JsonValue::Kind::List, "the manifest");
  if (module == nullptr || classes == nullptr) return std::nullopt;

  Manifest manifest;
  manifest.file = file;
  std::string reason;
  if (!FindModuleFile(file, module->text, isOutsideAllowed, manifest.module, reason)) {
    reader.Error(*module, std::move(reason));
    return std::nullopt;
  }
  manifest.version = reader.OptionalText(*root, "version");
  manifest.description = reader.OptionalText(*root, "description");
  for (const JsonValue& item : classes->items) {
    if (std::optional<ManifestClass> made = ReadClass(reader, item)) manifest.classes.push_back(std::move(*made));
  }
  return manifest;
}
