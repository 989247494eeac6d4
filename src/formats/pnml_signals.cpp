#include "formats/pnml_signals.h"

#include <cassert>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/messages.h"

namespace vorel::formats::pnml {
namespace {

template <class Value>
struct Word {
  std::string_view word;
  Value value;
};
constexpr Word<net::SignalKind> kinds[] = {{"input", net::SignalKind::input},
                                           {"output", net::SignalKind::output},
                                           {"internal", net::SignalKind::internal},
                                           {"dummy", net::SignalKind::dummy}};
constexpr Word<std::uint8_t> initial_values[] = {{"0", 0}, {"1", 1}, {"?", net::unknown_value}};
constexpr Word<net::Sign> signs[] = {
    {"+", net::Sign::plus}, {"-", net::Sign::minus}, {"~", net::Sign::toggle}};

// What the value of the attribute stands for; nullopt after an error.
template <class Value, std::size_t n>
std::optional<Value> meaning(const Word<Value> (&words)[n], const XmlNode& element,
                             const XmlAttribute& attribute) {
  for (const auto& [word, value] : words) {
    if (word == value_of(attribute)) return value;
  }
  report_incorrect_value(element, attribute);
  return std::nullopt;
}

template <class Value, std::size_t n>
std::optional<Value> require_meaning(const Word<Value> (&words)[n], const XmlNode& element,
                                     std::string_view name) {
  const XmlAttribute* const found = require_attribute(element, name);
  return found == nullptr ? std::nullopt : meaning(words, element, *found);
}

std::optional<std::uint8_t> initial_value_of(const XmlNode& element) {
  const XmlAttribute* const value = attribute(element, "initialValue");
  return value == nullptr ? net::unknown_value : meaning(initial_values, element, *value);
}

}  // namespace

bool SignalTable::read(const XmlNode& page, net::Stg& stg) {
  for (const XmlNode* node = page.first_node(); node != nullptr; node = node->next_sibling()) {
    if (name_of(*node) == "signal" && !read_signal(*node, stg)) return false;
  }
  net::sort_signals(stg);
  return true;
}

bool SignalTable::read_signal(const XmlNode& element, net::Stg& stg) {
  const XmlAttribute* const id = require_attribute(element, "id");
  if (id == nullptr) return false;
  if (!ids_.insert(value_of(*id))) {
    report_duplicate_id(value_of(*id));
    return false;
  }
  auto name = require_text(element, "name");
  if (!name) return false;
  const auto kind = require_meaning(kinds, element, "type");
  if (!kind) return false;
  const auto value = initial_value_of(element);
  if (!value) return false;

  net::Signal& signal = net::add_signal(stg, std::move(*name), *kind);
  signal.initial_value = *value;
  signals_.push_back(&signal);
  assert(signals_.size() == ids_.size() && signals_.size() == stg.signals.size());
  if (!names_.insert(signal.name)) {
    base::print_error("signal " + signal.name + " is declared more then once (file XML, line 0)");
    return false;
  }
  if (signal.is_dummy() && *value != net::unknown_value) {
    base::print_warning("dummy signal " + signal.name + " has an initial value distinct from '?'");
  }
  return true;
}

bool SignalTable::label(const XmlNode& element, net::StgTransition& transition) const {
  const XmlNode* const label = require_child(element, "signal");
  const XmlAttribute* const ref = label == nullptr ? nullptr : require_attribute(*label, "ref");
  if (ref == nullptr) return false;
  const std::uint32_t number = ids_.find(value_of(*ref));
  if (number == base::no_index) {
    report_undeclared(value_of(*ref));
    return false;
  }
  const auto sign = require_meaning(signs, *label, "sign");
  if (!sign) return false;
  assert(number < signals_.size());
  transition.signal = signals_[number];
  transition.sign = *sign;
  return true;
}

}  // namespace vorel::formats::pnml
