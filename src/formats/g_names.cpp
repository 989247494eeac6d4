#include "formats/g_names.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "base/messages.h"
#include "formats/g_words.h"
#include "net/transition_label.h"

namespace vorel::formats {
namespace {

constexpr std::string_view marks_of_label = "+-~/";  // one of them ends the name of the signal

// One word, which is no comment, keyword, bracket or number of tokens.
bool is_word(std::string_view name) {
  const auto is_odd = [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte <= ' ' || byte == 127 || std::string_view("#{}=\\").find(c) != std::string::npos;
  };
  return !name.empty() && name.front() != '.' && std::ranges::none_of(name, is_odd);
}

// A reader takes it for an arc to another node, with a weight.
bool looks_weighted(std::string_view name) { return !split_number(name).number.empty(); }

// A word that can stand in the name of an implicit place.
bool is_word_of_pair(std::string_view name) {
  return is_word(name) && name.find_first_of("<,>") == std::string_view::npos;
}

bool is_sign(char c) { return c == '+' || c == '-' || c == '~'; }

// rest of label = [ "+" | "-" | "~" ] [ "/" instance ] .
bool is_rest_of_label(std::string_view rest) {
  if (!rest.empty() && is_sign(rest.front())) rest.remove_prefix(1);
  return rest.empty() || (rest.size() > 1 && rest.front() == '/');
}

bool tells_label(std::string_view name, const net::StgTransition& transition) {
  const net::Signal& signal = *transition.signal;
  if (!name.starts_with(signal.name)) return false;
  const std::string_view rest = name.substr(signal.name.size());
  const net::Sign told = rest.starts_with('+')   ? net::Sign::plus
                         : rest.starts_with('-') ? net::Sign::minus
                                                 : net::Sign::toggle;
  return is_rest_of_label(rest) && (signal.is_dummy() || told == transition.sign);
}

std::string label_text(const net::StgTransition& transition) {
  const net::Signal& signal = *transition.signal;
  if (signal.is_dummy()) return signal.name;
  return signal.name + std::string_view("+-~")[static_cast<std::size_t>(transition.sign)];
}

std::string pair_name(std::string_view source, std::string_view target) {
  return std::string("<").append(source).append(",").append(target).append(">");
}

// Names that had to be replaced: one warning for all.
class Replacements {
 public:
  void note(std::string_view name, std::string_view written) {
    if (count_++ == 0) {
      first_ = std::string("\"").append(name).append("\" is written as \"").append(written) + '"';
    }
  }
  void warn(std::string_view what) const {
    if (count_ == 0) return;
    base::print_warning(std::to_string(count_) + " name(s) of " + std::string(what) +
                        " do not suit the .g format; " + first_);
  }

 private:
  std::uint64_t count_ = 0;
  std::string first_;
};

class NameChooser {
 public:
  explicit NameChooser(const net::Stg& stg) : stg_{stg} {
    names_.transitions.resize(stg.transitions.size());
    names_.places.resize(stg.places.size());
    is_implicit_.resize(stg.places.size());
  }

  std::optional<GNames> run() {
    if (!accept_signals()) return std::nullopt;
    name_transitions();
    choose_implicit_places();
    name_explicit_places();
    return std::move(names_);
  }

 private:
  bool accept_signals() {
    for (const auto& signal : stg_.signals) {
      signals_.insert(signal->name);
      const bool is_sound = is_word_of_pair(signal->name) &&
                            signal->name.find_first_of(marks_of_label) == std::string::npos;
      if (is_sound) continue;
      base::print_error("the name of signal \"" + signal->name + "\" does not suit the .g format");
      return false;
    }
    return true;
  }

