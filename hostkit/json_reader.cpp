#include "hostkit/json_reader.h"

#include <algorithm>

static constexpr uint64_t kSchema = 1;

bool CJsonReader::Has(const JsonValue& value, JsonValue::Kind kind, const std::string& what) {
  if (value.kind == kind) return true;
  Error(value, what + " must be " + NameOfKind(kind) + ", not " + NameOfKind(value.kind));
  return false;
}

const JsonValue* CJsonReader::Optional(const JsonValue& object, std::string_view key, JsonValue::Kind kind) {
  const JsonValue* const found = object.Find(key);
  return found != nullptr && Has(*found, kind, Quoted(std::string(key))) ? found : nullptr;
}

const JsonValue* CJsonReader::Required(const JsonValue& object, std::string_view key, JsonValue::Kind kind,
                                       const std::string& what) {
  if (object.Find(key) == nullptr) {
    Error(object, what + " has no " + Quoted(std::string(key)));
    return nullptr;
  }
  return Optional(object, key, kind);
}

std::string CJsonReader::OptionalText(const JsonValue& object, std::string_view key) {
  const JsonValue* const found = Optional(object, key, JsonValue::Kind::Text);
  return found != nullptr ? found->text : std::string();
}

bool CJsonReader::ReadId(const JsonValue& text, const std::string& what, zr::Uuid& id) {
  const zr::Result<zr::Uuid> parsed = zr::Uuid::Parse(std::string_view(text.text));
  if (!parsed || text.text.size() != 36) {
    Error(text, what + " is not an identifier: " + Quoted(text.text));
    return false;
  }
  id = *parsed;
  if (id.IsNil()) {
    Error(text, what + " is the nil identifier, which no class or interface can have");
    return false;
  }
  return true;
}

void CJsonReader::WarnOfOthers(const JsonValue& object, std::initializer_list<std::string_view> keys,
                               const std::string& what) {
  for (const JsonMember& member : object.members) {
    if (std::find(keys.begin(), keys.end(), member.key) == keys.end()) {
      Warn(member.keyPlace, what + " has an unknown key " + Quoted(member.key));
    }
  }
}

bool CJsonReader::HasSchema(const JsonValue& root) {
  if (!Has(root, JsonValue::Kind::Object, "the file")) return false;
  const JsonValue* const schema = Required(root, "schema", JsonValue::Kind::Unsigned, "the file");
  if (schema == nullptr) return false;
  if (schema->unsignedInteger == kSchema) return true;
  Error(*schema, "schema " + std::to_string(schema->unsignedInteger) + " is not supported, only schema " +
                     std::to_string(kSchema));
  return false;
}
