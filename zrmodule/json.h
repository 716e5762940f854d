// JSON that the tool writes. It reads none: the host kit reads manifests.

#ifndef ZRMODULE_JSON_H
#define ZRMODULE_JSON_H

#include <concepts>
#include <string>
#include <utility>
#include <vector>

struct JsonMember;

/// CJson is a value as its JSON text.
class CJson {
 public:
  CJson(const std::string& bytes);
  CJson(const char* bytes) : CJson(std::string(bytes)) {}
  CJson(std::same_as<bool> auto value) : text_(value ? "true" : "false") {}
  CJson(std::integral auto value) requires(!std::same_as<decltype(value), bool>) : text_(std::to_string(value)) {}
  CJson(double value);

  /// An object with its members in this order.
  [[nodiscard]] static CJson Object(const std::vector<JsonMember>& members);
  [[nodiscard]] static CJson List(const std::vector<CJson>& items);
  [[nodiscard]] static CJson List(const std::vector<std::string>& texts) {
    return List(std::vector<CJson>(texts.begin(), texts.end()));
  }

  [[nodiscard]] const std::string& Text() const noexcept { return text_; }

 private:
  CJson() = default;

  std::string text_;
};

struct JsonMember {
  std::string key;
  CJson value;
};

#endif
