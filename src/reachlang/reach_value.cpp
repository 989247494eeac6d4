#include "reachlang/reach_value.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <span>

#include "base/messages.h"

namespace vorel::reachlang {
namespace {

bool comes_before(const ReachValue& a, const ReachValue& b) { return compare(a, b) < 0; }

std::strong_ordering compare_elements(std::span<const ReachValue> a,
                                      std::span<const ReachValue> b) {
  return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end(), compare);
}

std::string text_of(const ReachNodeRef& node) {
  switch (node.kind) {
    case BaseType::condition:
      return "C " + std::to_string(node.index + 1);
    case BaseType::event:
      return "E " + std::to_string(node.index + 1);
    case BaseType::place:
      return "P" + quoted(*node.name);
    case BaseType::transition:
      return "T" + quoted(*node.name);
    default:
      assert(node.kind == BaseType::signal);
      return "S" + quoted(*node.name);
  }
}

std::string text_of(const ReachElements& elements) {
  std::string text = "{";
  for (const ReachValue& element : elements) {
    if (text.size() > 1) text += ", ";
    text += to_string(element);
  }
  return text + "}";
}

// A set made by an algorithm that keeps order and takes two ranges.
template <class Algorithm>
ReachValue combine(const ReachValue& a, const ReachValue& b, Algorithm algorithm) {
  ReachElements result;
  algorithm(a.elements(), b.elements(), std::back_inserter(result), comes_before);
  return ReachValue::set_of(std::move(result));
}

}  // namespace

ReachValue ReachValue::set_of(ReachElements elements) {
  if (!std::ranges::is_sorted(elements, comes_before)) std::ranges::sort(elements, comes_before);
  const auto is_same = [](const auto& a, const auto& b) { return compare(a, b) == 0; };
  const auto repeated = std::ranges::unique(elements, is_same);
  elements.erase(repeated.begin(), repeated.end());
  ReachValue value;
  value.data_ = std::make_shared<const ReachElements>(std::move(elements));
  return value;
}

ReachValue ReachValue::failure(std::string message) {
  return ReachValue(ReachFail{std::make_shared<const std::string>(std::move(message))});
}

std::strong_ordering compare(const ReachValue& a, const ReachValue& b) {
  assert(a.data_.index() == b.data_.index() && !a.is_fail() && "values of one type are compared");
  if (const auto* node = std::get_if<ReachNodeRef>(&a.data_)) return node->index <=> b.node().index;
  if (const auto* number = std::get_if<std::int64_t>(&a.data_)) return *number <=> b.number();
  if (const auto* truth = std::get_if<bool>(&a.data_)) return *truth <=> b.boolean();
  if (a.is_set()) return compare_elements(a.elements(), b.elements());
  return a.text().compare(b.text()) <=> 0;
}

std::string to_string(const ReachValue& value) {
  if (const auto* node = std::get_if<ReachNodeRef>(&value.data_)) return text_of(*node);
  if (const auto* number = std::get_if<std::int64_t>(&value.data_)) return std::to_string(*number);
  if (const auto* truth = std::get_if<bool>(&value.data_)) return *truth ? "true" : "false";
  if (value.is_set()) return text_of(value.elements());
  if (value.is_fail()) return "fail " + quoted(*value.fail().message);
  return quoted(value.text());
}

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (byte < ' ' || byte == 127) {
      result += base::format_message("\\%03o", byte);
    } else {
      result += c;
    }
  }
  return result + '"';
}

bool is_at_most(const ReachValue& a, const ReachValue& b) {
  if (!a.is_set()) return compare(a, b) <= 0;
  return std::ranges::includes(b.elements(), a.elements(), comes_before);
}

ReachValue intersect(const ReachValue& a, const ReachValue& b) {
  return combine(a, b, std::ranges::set_intersection);
}

ReachValue subtract(const ReachValue& a, const ReachValue& b) {
  return combine(a, b, std::ranges::set_difference);
}

bool contains(const ReachValue& set, const ReachValue& element) {
  return std::ranges::binary_search(set.elements(), element, comes_before);
}

}  // namespace vorel::reachlang
