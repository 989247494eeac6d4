// tests/support/json_schema.h - whether a JSON document follows a schema.
// Here:      the keywords that our own schemas use; any other is a fault of the schema.
#pragma once

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

namespace vorel::support {

using Json = nlohmann::json;

namespace json_schema_details {

inline bool has_type(const Json& value, const std::string& type) {
  if (type == "integer") return value.is_number_integer();
  if (type == "number") return value.is_number();
  return value.type_name() == type;
}

}  // namespace json_schema_details

// Empty, or what is wrong and where.
inline std::string schema_fault(const Json& value, const Json& schema,
                                const std::string& path = "document") {
  std::string fault;
  for (const auto& [keyword, rule] : schema.items()) {
    if (keyword == "$schema" || keyword == "title" || keyword == "description") continue;
    if (keyword == "type") {
      if (!json_schema_details::has_type(value, rule)) fault = "is no " + std::string(rule);
    } else if (keyword == "enum") {
      if (std::ranges::find(rule, value) == rule.end()) fault = "is none of " + rule.dump();
    } else if (keyword == "minimum") {
      if (value < rule) fault = "is too small";
    } else if (keyword == "minItems") {
      if (value.size() < rule) fault = "has too few items";
    } else if (keyword == "maxItems") {
      if (value.size() > rule) fault = "has too many items";
    } else if (keyword == "required") {
      for (const auto& key : rule)
        if (!value.contains(key)) fault = "has no " + std::string(key);
    } else if (keyword == "additionalProperties") {
      for (const auto& [key, ignored] : value.items())
        if (!schema.at("properties").contains(key)) fault = "has a key " + key;
    } else if (keyword == "properties") {
      for (const auto& [key, part] : rule.items())
        if (fault.empty() && value.contains(key))
          fault = schema_fault(value.at(key), part, path + '/' + key);
      if (!fault.empty()) return fault;
    } else if (keyword == "items") {
      for (const Json& item : value)
        if (fault = schema_fault(item, rule, path + "/items"); !fault.empty()) return fault;
    } else {
      fault = "is told by a schema with the unknown keyword " + keyword;
    }
    if (!fault.empty()) return path + ' ' + fault;
  }
  return "";
}

}  // namespace vorel::support
