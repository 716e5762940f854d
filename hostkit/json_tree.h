// A JSON text as a tree of values that know their places in the text, so that every problem can name line and column.
//
// The text is JSON by RFC 8259 in UTF-8, with or without a byte order mark. A key that occurs twice in an object is an
// error. Sizes and depths are limited, because files come from whoever can write to a folder.

#ifndef HOSTKIT_JSON_TREE_H
#define HOSTKIT_JSON_TREE_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hostkit/problem.h"

struct JsonMember;

struct JsonValue {
  enum class Kind : uint8_t { Null, Boolean, Integer, Unsigned, Real, Text, List, Object };

  Kind kind = Kind::Null;
  TextPlace place;
  bool boolean = false;
  int64_t integer = 0;           ///< Integer: a negative number
  uint64_t unsignedInteger = 0;  ///< Unsigned: zero or above
  double real = 0;
  std::string text;
  std::vector<JsonValue> items;
  std::vector<JsonMember> members;  ///< in the order of the text

  /// The member with this key, or null.
  [[nodiscard]] const JsonValue* Find(std::string_view key) const noexcept;
};

struct JsonMember {
  std::string key;
  TextPlace keyPlace;
  JsonValue value;
};

/// The name of a kind, for a reason: "a text", "a list".
[[nodiscard]] const char* NameOfKind(JsonValue::Kind kind) noexcept;

/// The longest text that ReadJson accepts, in bytes, and the deepest nesting of lists and objects.
inline constexpr std::size_t kLongestJson = 1024 * 1024;
inline constexpr std::size_t kDeepestJson = 16;

/// ReadJson parses a text. If it is not valid, adds one problem with the first fault's place, and returns nothing.
/// `file` is the name for the problem.
[[nodiscard]] std::optional<JsonValue> ReadJson(std::string_view text, const std::filesystem::path& file,
                                                CProblems& problems);

/// ReadJsonFile reads and parses a file, with problems as ReadJson. A file that is not a regular file, can't be read or
/// is longer than kLongestJson is one problem.
[[nodiscard]] std::optional<JsonValue> ReadJsonFile(const std::filesystem::path& file, CProblems& problems);

#endif
