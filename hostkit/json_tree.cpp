// The parser of nlohmann-json reports values in the order of the text, but not where they are. CTokenPlaces walks over the
// same tokens beside it, and finds their places. That is simple, because it only ever sees a text up to the token that
// the parser has accepted.

#include "hostkit/json_tree.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>

const JsonValue* JsonValue::Find(std::string_view key) const noexcept {
  for (const JsonMember& member : members) {
    if (member.key == key) return &member.value;
  }
  return nullptr;
}

const char* NameOfKind(JsonValue::Kind kind) noexcept {
  static constexpr std::array<const char*, 8> kNames = {"null",   "a boolean", "an integer", "an integer",
                                                        "a real", "a text",    "a list",     "an object"};
  return kNames[static_cast<std::size_t>(kind)];
}

static constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

static TextPlace PlaceOf(std::string_view text, std::size_t position) noexcept {
  const std::string_view before = text.substr(0, std::min(position, text.size()));
  const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
  const auto line = static_cast<uint32_t>(std::count(before.begin(), before.end(), '\n') + 1);
  return {line, static_cast<uint32_t>(before.size() - lineStart + 1)};
}

// CTokenPlaces finds the places of the tokens of a JSON text, one after the other.
class CTokenPlaces {
 public:
  explicit CTokenPlaces(std::string_view text) noexcept
      : text_(text), position_(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0) {}

  // Moves to the next value, key or bracket, and returns its place.
  TextPlace Next() noexcept {
    while (position_ < text_.size() && IsOneOf(" \t\r\n,:", text_[position_])) Advance();
    const TextPlace place = place_;
    if (position_ == text_.size()) return place;
    if (text_[position_] == '"') {
      Advance();
      while (position_ < text_.size() && text_[position_] != '"') {
        if (text_[position_] == '\\') Advance();
        Advance();
      }
      Advance();
    } else if (IsOneOf("[]{}", text_[position_])) {
      Advance();
    } else {
      while (position_ < text_.size() && !IsOneOf(" \t\r\n,:[]{}\"", text_[position_])) Advance();
    }
    return place;
  }

 private:
  static bool IsOneOf(std::string_view set, char c) noexcept { return set.find(c) != std::string_view::npos; }

  void Advance() noexcept {
    if (position_ == text_.size()) return;
    place_ = text_[position_] == '\n' ? TextPlace{place_.line + 1, 1} : TextPlace{place_.line, place_.column + 1};
    ++position_;
  }

  std::string_view text_;
  std::size_t position_;
  TextPlace place_ = {1, 1};
};

// The cause in a message of the parser: "[json.exception.KIND] parse error at line 1, column 2: CAUSE; last read: 'TEXT';
// expected THING". The text that was read last is left out, since it can end within a character.
static std::string CauseOf(std::string message) {
  const std::size_t prefix = message.find("] ");
  message.erase(0, prefix == std::string::npos ? 0 : prefix + 2);
  const std::size_t place = message.find(": ");
  if (message.starts_with("parse error at") && place != std::string::npos) message.erase(0, place + 2);
  const std::size_t lastRead = message.find("; last read: ");
  if (lastRead != std::string::npos) {
    const std::size_t expected = message.rfind("; expected ");
    message.erase(lastRead, expected == std::string::npos || expected < lastRead ? expected : expected - lastRead);
  }
  return message;
}

