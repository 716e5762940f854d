// A setting: a named value of a configuration, read from JSON.
//
// A JSON value has a type of the library by the way it is written:
//
//     true, false         ZR_VT_BOOL
//     an integer          ZR_VT_I4 if it fits, otherwise ZR_VT_I8, otherwise ZR_VT_UI8
//     a real              ZR_VT_R8
//     a text              ZR_VT_STR
//
// An object {"type": "UI4", "value": 64} has the named type; the value is converted to it as by ZrVariantChangeType.

#ifndef HOSTKIT_SETTING_H
#define HOSTKIT_SETTING_H

#include <cstdint>
#include <map>
#include <vector>

#include "hostkit/json_reader.h"
#include "zr/string.hpp"
#include "zr/variant.hpp"

struct Setting {
  zr::String name;
  TextPlace place;
  zr::Variant value;
};

/// The configurations of a class, by name.
using Configurations = std::map<zr::String, std::vector<Setting>>;

/// ReadSettings reads the members of a value that is an object as settings. A member that is not valid becomes an error
/// and is left out.
[[nodiscard]] std::vector<Setting> ReadSettings(CJsonReader& reader, const JsonValue& object, const Subject& what);

/// ChangeType converts a setting to a type. If it doesn't convert, adds an error and returns false.
[[nodiscard]] bool ChangeType(CJsonReader& reader, Setting& setting, uint16_t type);

/// Replaces the settings of the same names, and adds the others. A replacing value is converted to the type of the
/// value that it replaces; if it doesn't convert, that is an error, and the old value remains.
void Override(CJsonReader& reader, std::vector<Setting>& settings, std::vector<Setting> replacing);

#endif
