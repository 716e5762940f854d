// Reads the objects of a JSON file by their schema: keys that must or may exist, with the kinds of their values. Each
// deviation becomes a problem with its place.

#ifndef HOSTKIT_JSON_READER_H
#define HOSTKIT_JSON_READER_H

#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>

#include "hostkit/json_tree.h"
#include "hostkit/problem.h"
#include "zr/uuid.hpp"

/// CJsonReader reads the values of one file. `what` is the name of an object for a reason, such as: the class "A".
class CJsonReader {
 public:
  CJsonReader(const std::filesystem::path& file, CProblems& problems) noexcept : file_(file), problems_(problems) {}

  [[nodiscard]] const std::filesystem::path& File() const noexcept { return file_; }

  void Error(const JsonValue& value, std::string reason) { problems_.AddError(file_, value.place, std::move(reason)); }
  void Warn(TextPlace place, std::string reason) { problems_.AddWarning(file_, place, std::move(reason)); }

  /// Whether the value has the kind; otherwise adds an error.
  [[nodiscard]] bool Has(const JsonValue& value, JsonValue::Kind kind, const std::string& what);

  /// The member of an object if it has the kind. A member of another kind is an error; a missing one is an error if it is
  /// required.
  [[nodiscard]] const JsonValue* Optional(const JsonValue& object, std::string_view key, JsonValue::Kind kind);
  [[nodiscard]] const JsonValue* Required(const JsonValue& object, std::string_view key, JsonValue::Kind kind,
                                          const std::string& what);

  /// The text of a member, or an empty text if there is none.
  [[nodiscard]] std::string OptionalText(const JsonValue& object, std::string_view key);

  /// Reads an identifier of 36 characters, such as "31AD0869-...". Anything else is an error, also the nil identifier.
  [[nodiscard]] bool ReadId(const JsonValue& text, const std::string& what, zr::Uuid& id);

  /// Adds a warning for each member whose key is not in the list.
  void WarnOfOthers(const JsonValue& object, std::initializer_list<std::string_view> keys, const std::string& what);

  /// Whether the value is an object with the one schema number that this version of the kit knows; otherwise adds an
  /// error.
  [[nodiscard]] bool HasSchema(const JsonValue& root);

 private:
  const std::filesystem::path& file_;
  CProblems& problems_;
};

#endif