  // The names that suit come first, so that no replacement takes one of them.
  void name_transitions() {
    for (const auto& transition : stg_.transitions) {
      assert(transition->signal != nullptr && "every transition is labelled");
      const std::string_view name = net::without_kind_prefix(transition->name);
      if (!is_word_of_pair(name) || !tells_label(name, *transition)) continue;
      if (looks_weighted(name) && name != transition->signal->name) continue;
      if (taken_.emplace(name).second) names_.transitions[transition->index] = name;
    }
    Replacements replacements;
    for (const auto& transition : stg_.transitions) {
      std::string& name = names_.transitions[transition->index];
      if (!name.empty()) continue;
      name = fresh_name(label_text(*transition) + "/");
      replacements.note(transition->name, name);
    }
    replacements.warn("transitions");
  }

  std::string fresh_name(const std::string& base) {
    std::uint32_t& last = last_number_[base];
    std::string name;
    do {
      name = base + std::to_string(++last);
    } while (!taken_.insert(name).second);
    return name;
  }

  static bool has_two_ends(const net::StgPlace& place) {
    return place.preset.size() == 1 && place.postset.size() == 1;
  }
  std::string pair_name_of(const net::StgPlace& place) const {
    return pair_name(names_.transitions[place.preset.front()->index],
                     names_.transitions[place.postset.front()->index]);
  }

  void choose_implicit_places() {
    std::unordered_map<std::string, const net::StgPlace*> chosen;
    for (const auto& place : stg_.places) {
      if (!has_two_ends(*place)) continue;
      std::string pair = pair_name_of(*place);
      const bool has_this_name = place->name == pair;
      const auto [entry, is_first] = chosen.try_emplace(std::move(pair), place.get());
      if (is_first || !has_this_name) continue;
      entry->second = place.get();
    }
    for (const auto& [pair, place] : chosen) is_implicit_[place->index] = true;
    make_room_for_names(chosen);
  }

  // An implicit place makes room for one written by the name that it would have. It then is written
  // by name itself, which may have the same consequence.
  void make_room_for_names(const std::unordered_map<std::string, const net::StgPlace*>& chosen) {
    std::vector<const net::StgPlace*> written;
    for (const auto& place : stg_.places) {
      if (!is_implicit_[place->index]) written.push_back(place.get());
    }
    while (!written.empty()) {
      const auto entry = chosen.find(written.back()->name);
      written.pop_back();
      if (entry == chosen.end() || !is_implicit_[entry->second->index]) continue;
      is_implicit_[entry->second->index] = false;
      written.push_back(entry->second);
    }
  }

  bool suits(std::string_view name, const net::StgPlace& place) const {
    if (!is_word(name) || looks_weighted(name)) return false;
    const bool has_arcs = !place.preset.empty() || !place.postset.empty();
    if (!has_arcs && name.find(',') != std::string_view::npos) return false;
    if (name.front() == '<') {
      return has_arcs && name.find('>') != std::string_view::npos;
    }
    const std::size_t end = std::min(name.size(), name.find_first_of(marks_of_label));
    const std::string_view rest = name.substr(end);
    const bool is_label = !rest.empty() && is_sign(rest.front()) && is_rest_of_label(rest);
    return !is_label && !signals_.contains(name.substr(0, end));
  }

  void name_explicit_places() {
    for (const auto& place : stg_.places) {
      if (is_implicit_[place->index] || !suits(place->name, *place)) continue;
      if (taken_.insert(place->name).second) names_.places[place->index] = place->name;
    }
    Replacements replacements;
    for (const auto& place : stg_.places) {
      std::string& name = names_.places[place->index];
      if (is_implicit_[place->index] || !name.empty()) continue;
      do {
        name = fresh_name("place_");
      } while (!suits(name, *place));
      replacements.note(place->name, name);
    }
    replacements.warn("places");
  }

  const net::Stg& stg_;
  GNames names_;
  std::vector<bool> is_implicit_;                               // by index of the place
  std::unordered_set<std::string_view> signals_;                // their names
  std::unordered_set<std::string> taken_;                       // all words chosen so far
  std::unordered_map<std::string, std::uint32_t> last_number_;  // by base of fresh names
};

}  // namespace

std::optional<GNames> choose_g_names(const net::Stg& stg) { return NameChooser(stg).run(); }

}  // namespace vorel::formats
