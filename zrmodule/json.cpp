#include "zrmodule/json.h"

#include <charconv>

#include "zrmodule/text.h"

CJson::CJson(const std::string& bytes) : text_("\"") {
  for (const char c : ValidUtf8(bytes)) {
    if (c == '"' || c == '\\') {
      text_ += std::string("\\") + c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      static constexpr const char* kDigits = "0123456789abcdef";
      text_ += std::string("\\u00") + kDigits[c >> 4] + kDigits[c & 0xF];
    } else {
      text_ += c;
    }
  }
  text_ += '"';
}

CJson::CJson(double value) {
  char digits[32];
  text_.assign(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

// Puts parts between brackets, one per line, and indents them. Texts contain no newline, so each is one between parts.
static std::string Brackets(const char* brackets, const std::vector<std::string>& parts) {
  std::string text(1, brackets[0]);
  for (const std::string& part : parts) {
    text += text.size() == 1 ? "\n  " : ",\n  ";
    for (const char c : part) {
      text += c;
      if (c == '\n') text += "  ";
    }
  }
  if (!parts.empty()) text += '\n';
  return text + brackets[1];
}

CJson CJson::Object(const std::vector<JsonMember>& members) {
  std::vector<std::string> parts;
  parts.reserve(members.size());
  for (const JsonMember& member : members) parts.push_back(CJson(member.key).text_ + ": " + member.value.text_);
  CJson object;
  object.text_ = Brackets("{}", parts);
  return object;
}

CJson CJson::List(const std::vector<CJson>& items) {
  std::vector<std::string> parts;
  parts.reserve(items.size());
  for (const CJson& item : items) parts.push_back(item.text_);
  CJson list;
  list.text_ = Brackets("[]", parts);
  return list;
}