// Builds the tree from the events of the parser. An event that returns false ends the parsing.
class CTreeBuilder final : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit CTreeBuilder(std::string_view text) noexcept : text_(text), places_(text) {}

  bool null() override { return Add(JsonValue::Kind::Null, &JsonValue::boolean, false); }
  bool boolean(bool value) override { return Add(JsonValue::Kind::Boolean, &JsonValue::boolean, value); }
  bool number_integer(int64_t value) override { return Add(JsonValue::Kind::Integer, &JsonValue::integer, value); }
  bool number_unsigned(uint64_t value) override {
    return Add(JsonValue::Kind::Unsigned, &JsonValue::unsignedInteger, value);
  }
  bool number_float(double value, const std::string&) override {
    return Add(JsonValue::Kind::Real, &JsonValue::real, value);
  }
  bool string(std::string& value) override { return Add(JsonValue::Kind::Text, &JsonValue::text, std::move(value)); }
  bool binary(nlohmann::json::binary_t&) override { return false; }  // not in a text
  bool start_object(std::size_t) override { return Open(JsonValue::Kind::Object); }
  bool start_array(std::size_t) override { return Open(JsonValue::Kind::List); }
  bool end_object() override { return Close(); }
  bool end_array() override { return Close(); }
  bool key(std::string& value) override {
    const TextPlace place = places_.Next();
    if (!keys_.back().insert(value).second) {
      return Fail(place, "the key " + Quoted(value) + " occurs twice in one object");
    }
    open_.back()->members.push_back({std::move(value), place, {}});
    return true;
  }
  bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception& error) override {
    return Fail(PlaceOf(text_, position == 0 ? 0 : position - 1), "not valid JSON: " + CauseOf(error.what()));
  }

  JsonValue root;
  std::string failure;
  TextPlace failurePlace;

 private:
  bool Fail(TextPlace place, std::string reason) {
    failure = std::move(reason);
    failurePlace = place;
    return false;
  }

  JsonValue& Put(JsonValue value) {
    if (open_.empty()) return root = std::move(value);
    JsonValue& parent = *open_.back();
    if (parent.kind == JsonValue::Kind::List) return parent.items.emplace_back(std::move(value));
    return parent.members.back().value = std::move(value);
  }

  template <class T>
  bool Add(JsonValue::Kind kind, T JsonValue::* field, T value) {
    JsonValue made;
    made.kind = kind;
    made.place = places_.Next();
    made.*field = std::move(value);
    (void)Put(std::move(made));
    return true;
  }

  bool Open(JsonValue::Kind kind) {
    const TextPlace place = places_.Next();
    if (open_.size() == kDeepestJson) {
      return Fail(place, "lists and objects are nested deeper than " + std::to_string(kDeepestJson) + " levels");
    }
    JsonValue made;
    made.kind = kind;
    made.place = place;
    open_.push_back(&Put(std::move(made)));
    keys_.emplace_back();
    return true;
  }

  bool Close() {
    (void)places_.Next();
    open_.pop_back();
    keys_.pop_back();
    return true;
  }

  std::string_view text_;
  CTokenPlaces places_;
  std::vector<JsonValue*> open_;            // the open lists and objects; a parent doesn't grow while a child is open
  std::vector<std::set<std::string>> keys_;  // the keys of each of them
};

std::optional<JsonValue> ReadJson(std::string_view text, const std::filesystem::path& file, CProblems& problems) {
  CTreeBuilder builder(text);
  if (!nlohmann::json::sax_parse(text, &builder)) {
    problems.AddError(file, builder.failurePlace, std::move(builder.failure));
    return std::nullopt;
  }
  return std::move(builder.root);
}

std::optional<JsonValue> ReadJsonFile(const std::filesystem::path& file, CProblems& problems) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {  // a pipe or a device would block
    problems.AddError(file, {}, error ? "can't read the file: " + error.message() : "not a regular file");
    return std::nullopt;
  }
  std::ifstream stream(file, std::ios::binary);
  std::string text(kLongestJson + 1, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (stream.bad() || !stream.is_open()) {
    problems.AddError(file, {}, "can't read the file");
    return std::nullopt;
  }
  text.resize(static_cast<std::size_t>(stream.gcount()));
  if (text.size() > kLongestJson) {
    problems.AddError(file, {}, "longer than " + std::to_string(kLongestJson) + " bytes");
    return std::nullopt;
  }
  return ReadJson(text, file, problems);
}
