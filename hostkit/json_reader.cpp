#include "hostkit/json_reader.h"

#include <algorithm>

static constexpr uint64_t kSchema = 1;

std::string Subject::Text() const {
  std::string text(noun);
  if (!name.empty()) text += " " + Quoted(name);
  if (whole != nullptr) text += " of " + whole->Text();
  return text;
}

bool CJsonReader::Has(const JsonValue& value, JsonValue::Kind kind, const Subject& what) {
  if (value.KindOf() == kind) return true;
  Error(value.place, what.Text() + " must be " + NameOfKind(kind) + ", not " + NameOfKind(value.KindOf()));
  return false;
}

const JsonValue* CJsonReader::Optional(const JsonValue& object, std::string_view key, JsonValue::Kind kind) {
  const JsonValue* const found = object.Find(key);
  return found != nullptr && Has(*found, kind, {"the value of", key}) ? found : nullptr;
}

const JsonValue* CJsonReader::Required(const JsonValue& object, std::string_view key, JsonValue::Kind kind,
                                       const Subject& what) {
  const JsonValue* const found = object.Find(key);
  if (found == nullptr) {
    Error(object.place, what.Text() + " has no " + Quoted(key));
    return nullptr;
  }
  return Has(*found, kind, {"the value of", key}) ? found : nullptr;
}

zr::String CJsonReader::OptionalText(const JsonValue& object, std::string_view key) {
  const JsonValue* const found = Optional(object, key, JsonValue::Kind::Text);
  return found != nullptr ? TextOf(found->Text()) : zr::String();
}

bool CJsonReader::ReadId(const JsonValue& object, const Subject& what, zr::Uuid& id) {
  const JsonValue* const text = Required(object, "id", JsonValue::Kind::Text, what);
  if (text == nullptr) return false;
  const zr::Result<zr::Uuid> parsed = zr::Uuid::Parse(std::string_view(text->Text()));
  if (!parsed || text->Text().size() != 36) {  // no braces
    Error(text->place, "the \"id\" of " + what.Text() + " is not an identifier: " + Quoted(text->Text()));
    return false;
  }
  id = *parsed;
  if (id.IsNil()) Error(text->place, "the \"id\" of " + what.Text() + " is the nil identifier");
  return !id.IsNil();
}

void CJsonReader::WarnOfOthers(const JsonValue& object, std::initializer_list<std::string_view> keys,
                               const Subject& what) {
  for (const JsonMember& member : object.Members()) {
    if (std::find(keys.begin(), keys.end(), member.key) == keys.end()) {
      Warn(member.keyPlace, what.Text() + " has an unknown key " + Quoted(member.key));
    }
  }
}

bool CJsonReader::HasSchema(const JsonValue& root, const Subject& what) {
  if (!Has(root, JsonValue::Kind::Object, what)) return false;
  const JsonValue* const schema = Required(root, "schema", JsonValue::Kind::Unsigned, what);
  if (schema == nullptr || schema->Unsigned() == kSchema) return schema != nullptr;
  Error(schema->place,
        "schema " + std::to_string(schema->Unsigned()) + " is not supported, only schema " + std::to_string(kSchema));
  return false;
}
