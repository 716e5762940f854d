#include "hostkit/configuration_file.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "hostkit/json_reader.h"
#include "hostkit/system.h"

struct LibrarySetting {
  std::string_view name;
  uint16_t type;
};

// What the library reads (zrcore/configuration.h).
static constexpr std::array<LibrarySetting, 3> kLibrarySettings = {
    {{"EnableAllocator", ZR_VT_BOOL}, {"ZR_VT_REF", ZR_VT_UI4}, {"ZR_VT_SREF", ZR_VT_UI4}}};

static std::vector<Setting> ReadLibrarySettings(CJsonReader& reader, const JsonValue& object) {
  std::vector<Setting> valid;
  for (Setting& setting : ReadSettings(reader, object, {"the library"})) {
    const auto* const known = std::find_if(kLibrarySettings.begin(), kLibrarySettings.end(),
                                           [&](const LibrarySetting& row) { return TextOf(row.name) == setting.name; });
    if (known == kLibrarySettings.end()) {
      reader.Warn(setting.place, "the library has no setting " + Quoted(setting.name));
    } else if (ChangeType(reader, setting, known->type)) {
      valid.push_back(std::move(setting));
    }
  }
  return valid;
}

static void ReadClassConfigurations(CJsonReader& reader, const JsonMember& member, const FindConfigurations& find) {
  const Subject what = {"the class", member.key};
  Configurations* const configurations = find(TextOf(member.key));
  if (configurations == nullptr) {
    reader.Warn(member.keyPlace, what.Text() + " is not in any manifest");
  } else if (reader.Has(member.value, JsonValue::Kind::Object, what)) {
    for (const JsonMember& configuration : member.value.Members()) {
      const Subject each = {"the configuration", configuration.key, &what};
      if (!reader.Has(configuration.value, JsonValue::Kind::Object, each)) continue;
      Override(reader, (*configurations)[TextOf(configuration.key)], ReadSettings(reader, configuration.value, each));
    }
  }
}

std::vector<Setting> ReadConfigurationFile(const std::filesystem::path& file, const FindConfigurations& find,
                                           CProblems& problems) {
  std::vector<Setting> library;
  const zr::String name = TextOfPath(file);
  const std::optional<JsonValue> root = ReadJsonFile(file, name, problems);
  CJsonReader reader(name, problems);
  const Subject what = {"the configuration file"};
  if (!root || !reader.HasSchema(*root, what)) return library;
  reader.WarnOfOthers(*root, {"$schema", "schema", "library", "classes"}, what);
  if (const JsonValue* const settings = reader.Optional(*root, "library", JsonValue::Kind::Object)) {
    library = ReadLibrarySettings(reader, *settings);
  }
  if (const JsonValue* const classes = reader.Optional(*root, "classes", JsonValue::Kind::Object)) {
    for (const JsonMember& member : classes->Members()) ReadClassConfigurations(reader, member, find);
  }
  return library;
}
