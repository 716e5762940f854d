// The parser of nlohmann-json reports values in the order of the text, but not where they are. CTokenPlaces walks over
// the same tokens beside it, and finds their places. That is simple, because it only ever sees a text up to the token
// that the parser has accepted.

#include "hostkit/json_tree.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

const JsonValue* JsonValue::Find(std::string_view key) const {
  for (const JsonMember& member : Members()) {
    if (member.key == key) return &member.value;
  }
  return nullptr;
}

const char* NameOfKind(JsonValue::Kind kind) noexcept {
  static constexpr std::array<const char*, std::variant_size_v<JsonValue::Content>> kNames = {
      "null", "a boolean", "an integer", "an integer", "a real", "a text", "a list", "an object"};
  return kNames[static_cast<std::size_t>(kind)];
}

// Where the first line starts: after the byte order mark, which no editor shows.
static std::size_t StartOf(std::string_view text) noexcept {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  return text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
}

static TextPlace PlaceOf(std::string_view text, std::size_t position) noexcept {
  const std::size_t start = StartOf(text);
  const std::string_view before = text.substr(start, std::max(position, start) - start);
  const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
  const auto line = static_cast<uint32_t>(std::count(before.begin(), before.end(), '\n') + 1);
  return {line, static_cast<uint32_t>(before.size() - lineStart + 1)};
}

// CTokenPlaces finds the places of the tokens of a JSON text, one after the other.
class CTokenPlaces {
 public:
  explicit CTokenPlaces(std::string_view text) noexcept : text_(text), at_(StartOf(text)), lineStart_(at_) {}

  // Moves past the next value, key or bracket, and returns its place.
  TextPlace Next() noexcept {
    for (; at_ < text_.size() && IsBetween(text_[at_]); ++at_) {
      if (text_[at_] != '\n') continue;  // a text has no newlines, so all of them are here
      ++line_;
      lineStart_ = at_ + 1;
    }
    const TextPlace place = {line_, static_cast<uint32_t>(at_ - lineStart_ + 1)};
    if (at_ == text_.size()) return place;
    const char first = text_[at_++];
    if (first == '"') {
      PassText();
    } else if (!IsBracket(first)) {
      while (at_ < text_.size() && !IsBetween(text_[at_]) && !IsBracket(text_[at_])) ++at_;
    }
    return place;
  }

 private:
  static bool IsBetween(char c) noexcept {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == ',' || c == ':';
  }
  static bool IsBracket(char c) noexcept { return c == '[' || c == ']' || c == '{' || c == '}'; }

  // Moves past the closing quotation mark.
  void PassText() noexcept {
    while (at_ < text_.size() && text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
    at_ = std::min(at_ + 1, text_.size());
  }

  std::string_view text_;
  std::size_t at_;
  std::size_t lineStart_;
  uint32_t line_ = 1;
};

// The cause in a message of the parser: "[json.exception.KIND] parse error at line 1, column 2: CAUSE; last read:
// 'TEXT'; expected THING". The text that was read last is left out, since it can end within a character.
static std::string CauseOf(std::string message) {
  message.erase(0, message.find("] ") + 2);
  if (message.starts_with("parse error at")) message.erase(0, message.find(": ") + 2);
  const std::size_t lastRead = message.find("; last read: ");
  if (lastRead != std::string::npos) message.erase(lastRead, message.rfind("; expected ") - lastRead);  // or the rest
  return Shortened(message);
}

// Builds the tree from the events of the parser. An event that returns false ends the parsing.
class CTreeBuilder final : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit CTreeBuilder(std::string_view text) noexcept : text_(text), places_(text) {}

