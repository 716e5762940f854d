#include "hostkit/setting.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

struct NamedType {
  std::string_view name;
  uint16_t type;
};

// The types that a text or a number can be converted to, under their names without "ZR_VT_".
static constexpr std::array<NamedType, 19> kTypes = {{
    {"BOOL", ZR_VT_BOOL},
    {"I1", ZR_VT_I1},
    {"I2", ZR_VT_I2},
    {"I4", ZR_VT_I4},
    {"I8", ZR_VT_I8},
    {"UI1", ZR_VT_UI1},
    {"UI2", ZR_VT_UI2},
    {"UI4", ZR_VT_UI4},
    {"UI8", ZR_VT_UI8},
    {"R4", ZR_VT_R4},
    {"R8", ZR_VT_R8},
    {"TIME", ZR_VT_TIME},
    {"DATETIME", ZR_VT_DATETIME},
    {"CY", ZR_VT_CY},
    {"CHAR32", ZR_VT_CHAR32},
    {"UUID", ZR_VT_UUID},
    {"STR", ZR_VT_STR},
    {"REF", ZR_VT_REF},
    {"SREF", ZR_VT_SREF},
}};

// The name of a type in the table, as every setting has one.
static std::string NameOfType(uint16_t type) {
  const auto* const row =
      std::find_if(kTypes.begin(), kTypes.end(), [&](const NamedType& named) { return named.type == type; });
  return "ZR_VT_" + std::string(row->name);
}

static zr::Variant VariantOfInteger(uint64_t number) {
  if (number <= uint64_t{std::numeric_limits<int32_t>::max()}) return static_cast<int32_t>(number);
  if (number <= uint64_t{std::numeric_limits<int64_t>::max()}) return static_cast<int64_t>(number);
  return number;
}

static zr::Variant VariantOfNegative(int64_t number) {
  if (number >= std::numeric_limits<int32_t>::min()) return static_cast<int32_t>(number);
  return number;
}

// Makes a variant of the type that the JSON value is written in.
static bool MakeVariant(CJsonReader& reader, const JsonValue& json, const Subject& what, zr::Variant& variant) {
  switch (json.KindOf()) {
    case JsonValue::Kind::Boolean:
      variant = json.Boolean();
      return true;
    case JsonValue::Kind::Integer:
      variant = VariantOfNegative(json.Integer());
      return true;
    case JsonValue::Kind::Unsigned:
      variant = VariantOfInteger(json.Unsigned());
      return true;
    case JsonValue::Kind::Real:
      variant = json.Real();
      return true;
    case JsonValue::Kind::Text:
      variant = TextOf(json.Text());
      return true;
    case JsonValue::Kind::Null:
    case JsonValue::Kind::List:
    case JsonValue::Kind::Object:
      break;
  }
  reader.Error(json.place,
               what.Text() + " must be a boolean, a number, a text, or an object with \"type\" and \"value\"");
  return false;
}

bool ChangeType(CJsonReader& reader, Setting& setting, uint16_t type) {
  if (setting.value.Type() == type) return true;
  const zr::Result<void> changed = setting.value.ChangeType(type);
  if (changed) return true;
  reader.Error(setting.place, "the value " + Quoted(setting.name) + " does not convert to " + NameOfType(type) + ": " +
                                  zr::Error(changed.Code()).what());
  return false;
}

// Reads {"type": ..., "value": ...}.
static bool ReadTyped(CJsonReader& reader, const JsonValue& object, const Subject& what, Setting& setting) {
  const JsonValue* const type = reader.Required(object, "type", JsonValue::Kind::Text, what);
  const JsonValue* const value = object.Find("value");
  if (type == nullptr) return false;
  if (value == nullptr) {
    reader.Error(object.place, what.Text() + " has no \"value\"");
    return false;
  }
  reader.WarnOfOthers(object, {"type", "value"}, what);
  const auto* const row =
      std::find_if(kTypes.begin(), kTypes.end(), [&](const NamedType& named) { return named.name == type->Text(); });
  if (row == kTypes.end()) {
    reader.Error(type->place, what.Text() + " has an unknown type " + Quoted(type->Text()));
    return false;
  }
  return MakeVariant(reader, *value, what, setting.value) && ChangeType(reader, setting, row->type);
}

std::vector<Setting> ReadSettings(CJsonReader& reader, const JsonValue& object, const Subject& what) {
  std::vector<Setting> settings;
  for (const JsonMember& member : object.Members()) {
    const Subject value = {"the value", member.key, &what};
    Setting setting{TextOf(member.key), member.value.place, {}};
    const bool isRead = member.value.KindOf() == JsonValue::Kind::Object
                            ? ReadTyped(reader, member.value, value, setting)
                            : MakeVariant(reader, member.value, value, setting.value);
    if (isRead) settings.push_back(std::move(setting));
  }
  return settings;
}

void Override(CJsonReader& reader, std::vector<Setting>& settings, std::vector<Setting> replacing) {
  std::map<zr::StringView, Setting*> old;
  for (Setting& setting : settings) old.emplace(setting.name.View(), &setting);
  std::vector<Setting> added;
  for (Setting& setting : replacing) {
    const auto found = old.find(setting.name.View());
    if (found == old.end()) {
      added.push_back(std::move(setting));
    } else if (ChangeType(reader, setting, found->second->value.Type())) {
      found->second->place = setting.place;
      found->second->value = std::move(setting.value);
    }
  }
  std::move(added.begin(), added.end(), std::back_inserter(settings));
}
