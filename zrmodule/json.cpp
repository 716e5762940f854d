#include "zrmodule/json.h"

#include <nlohmann/json.hpp>
#include <utility>

using Json = nlohmann::ordered_json;

CJson::CJson(Json value) : value_(std::make_shared<const Json>(std::move(value))) {}
CJson::CJson(const std::string& bytes) : CJson(Json(bytes)) {}
CJson::CJson(double value) : CJson(Json(value)) {}
CJson CJson::FromBoolean(bool value) { return CJson(Json(value)); }
CJson CJson::FromInteger(long long value) { return CJson(Json(value)); }

CJson CJson::Object(const std::vector<JsonMember>& members) {
  Json object = Json::object();
  for (const JsonMember& member : members) object[member.key] = *member.value.value_;
  return CJson(std::move(object));
}

CJson CJson::List(const std::vector<CJson>& items) {
  Json list = Json::array();
  for (const CJson& item : items) list.push_back(*item.value_);
  return CJson(std::move(list));
}

std::string CJson::Text() const { return value_->dump(2, ' ', false, Json::error_handler_t::replace); }
