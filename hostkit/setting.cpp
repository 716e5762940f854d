#include "hostkit/setting.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

struct NamedType {
  std::string_view name;
  uint16_t type;
};

// The types that a text or a number can be converted to, under their names without "ZR_VT_".
static constexpr std::array<NamedType, 19> kTypes = {{
    {"BOOL", ZR_VT_BOOL}, {"I1", ZR_VT_I1},     {"I2", ZR_VT_I2},       {"I4", ZR_VT_I4},
    {"I8", ZR_VT_I8},     {"UI1", ZR_VT_UI1},   {"UI2", ZR_VT_UI2},     {"UI4", ZR_VT_UI4},
    {"UI8", ZR_VT_UI8},   {"R4", ZR_VT_R4},     {"R8", ZR_VT_R8},       {"TIME", ZR_VT_TIME},
    {"DATETIME", ZR_VT_DATETIME},               {"CY", ZR_VT_CY},       {"CHAR32", ZR_VT_CHAR32},
    {"UUID", ZR_VT_UUID}, {"STR", ZR_VT_STR},   {"REF", ZR_VT_REF},     {"SREF", ZR_VT_SREF},
}};

static std::string NameOfType(uint16_t type) {
  const auto* const row =
      std::find_if(kTypes.begin(), kTypes.end(), [&](const NamedType& named) { return named.type == type; });
  return row != kTypes.end() ? "ZR_VT_" + std::string(row->name) : std::to_string(type);
}

// Makes a variant of the type that the JSON value has by itself.
static bool MakeVariant(CJsonReader& reader, const JsonValue& json, const std::string& what, zr::Variant& variant) {
  switch (json.kind) {
    case JsonValue::Kind::Boolean: variant = zr::Variant(json.boolean); return true;
    case JsonValue::Kind::Integer:
      variant = json.integer >= std::numeric_limits<int32_t>::min() ? zr::Variant(static_cast<int32_t>(json.integer))
                                                                    : zr::Variant(json.integer);
      return true;
    case JsonValue::Kind::Unsigned:
      if (json.unsignedInteger <= uint64_t{std::numeric_limits<int32_t>::max()}) {
        variant = zr::Variant(static_cast<int32_t>(json.unsignedInteger));
      } else if (json.unsignedInteger <= uint64_t{std::numeric_limits<int64_t>::max()}) {
        variant = zr::Variant(static_cast<int64_t>(json.unsignedInteger));
      } else {
        variant = zr::Variant(json.unsignedInteger);
      }
      return true;
    case JsonValue::Kind::Real: variant = zr::Variant(json.real); return true;
    case JsonValue::Kind::Text: variant = zr::Variant(zr::String::FromUtf8(json.text).Value()); return true;
    case JsonValue::Kind::Null:
    case JsonValue::Kind::List:
    case JsonValue::Kind::Object: break;
  }
  reader.Error(json, what + " must be a boolean, a number, a text, or an object with \"type\" and \"value\"");
  return false;
}

bool ChangeType(CJsonReader& reader, Setting& setting, uint16_t type) {
  if (setting.value.Type() == type) return true;
  const zr::Result<void> changed = setting.value.ChangeType(type);
  if (changed) return true;
  JsonValue place;
  place.place = setting.place;
  reader.Error(place, "the value " + Quoted(setting.name) + " does not convert to " + NameOfType(type) + ": " +
                          zr::Error(changed.Code()).what());
  return false;
}

// Reads {"type": ..., "value": ...}.
static bool ReadTyped(CJsonReader& reader, const JsonValue& object, const std::string& what, Setting& setting) {
  const JsonValue* const type = reader.Required(object, "type", JsonValue::Kind::Text, what);
  const JsonValue* const value = object.Find("value");
  if (type == nullptr) return false;
  if (value == nullptr) {
    reader.Error(object, what + " has no \"value\"");
    return false;
  }
  reader.WarnOfOthers(object, {"type", "value"}, what);
  const auto* const row =
      std::find_if(kTypes.begin(), kTypes.end(), [&](const NamedType& named) { return named.name == type->text; });
  if (row == kTypes.end()) {
    reader.Error(*type, what + " has an unknown type " + Quoted(type->text));
    return false;
  }
  return MakeVariant(reader, *value, what, setting.value) && ChangeType(reader, setting, row->type);
}

std::vector<Setting> ReadSettings(CJsonReader& reader, const JsonValue& object, const std::string& what) {
  std::vector<Setting> settings;
  if (!reader.Has(object, JsonValue::Kind::Object, what)) return settings;
  for (const JsonMember& member : object.members) {
    const std::string name = "the value " + Quoted(member.key);
    Setting setting{member.key, member.value.place, {}};
    const bool isRead = member.value.kind == JsonValue::Kind::Object
                            ? ReadTyped(reader, member.value, name, setting)
                            : MakeVariant(reader, member.value, name, setting.value);
    if (isRead) settings.push_back(std::move(setting));
  }
  return settings;
}

void Override(CJsonReader& reader, std::vector<Setting>& settings, std::vector<Setting> replacing) {
  for (Setting& setting : replacing) {
    const auto old =
        std::find_if(settings.begin(), settings.end(), [&](const Setting& row) { return row.name == setting.name; });
    if (old == settings.end()) {
      settings.push_back(std::move(setting));
    } else if (ChangeType(reader, setting, old->value.Type())) {
      *old = std::move(setting);
    }
  }
}
