// Column titles: the text before the last colon is the title if the word after it is the name of a type in kTypes.

#include "host/column_title.h"

#include <algorithm>

#include "code_units.h"

struct NamedType {
  const char* name;
  std::uint16_t type;
};

// The types that the demo can convert a text to and show.
static constexpr NamedType kTypes[] = {
    {"STR", ZR_VT_STR}, {"BOOL", ZR_VT_BOOL}, {"I4", ZR_VT_I4},     {"UI4", ZR_VT_UI4},
    {"I8", ZR_VT_I8},   {"R4", ZR_VT_R4},     {"R8", ZR_VT_R8},     {"TIME", ZR_VT_TIME},
    {"REF", ZR_VT_REF}, {"SREF", ZR_VT_SREF}, {"UUID", ZR_VT_UUID}, {"DATETIME", ZR_VT_DATETIME},
};

ColumnTitle ReadColumnTitle(WideView text) {
  const std::size_t colon = text.rfind(W(':'));
  if (colon != text.npos) {
    const WideView word = text.substr(colon + 1);
    for (const NamedType& known : kTypes) {
      const std::string_view name = known.name;
      if (std::equal(word.begin(), word.end(), name.begin(), name.end())) return {text.substr(0, colon), known.type};
    }
  }
  return {text, ZR_VT_STR};
}

const char* TypeName(std::uint16_t type) {
  for (const NamedType& known : kTypes) {
    if (known.type == type) return known.name;
  }
  return "?";
}