  bool null() override { return Add({}); }
  bool boolean(bool value) override { return Add(value); }
  bool number_integer(int64_t value) override { return Add(value); }
  bool number_unsigned(uint64_t value) override { return Add(value); }
  bool number_float(double value, const std::string& /*text*/) override { return Add(value); }
  bool string(std::string& value) override {
    const TextPlace place = places_.Next();
    if (HasZero(value, place)) return false;
    (void)Put({std::move(value), place});
    return true;
  }
  bool binary(nlohmann::json::binary_t& /*value*/) override { return false; }  // not in a text
  bool start_object(std::size_t /*size*/) override { return Open(std::vector<JsonMember>()); }
  bool start_array(std::size_t /*size*/) override { return Open(std::vector<JsonValue>()); }
  bool end_object() override {
    const bool isValid = HasDifferentKeys(open_.back()->Members());
    Close();
    return isValid;
  }
  bool end_array() override {
    Close();
    return true;
  }
  bool key(std::string& value) override {
    const TextPlace place = places_.Next();
    if (HasZero(value, place)) return false;
    std::get<std::vector<JsonMember>>(open_.back()->content).push_back({std::move(value), place, {}});
    return true;
  }
  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const nlohmann::json::exception& error) override {
    const std::string cause = CauseOf(error.what());
    // `position` is after the last byte that was read. That is the place of an invalid byte. If a token is well-formed
    // but wrong, its place is its first byte, unless it is a comma or colon, which have no places.
    TextPlace place = PlaceOf(text_, std::max<std::size_t>(position, 1) - 1);
    if (cause.find(" - invalid ") == std::string::npos) place = std::min(place, places_.Next());
    return Fail(place, "not valid JSON: " + cause);
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

  bool HasZero(const std::string& text, TextPlace place) {
    if (text.find('\0') == std::string::npos) return false;
    (void)Fail(place, "a text contains the character U+0000");
    return true;
  }

  JsonValue& Put(JsonValue value) {
    if (open_.empty()) return root = std::move(value);
    if (auto* const items = std::get_if<std::vector<JsonValue>>(&open_.back()->content)) {
      return items->emplace_back(std::move(value));
    }
    return std::get<std::vector<JsonMember>>(open_.back()->content).back().value = std::move(value);
  }

  bool Add(JsonValue::Content content) {
    (void)Put({std::move(content), places_.Next()});
    return true;
  }

  bool Open(JsonValue::Content content) {
    const TextPlace place = places_.Next();
    if (open_.size() == kDeepestJson) {
      return Fail(place, "lists and objects are nested deeper than " + std::to_string(kDeepestJson) + " levels");
    }
    open_.push_back(&Put({std::move(content), place}));
    return true;
  }

  void Close() {
    (void)places_.Next();
    open_.pop_back();
  }

  // Sorts the keys, so that the time doesn't grow by the square of their number.
  bool HasDifferentKeys(const std::vector<JsonMember>& members) {
    sorted_.clear();
    for (const JsonMember& member : members) sorted_.push_back(&member);
    std::sort(sorted_.begin(), sorted_.end(), [](const JsonMember* left, const JsonMember* right) {
      const int order = left->key.compare(right->key);
      return order != 0 ? order < 0 : left < right;
    });
    const auto same =
        std::adjacent_find(sorted_.begin(), sorted_.end(),
                           [](const JsonMember* left, const JsonMember* right) { return left->key == right->key; });
    if (same == sorted_.end()) return true;
    const JsonMember& second = **std::next(same);
    return Fail(second.keyPlace, "the key " + Quoted(second.key) + " occurs twice in one object");
  }

  std::string_view text_;
  CTokenPlaces places_;
  std::vector<JsonValue*> open_;           // the open lists and objects; a parent doesn't grow while a child is open
  std::vector<const JsonMember*> sorted_;  // a local variable of HasDifferentKeys, here to keep its memory
};

std::optional<JsonValue> ReadJson(std::string_view text, const zr::String& name, CProblems& problems) {
  CTreeBuilder builder(text);
  if (!nlohmann::json::sax_parse(text, &builder)) {
    problems.AddError(name, builder.failurePlace, builder.failure);
    return std::nullopt;
  }
  return std::move(builder.root);
}

std::optional<JsonValue> ReadJsonFile(const std::filesystem::path& file, const zr::String& name, CProblems& problems) {
  const auto fail = [&](const std::string& reason) {
    problems.AddError(name, {}, reason);
    return std::nullopt;
  };
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) return fail("not a regular file");
  const std::uintmax_t size = std::filesystem::file_size(file, error);  // not of a pipe, which would block
  if (error) return fail("can't read the file: " + error.message());
  if (size > kLongestJson) return fail("longer than " + std::to_string(kLongestJson) + " bytes");
  std::string text(static_cast<std::size_t>(size), '\0');
  std::ifstream stream(file, std::ios::binary);
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (!stream.is_open() || stream.bad()) return fail("can't read the file");
  text.resize(static_cast<std::size_t>(stream.gcount()));  // a file that shrinks meanwhile
  return ReadJson(text, name, problems);
}
