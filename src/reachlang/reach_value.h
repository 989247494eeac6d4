// reachlang/reach_value.h - the values of constant expressions.
// Here:      ReachValue and its alternatives, orders, operations on sets, the text of a value.
// Not here:  operators that look at a process (reachlang/node_operators.h).
//
// Values are cheap to copy: texts and sets are shared and never change.
#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "reachlang/reach_type.h"

namespace vorel::reachlang {

class ReachValue;

// What the operator fail, or an error of evaluation, leaves behind; it goes up to the root.
struct ReachFail {
  std::shared_ptr<const std::string> message;
  bool is_written = false;  // by the operator fail, so that it may only stand in a constant place
};

// A condition, event, place, transition or signal of the process.
struct ReachNodeRef {
  BaseType kind = BaseType::fail;
  std::uint32_t index = 0;
  const std::string* name = nullptr;  // in the net; null for conditions and events
};

// Sorted by compare(), without duplicates. All elements have one type.
using ReachElements = std::vector<ReachValue>;

class ReachValue {
 public:
  using Text = std::shared_ptr<const std::string>;
  using Set = std::shared_ptr<const ReachElements>;

  ReachValue() = default;  // a fail without text
  explicit ReachValue(bool value) : data_{value} {}
  explicit ReachValue(std::int64_t value) : data_{value} {}
  explicit ReachValue(std::string text)
      : data_{std::make_shared<const std::string>(std::move(text))} {}
  explicit ReachValue(const char*) = delete;  // it would become a bool
  explicit ReachValue(ReachNodeRef node) : data_{node} {}
  explicit ReachValue(ReachFail fail) : data_{std::move(fail)} {}
  // Sorts the elements and removes duplicates.
  static ReachValue set_of(ReachElements elements);
  static ReachValue failure(std::string message);

  // Each of these may be asked only of the alternative that it names.
  bool boolean() const { return std::get<bool>(data_); }
  std::int64_t number() const { return std::get<std::int64_t>(data_); }
  const std::string& text() const { return *std::get<Text>(data_); }
  const ReachNodeRef& node() const { return std::get<ReachNodeRef>(data_); }
  const ReachElements& elements() const { return *std::get<Set>(data_); }
  const ReachFail& fail() const { return std::get<ReachFail>(data_); }

  bool is_fail() const { return std::holds_alternative<ReachFail>(data_); }
  bool is_set() const { return std::holds_alternative<Set>(data_); }
  bool is_number() const { return std::holds_alternative<std::int64_t>(data_); }
  bool is_text() const { return std::holds_alternative<Text>(data_); }
  bool is_node() const { return std::holds_alternative<ReachNodeRef>(data_); }

  // A total order of the values of one type: false before true, numbers by size, texts by bytes,
  // nodes by number, sets element by element.
  friend std::strong_ordering compare(const ReachValue& a, const ReachValue& b);
  // In the source form of the language: "{1, 2}", P"p", E 3. A text is quoted.
  friend std::string to_string(const ReachValue& value);

 private:
  std::variant<ReachFail, bool, std::int64_t, Text, ReachNodeRef, Set> data_;
};

std::strong_ordering compare(const ReachValue& a, const ReachValue& b);
std::string to_string(const ReachValue& value);

// A text as the language writes it, with quotes and escapes.
std::string quoted(const std::string& text);

// The order of the operator <=: for sets inclusion, for all others that of compare().
bool is_at_most(const ReachValue& a, const ReachValue& b);

ReachValue intersect(const ReachValue& a, const ReachValue& b);
ReachValue subtract(const ReachValue& a, const ReachValue& b);
bool contains(const ReachValue& set, const ReachValue& element);

}  // namespace vorel::reachlang
