// A JSON text as a tree of values that know their places in the text, so that every problem can name line and column.
//
// The text is JSON by RFC 8259 in UTF-8, with or without a byte order mark. Two things that JSON allows are errors
// here: a key that occurs twice in an object, and the character U+0000 in a text, at which a C caller would see the
// text end. Sizes and depths are limited, because files come from whoever can write to a folder.

#ifndef HOSTKIT_JSON_TREE_H
#define HOSTKIT_JSON_TREE_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "hostkit/problem.h"
#include "zr/string.hpp"

struct JsonMember;

struct JsonValue {
  enum class Kind : uint8_t { Null, Boolean, Integer, Unsigned, Real, Text, List, Object };
  /// The alternatives are in the order of Kind. An Integer has a minus sign, an Unsigned does not.
  using Content = std::variant<std::monostate, bool, int64_t, uint64_t, double, std::string, std::vector<JsonValue>,
                               std::vector<JsonMember>>;

  Content content;
  TextPlace place;

  [[nodiscard]] Kind KindOf() const noexcept { return static_cast<Kind>(content.index()); }

  // The content of a value of the kind. Members are in the order of the text.
  [[nodiscard]] bool Boolean() const { return std::get<bool>(content); }
  [[nodiscard]] int64_t Integer() const { return std::get<int64_t>(content); }
  [[nodiscard]] uint64_t Unsigned() const { return std::get<uint64_t>(content); }
  [[nodiscard]] double Real() const { return std::get<double>(content); }
  [[nodiscard]] const std::string& Text() const { return std::get<std::string>(content); }
  [[nodiscard]] const std::vector<JsonValue>& Items() const { return std::get<std::vector<JsonValue>>(content); }
  [[nodiscard]] const std::vector<JsonMember>& Members() const { return std::get<std::vector<JsonMember>>(content); }

  /// The member of an object with this key, or null.
  [[nodiscard]] const JsonValue* Find(std::string_view key) const;
};

struct JsonMember {
  std::string key;
  TextPlace keyPlace;
  JsonValue value;
};

/// The name of a kind, for a reason: "a text", "a list".
[[nodiscard]] const char* NameOfKind(JsonValue::Kind kind) noexcept;

/// The longest text that ReadJsonFile accepts, in bytes, and the deepest nesting of lists and objects.
inline constexpr std::size_t kLongestJson = std::size_t{1024} * 1024;
inline constexpr std::size_t kDeepestJson = 16;

/// ReadJson parses a text. If it is not valid, adds one problem with the first fault's place, and returns nothing.
/// `name` is the name of the file for the problem.
[[nodiscard]] std::optional<JsonValue> ReadJson(std::string_view text, const zr::String& name, CProblems& problems);

/// ReadJsonFile reads and parses a file, with problems as ReadJson. A file that is not a regular file, can't be read or
/// is longer than kLongestJson is one problem.
[[nodiscard]] std::optional<JsonValue> ReadJsonFile(const std::filesystem::path& file, const zr::String& name,
                                                    CProblems& problems);

#endif
