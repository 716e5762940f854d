// Reads the objects of a JSON file by their schema: keys that must or may exist, with the kinds of their values. Each
// deviation becomes a problem with its place.

#ifndef HOSTKIT_JSON_READER_H
#define HOSTKIT_JSON_READER_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "hostkit/json_tree.h"
#include "hostkit/problem.h"
#include "zr/string.hpp"
#include "zr/uuid.hpp"

/// What a reason is about, such as: the configuration "Orbit" of the class "Planets.Mars". Texts of files are made into
/// a reason only if there is a problem, so this lends them.
struct Subject {
  std::string_view noun;
  std::string_view name = {};      ///< empty if it has no name
  const Subject* whole = nullptr;  ///< what it is a part of

  [[nodiscard]] std::string Text() const;
};

/// CJsonReader reads the values of one file.
class CJsonReader {
 public:
  CJsonReader(zr::String file, CProblems& problems) noexcept : file_(std::move(file)), problems_(problems) {}

  void Error(TextPlace place, std::string_view reason) { problems_.AddError(file_, place, reason); }
  void Warn(TextPlace place, std::string_view reason) { problems_.AddWarning(file_, place, reason); }

  /// Whether the value has the kind; otherwise adds an error.
  [[nodiscard]] bool Has(const JsonValue& value, JsonValue::Kind kind, const Subject& what);

  /// The member of an object if it has the kind. A member of another kind is an error; a missing one is an error if it
  /// is required.
  [[nodiscard]] const JsonValue* Optional(const JsonValue& object, std::string_view key, JsonValue::Kind kind);
  [[nodiscard]] const JsonValue* Required(const JsonValue& object, std::string_view key, JsonValue::Kind kind,
                                          const Subject& what);

  /// The text of a member, or an empty text if the member is missing or not a text.
  [[nodiscard]] zr::String OptionalText(const JsonValue& object, std::string_view key);

  /// Reads the member "id": 36 characters, such as "31AD0869-...". Anything else is an error, also the nil identifier.
  [[nodiscard]] bool ReadId(const JsonValue& object, const Subject& what, zr::Uuid& id);

  /// Adds a warning for each member whose key is not in the list.
  void WarnOfOthers(const JsonValue& object, std::initializer_list<std::string_view> keys, const Subject& what);

  /// Whether the value is an object with the one schema number that this version of the kit knows; otherwise adds an
  /// error.
  [[nodiscard]] bool HasSchema(const JsonValue& root, const Subject& what);

 private:
  zr::String file_;
  CProblems& problems_;
};

#endif
