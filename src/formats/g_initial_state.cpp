#include "formats/g_initial_state.h"

#include <algorithm>
#include <cassert>
#include <string>

namespace vorel::formats {
namespace {

constexpr std::string_view digits = "0123456789";
constexpr std::string_view value_digits = "01?";  // at the positions that are the values
static_assert(value_digits[net::unknown_value] == '?');

// "NAME=NUMBER" in two; the number is empty if the text has no other form.
struct Assignment {
  std::string_view name, number;
};
Assignment split_assignment(std::string_view text, std::string_view allowed_digits) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string_view::npos) return {text, {}};
  const std::string_view number = text.substr(equals + 1);
  if (number.find_first_not_of(allowed_digits) != std::string_view::npos || number.empty()) {
    return {text, {}};
  }
  return {text.substr(0, equals), number};
}

// "<...,...>"
bool is_pair(std::string_view name) {
  return name.starts_with('<') && name.ends_with('>') && name.find(',') != std::string_view::npos;
}

// The comma behind a place of a marking; those between "<" and ">" belong to the place.
std::size_t end_of_place(std::string_view text) {
  const std::size_t pair_end = text.starts_with('<') ? text.find('>') : 0;
  return std::min(text.size(), text.find(',', pair_end));
}

std::string_view without_leading_zeros(std::string_view number) {
  assert(!number.empty());
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size() - 1));
  return number;
}

}  // namespace

// Null after an error. A name that no arc knows may be that of a place without arcs, but hardly one
// that has the form of a place between two transitions.
net::StgPlace* GInitialState::place_to_mark(const GWord& word, std::string_view name) {
  if (net::StgPlace* const place = graph_.place_named(name)) return place;
  if (is_pair(name)) {
    source_.report(word.offset, "no arc goes through the marked place " + base::quoted(name));
    return nullptr;
  }
  if (name.empty()) {
    source_.report_expected(word.offset, "a place", word.text);
    return nullptr;
  }
  isolated_places_.note(word.offset, name);
  return graph_.add_isolated_place({name, word.offset});
}

bool GInitialState::put_tokens(const GWord& word, net::StgPlace& place, std::string_view tokens) {
  tokens = without_leading_zeros(tokens);
  if (tokens == "0") return true;
  if (tokens != "1") return source_.report_unsafe(word.offset, place.name, tokens);
  if (++place.initial_marking == 1) return true;
  return source_.report_unsafe(word.offset, place.name, std::to_string(place.initial_marking));
}

bool GInitialState::put_tokens(const GWord& word) {
  const bool is_name = graph_.place_named(word.text) != nullptr;  // whatever else it looks like
  auto [name, tokens] = is_name ? Assignment{word.text, {}} : split_assignment(word.text, digits);
  if (tokens.empty()) tokens = "1";
  net::StgPlace* place = place_to_mark(word, name);
  if (place == nullptr) return false;
  if (net::StgPlace* const twin = graph_.twin_of(place)) {
    if (place->initial_marking == 0) {
      marked_with_twin_.push_back({word, place});
    } else {
      place = twin;
    }
  }
  return put_tokens(word, *place, tokens);
}

// A name that two places share has to be there for both or for none.
bool GInitialState::twins_are_settled() const {
  for (const auto& [word, place] : marked_with_twin_) {
    assert(graph_.twin_of(place) != nullptr);
    if (place->initial_marking == graph_.twin_of(place)->initial_marking) continue;
    return source_.report(word.offset, base::quoted(word.text) +
                                           " is both the name of a place and that of the place "
                                           "between the two transitions, and one token for them "
                                           "is ambiguous");
  }
  return true;
}

// Whatever commas it has.
bool GInitialState::is_one_place(std::string_view text) const {
  return graph_.place_named(text) != nullptr ||
         graph_.place_named(split_assignment(text, digits).name) != nullptr;
}

bool GInitialState::put_tokens_on_each(const GWord& word) {
  if (is_one_place(word.text)) return put_tokens(word);
  for (std::size_t start = 0; start < word.text.size();) {
    const std::string_view rest = word.text.substr(start);
    const std::size_t end = end_of_place(rest);
    if (end > 0 && !put_tokens(GWord{rest.substr(0, end), word.offset + start})) return false;
    start += end + 1;
  }
  return true;
}

bool GInitialState::put_tokens(const std::vector<GWord>& words) {
  for (const GWord& word : words) {
    if (!put_tokens_on_each(word)) return false;
  }
  isolated_places_.warn(source_, "the marked place", "has no arcs");
  return twins_are_settled();
}

bool GInitialState::set_value(const GWord& word, net::Signal& signal, char digit) {
  const auto value = static_cast<std::uint8_t>(value_digits.find(digit));
  assert(value <= net::unknown_value);
  if (signal.is_dummy()) {
    return source_.report(word.offset,
                          "dummy " + base::quoted(signal.name) + " has an initial value");
  }
  if (signal.initial_value != net::unknown_value && signal.initial_value != value) {
    return source_.report(
        word.offset, "signal " + base::quoted(signal.name) + " has two different initial values");
  }
  signal.initial_value = value;
  return true;
}

bool GInitialState::set_value(const GWord& word, std::string_view name, char digit) {
  net::Signal* const signal = graph_.signal_named(name);
  return signal == nullptr ? source_.report_expected(word.offset, "a signal", word.text)
                           : set_value(word, *signal, digit);
}

bool GInitialState::set_value(const GWord& word) {
  if (word.text.starts_with('!')) return set_value(word, word.text.substr(1), '0');
  const Assignment parts = split_assignment(word.text, value_digits);
  return set_value(word, parts.name, parts.number.size() == 1 ? parts.number.front() : '1');
}

bool GInitialState::set_all_values(const GWord& word) {
  const auto is_dummy = [](const auto& signal) { return signal->is_dummy(); };
  const auto dummies = std::ranges::count_if(graph_.signals(), is_dummy);
  const std::size_t expected = graph_.signals().size() - static_cast<std::size_t>(dummies);
  if (word.text.size() != expected) {
    return source_.report_expected(word.offset, std::to_string(expected) + " initial values",
                                   word.text);
  }
  auto digit = word.text.begin();
  for (const auto& signal : graph_.signals()) {
    if (!signal->is_dummy() && !set_value(word, *signal, *digit++)) return false;
  }
  return true;
}

bool GInitialState::set_values(const std::vector<GWord>& words) {
  if (words.size() == 1 && graph_.signal_named(words[0].text) == nullptr &&
      words[0].text.find_first_not_of(value_digits) == std::string_view::npos) {
    return set_all_values(words[0]);
  }
  return std::ranges::all_of(words, [this](const GWord& word) { return set_value(word); });
}

}  // namespace vorel::formats
