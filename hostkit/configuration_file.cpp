#include "hostkit/configuration_file.h"

#include <algorithm>
#include <array>
#include <optional>

#include "hostkit/json_reader.h"

struct LibrarySetting {
  const char* name;
  uint16_t type;
};

// What the library reads (zrcore/configuration.h). A setting of another type would count as absent there.
static constexpr std::array<LibrarySetting, 3> kLibrarySettings = {
    {{"EnableAllocator", ZR_VT_BOOL}, {"ZR_VT_REF", ZR_VT_UI4}, {"ZR_VT_SREF", ZR_VT_UI4}}};

static std::vector<Setting> ReadLibrarySettings(CJsonReader& reader, const JsonValue& object) {
  std::vector<Setting> valid;
  for (Setting& setting : ReadSettings(reader, object, "\"library\"")) {
    const auto* const known = std::find_if(kLibrarySettings.begin(), kLibrarySettings.end(),
                                           [&](const LibrarySetting& row) { return row.name == setting.name; });
    if (known == kLibrarySettings.end()) {
      reader.Warn(setting.place, "the library has no setting " + Quoted(setting.name));
    } else if (ChangeType(reader, setting, known->type)) {
      valid.push_back(std::move(setting));
    }
  }
  return valid;
}

void ReadConfigurationFile(const std::filesystem::path& file,
                           const std::map<std::string, Configurations*, std::less<>>& configurationsOf,
                           std::vector<Setting>& library, CProblems& problems) {
  const std::optional<JsonValue> root = ReadJsonFile(file, problems);
  CJsonReader reader(file, problems);
  if (!root || !reader.HasSchema(*root)) return;
  reader.WarnOfOthers(*root, {"schema", "library", "classes"}, "the configuration file");
  if (const JsonValue* const settings = reader.Optional(*root, "library", JsonValue::Kind::Object)) {
    library = ReadLibrarySettings(reader, *settings);
  }
  const JsonValue* const classes = reader.Optional(*root, "classes", JsonValue::Kind::Object);
  if (classes == nullptr) return;
  for (const JsonMember& member : classes->members) {
    const std::string what = "the class " + Quoted(member.key);
    const auto found = configurationsOf.find(member.key);
    if (found == configurationsOf.end()) {
      reader.Warn(member.keyPlace, what + " is not in any manifest");
      continue;
    }
    if (!reader.Has(member.value, JsonValue::Kind::Object, what)) continue;
    for (const JsonMember& configuration : member.value.members) {
      Override(reader, (*found->second)[configuration.key],
               ReadSettings(reader, configuration.value,
                            "the configuration " + Quoted(configuration.key) + " of " + what));
    }
  }
}
