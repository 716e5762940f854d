// Helpers of the fuzz targets for the host kit: a folder for their files, JSON texts, and claims about problems.

#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_support.h"
#include "hostkit/json_tree.h"

// A folder for one run: a guided target ends without destructors of static objects. The folder is in memory if the
// system has such a place, because thousands of small files are written per second.
class CFuzzFolder {
 public:
  CFuzzFolder() {
    const std::filesystem::path inMemory = "/dev/shm";
    path_ = std::filesystem::exists(inMemory) ? inMemory : std::filesystem::temp_directory_path();
    static const std::string name = "zrhost_fuzz_" + std::to_string(std::random_device()());
    path_ = std::filesystem::absolute(path_ / name).make_preferred();
    std::filesystem::create_directories(path_);
  }
  CFuzzFolder(const CFuzzFolder&) = delete;
  CFuzzFolder& operator=(const CFuzzFolder&) = delete;
  ~CFuzzFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::filesystem::path& Path() const noexcept { return path_; }
  std::filesystem::path Write(const char* name, std::string_view content) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    FUZZ_CLAIM(file.good());
    return path_ / name;
  }

 private:
  std::filesystem::path path_;
};

inline std::string JsonOf(const std::string& text) {
  std::string json = "\"";
  for (const char c : text) {
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned char>(c));
    json += static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\' ? escaped : std::string(1, c);
  }
  return json + "\"";
}

// The byte at a place, which must be in the text or at its end.
inline char ByteAt(std::string_view text, TextPlace place) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  FUZZ_CLAIM(place.line > 0 && place.column > 0);
  for (uint32_t line = 1; line < place.line; ++line) {
    FUZZ_CLAIM(text.find('\n') != std::string_view::npos);
    text.remove_prefix(text.find('\n') + 1);
  }
  const std::size_t length = std::min(text.find('\n'), text.size());
  FUZZ_CLAIM(place.column <= length + 1);
  return place.column <= length ? text[place.column - 1] : '\0';
}

inline void ClaimProblemIn(std::string_view text, TextPlace place, uint32_t severity, zr::StringView reason) {
  if (place.line != 0 || place.column != 0) (void)ByteAt(text, place);
  FUZZ_CLAIM(severity == ZRHOST_WARNING || severity == ZRHOST_ERROR);
  FUZZ_CLAIM(!reason.empty() && reason.size() < 2000);
}

// Writes a value as JSON. Claims that its place, and those of its keys and of all values in it, are where they begin.
inline std::string JsonOf(const JsonValue& value, std::string_view text) {
  const char first = ByteAt(text, value.place);
  const auto isFirst = [first](std::string_view set) { return set.find(first) != std::string_view::npos; };
  std::string json;
  char number[40];
  switch (value.KindOf()) {
    case JsonValue::Kind::Null:
      FUZZ_CLAIM(isFirst("n"));
      return "null";
    case JsonValue::Kind::Boolean:
      FUZZ_CLAIM(first == (value.Boolean() ? 't' : 'f'));
      return value.Boolean() ? "true" : "false";
    case JsonValue::Kind::Integer:
      FUZZ_CLAIM(isFirst("-") && value.Integer() <= 0);
      return value.Integer() == 0 ? "-0" : std::to_string(value.Integer());
    case JsonValue::Kind::Unsigned:
      FUZZ_CLAIM(isFirst("0123456789"));
      return std::to_string(value.Unsigned());
    case JsonValue::Kind::Real:
      FUZZ_CLAIM(isFirst("-0123456789"));
      std::snprintf(number, sizeof number, "%.17e", value.Real());
      return number;
    case JsonValue::Kind::Text:
      FUZZ_CLAIM(isFirst("\"") && value.Text().find('\0') == std::string::npos);
      return JsonOf(value.Text());
    case JsonValue::Kind::List:
      FUZZ_CLAIM(isFirst("["));
      for (const JsonValue& item : value.Items()) json += (json.empty() ? "" : ",") + JsonOf(item, text);
      return "[" + json + "]";
    case JsonValue::Kind::Object:
      FUZZ_CLAIM(isFirst("{"));
      for (const JsonMember& member : value.Members()) {
        FUZZ_CLAIM(ByteAt(text, member.keyPlace) == '"' && value.Find(member.key) == &member.value);
        json += (json.empty() ? "" : ",") + JsonOf(member.key) + ":" + JsonOf(member.value, text);
      }
      return "{" + json + "}";
  }
  return json;
}

// Reads any text as JSON. A text that is valid must survive a round trip.
inline void ClaimJson(std::string_view text) {
  CProblems problems;
  const std::optional<JsonValue> read = ReadJson(text, zr::String(), problems);
  FUZZ_CLAIM(read.has_value() == problems.Rows().empty());
  for (const Problem& problem : problems.Rows()) {
    ClaimProblemIn(text, problem.place, static_cast<uint32_t>(problem.severity), problem.reason.View());
  }
  if (!read) return;
  const std::string json = JsonOf(*read, text);
  const std::optional<JsonValue> again = ReadJson(json, zr::String(), problems);
  FUZZ_CLAIM(again && JsonOf(*again, json) == json);
}
