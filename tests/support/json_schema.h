// tests/support/json_schema.h - whether a JSON document follows a schema.
// Here:      the keywords that our own schemas use; any other is a fault of the schema.
#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace vorel::support {

using Json = nlohmann::json;

namespace json_schema_details {

inline bool has_type(const Json& value, const Json& type) {
  if (type.is_array())
    return std::ranges::any_of(type, [&](const Json& one) { return has_type(value, one); });
  if (type == "integer") return value.is_number_integer();
  if (type == "number") return value.is_number();
  return value.type_name() == type;
}

class SchemaCheck {
 public:
  explicit SchemaCheck(const Json& root) : root_{root} {}

  std::string fault(const Json& value, const Json& schema, const std::string& path) const {
    for (const auto& [keyword, rule] : schema.items()) {
      if (const auto inner = fault_inside(value, keyword, rule, path); !inner.empty()) return inner;
      if (const auto own = own_fault(value, schema, keyword, rule); !own.empty())
        return path + ' ' + own;
    }
    return "";
  }

 private:
  // Keywords that other schemas stand under.
  std::string fault_inside(const Json& value, const std::string& keyword, const Json& rule,
                           const std::string& path) const {
    std::string found;
    if (keyword == "$ref") {
      const auto place = rule.get<std::string>();  // "#/..."
      return fault(value, root_.at(Json::json_pointer(place.substr(1))), path);
    }
    if (keyword == "properties" && value.is_object()) {
      for (const auto& [key, part] : rule.items())
        if (found.empty() && value.contains(key))
          found = fault(value.at(key), part, path + '/' + key);
    }
    if (keyword == "items" && value.is_array()) {
      for (const Json& item : value)
        if (found.empty()) found = fault(item, rule, path + "/items");
    }
    return found;
  }

  static std::string own_fault(const Json& value, const Json& schema, const std::string& keyword,
                               const Json& rule) {
    if (keyword == "type") return has_type(value, rule) ? "" : "is no " + rule.dump();
    if (keyword == "enum")
      return std::ranges::find(rule, value) != rule.end() ? "" : "is none of " + rule.dump();
    if (keyword == "minimum") return !value.is_number() || value >= rule ? "" : "is too small";
    if (keyword == "minItems")
      return !value.is_array() || value.size() >= rule ? "" : "has too few items";
    if (keyword == "maxItems")
      return !value.is_array() || value.size() <= rule ? "" : "has too many items";
    if (keyword == "required" && value.is_object()) {
      for (const auto& key : rule)
        if (!value.contains(key)) return "has no " + std::string(key);
    } else if (keyword == "additionalProperties" && value.is_object()) {
      for (const auto& [key, ignored] : value.items())
        if (!schema.at("properties").contains(key)) return "has a key " + key;
    } else if (std::ranges::find(known_, keyword) == std::end(known_)) {
      return "is told by a schema with the unknown keyword " + keyword;
    }
    return "";
  }

  static constexpr std::string_view known_[] = {
      "$schema",    "$defs",       "$ref",
      "title",      "description", "items",
      "properties", "required",    "additionalProperties"};

  const Json& root_;
};

}  // namespace json_schema_details

// Empty, or what is wrong and where.
inline std::string schema_fault(const Json& value, const Json& schema) {
  return json_schema_details::SchemaCheck(schema).fault(value, schema, "document");
}

}  // namespace vorel::support
