// The documents that the tool writes. It reads none: the host kit reads manifests. The header of nlohmann-json takes
// seconds to compile, so only json.cpp includes it.

#ifndef ZRMODULE_JSON_H
#define ZRMODULE_JSON_H

#include <concepts>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

struct JsonMember;

/// CJson is a value of a document. Copies share it.
class CJson {
 public:
  CJson(const std::string& bytes);
  CJson(const char* bytes) : CJson(std::string(bytes)) {}
  CJson(std::same_as<bool> auto value) : CJson(FromBoolean(value)) {}
  CJson(std::integral auto value) requires(!std::same_as<decltype(value), bool>)
      : CJson(FromInteger(static_cast<long long>(value))) {}
  CJson(double value);

  /// An object with its members in this order.
  [[nodiscard]] static CJson Object(const std::vector<JsonMember>& members);
  [[nodiscard]] static CJson List(const std::vector<CJson>& items);
  [[nodiscard]] static CJson List(const std::vector<std::string>& texts) {
    return List(std::vector<CJson>(texts.begin(), texts.end()));
  }

  /// The value with two blanks per level. Bytes that are not UTF-8 become U+FFFD.
  [[nodiscard]] std::string Text() const;

 private:
  explicit CJson(nlohmann::ordered_json value);
  [[nodiscard]] static CJson FromBoolean(bool value);
  [[nodiscard]] static CJson FromInteger(long long value);

  std::shared_ptr<const nlohmann::ordered_json> value_;
};

struct JsonMember {
  std::string key;
  CJson value;
};

#endif
