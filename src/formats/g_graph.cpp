#include "formats/g_graph.h"

#include <algorithm>
#include <cassert>
#include <tuple>
#include <utility>

namespace vorel::formats {
namespace {

constexpr std::string_view marks_of_label = "+-~/";  // that end the name of the signal

// The rest of a label behind its signal: [+|-|~] [/instance].
bool is_rest_of_label(std::string_view rest) {
  if (!rest.empty() && rest.front() != '/') rest.remove_prefix(1);
  return rest.empty() || (rest.size() > 1 && rest.front() == '/');
}

bool is_signed(std::string_view rest) { return !rest.empty() && rest.front() != '/'; }

net::Sign sign_of(std::string_view rest) {
  if (rest.starts_with('+')) return net::Sign::plus;
  return rest.starts_with('-') ? net::Sign::minus : net::Sign::toggle;
}

}  // namespace

bool GGraph::add_signal(const GWord& word, net::SignalKind kind) {
  if (word.text.find_first_of(marks_of_label) != std::string_view::npos) {
    return source_.report_expected(word.offset, "the name of a signal", word.text);
  }
  if (!signal_ids_.insert(word.text)) {
    return source_.report(word.offset, "signal " + base::quoted(word.text) + " is declared twice");
  }
  assert(signal_ids_.size() == stg_.signals.size() + 1);
  net::add_signal(stg_, std::string(word.text), kind);
  return true;
}

bool GGraph::add_transition(const GWord& word, net::Signal& label, std::string_view rest) {
  if (!is_rest_of_label(rest)) {
    return source_.report_expected(
        word.offset, "a sign or an instance number behind the signal " + base::quoted(label.name),
        word.text);
  }
  net::StgTransition& transition = base::append_new(stg_.transitions);
  transition.name = word.text;
  transition.signal = &label;
  if (!label.is_dummy()) transition.sign = sign_of(rest);
  if (label.is_dummy() && is_signed(rest)) signed_dummies_.note(word.offset, word.text);
  if (word.text.ends_with("/0")) instances_zero_.push_back(word);
  nodes_.push_back({nullptr, &transition});
  return true;
}

net::StgPlace& GGraph::add_place(const GWord& word) {
  net::StgPlace& place = base::append_new(stg_.places);
  place.name = word.text;
  nodes_.push_back({&place, nullptr});
  return place;
}

bool GGraph::add_node(const GWord& word) {
  const std::size_t end = std::min(word.text.size(), word.text.find_first_of(marks_of_label));
  const std::string_view name = word.text.substr(0, end), rest = word.text.substr(end);
  if (net::Signal* const label = signal_named(name)) return add_transition(word, *label, rest);
  if (is_signed(rest) && is_rest_of_label(rest) && !name.starts_with('<')) {
    return source_.report(word.offset,
                          "the signal of " + base::quoted(word.text) + " is not declared");
  }
  add_place(word);
  return true;
}

// Null after an error. The pointer is valid until the next call.
const GGraph::Node* GGraph::node_named(const GWord& word) {
  if (node_ids_.insert(word.text) && !add_node(word)) return nullptr;
  assert(nodes_.size() == node_ids_.size());
  return &nodes_[node_ids_.find(word.text)];
}

// What is declared has the name that it is declared with.
bool GGraph::is_weighted(const GWord& word) const {
  return !split_number(word.text).number.empty() && signal_named(word.text) == nullptr;
}

// "p=1" and "p(1)" become "p".
bool GGraph::take_weight(GWord& word) const {
  if (word.text.starts_with('=')) return source_.report_expected(word.offset, "a node", word.text);
  if (!is_weighted(word)) return true;
  const auto [name, weight] = split_number(word.text);
  if (name.empty()) return source_.report_expected(word.offset, "a node", word.text);
  if (weight != "1") return source_.report_expected(word.offset, "an arc of weight 1", word.text);
  word.text = name;
  return true;
}

bool GGraph::add_arcs(const std::vector<GWord>& words) {
  assert(!words.empty());
  if (words[0].text.starts_with('=') || is_weighted(words[0])) {
    return source_.report_expected(words[0].offset, "a node without a weight", words[0].text);
  }
  const Node* const source = node_named(words.front());
  if (source == nullptr) return false;
  const bool from_place = source->place != nullptr;
  const auto source_number = static_cast<std::uint32_t>(source - nodes_.data());
  for (GWord word : std::span(words).subspan(1)) {
    if (!take_weight(word)) return false;
    const Node* const target = node_named(word);
    if (target == nullptr) return false;
    if (from_place && target->place != nullptr) {
      return source_.report_expected(
          word.offset, "a transition behind the place " + base::quoted(words.front().text),
          word.text);
    }
    arcs_.push_back(
        {source_number, static_cast<std::uint32_t>(target - nodes_.data()), word.offset});
  }
  return true;
}

net::StgPlace& GGraph::add_implicit_place(const net::StgTransition& source,
                                          const net::StgTransition& target) {
  net::StgPlace& place = base::append_new(stg_.places);
  place.name = "<" + source.name + "," + target.name + ">";
  if (net::StgPlace* const written = place_named(place.name)) {
    twins_.emplace(written, &place);
    while (place_named(place.name) != nullptr) place.name += "_2";
  }
  [[maybe_unused]] const bool is_new = implicit_ids_.insert(place.name);
  assert(is_new && "each arc is connected once");
  implicit_places_.push_back(&place);
  return place;
}

void GGraph::connect(const Arc& arc) {
  assert(arc.source < nodes_.size() && arc.target < nodes_.size());
  const Node& source = nodes_[arc.source];
  const Node& target = nodes_[arc.target];
  if (source.place != nullptr) {
    assert(target.transition != nullptr && "checked when the line was read");
    net::add_arc(*source.place, *target.transition);
  } else if (target.place != nullptr) {
    net::add_arc(*source.transition, *target.place);
  } else {
    net::StgPlace& place = add_implicit_place(*source.transition, *target.transition);
    net::add_arc(*source.transition, place);
    net::add_arc(place, *target.transition);
  }
}

void GGraph::connect() {
  assert(implicit_places_.empty() && stg_.places.size() <= nodes_.size());
  const auto place_in_graph = [](const Arc& arc) { return std::tuple(arc.source, arc.target); };
  std::ranges::stable_sort(arcs_, {}, place_in_graph);
  const Arc* before = nullptr;
  for (const Arc& arc : arcs_) {
    if (before != nullptr && place_in_graph(*before) == place_in_graph(arc)) {
      repeated_arcs_.note(arc.offset, node_ids_.id(arc.target));
    } else {
      connect(arc);
    }
    before = &arc;
  }
}

net::StgPlace* GGraph::place_named(std::string_view name) const {
  const std::uint32_t node = node_ids_.find(name);
  if (node != base::no_index && nodes_[node].place != nullptr) return nodes_[node].place;
  const std::uint32_t implicit = implicit_ids_.find(name);
  return implicit == base::no_index ? nullptr : implicit_places_[implicit];
}

net::StgPlace* GGraph::add_isolated_place(const GWord& word) {
  const Node* const node = is_weighted(word) ? nullptr : node_named(word);
  if (is_weighted(word)) source_.report_expected(word.offset, "a place", word.text);
  if (node == nullptr) return nullptr;
  if (node->place == nullptr) source_.report_expected(word.offset, "a place", word.text);
  return node->place;
}

net::StgPlace* GGraph::twin_of(net::StgPlace* place) const {
  const auto twin = twins_.find(place);
  return twin == twins_.end() ? nullptr : twin->second;
}

bool GGraph::has_transition(std::string_view name) const {
  const std::uint32_t node = node_ids_.find(name);
  return node != base::no_index && nodes_[node].transition != nullptr;
}

net::Signal* GGraph::signal_named(std::string_view name) const {
  const std::uint32_t signal = signal_ids_.find(name);
  return signal == base::no_index ? nullptr : stg_.signals[signal].get();
}

// Some programs mean the same transition by "a+" and "a+/0"; no file should need both.
void GGraph::warn_of_instances_zero() {
  base::RepeatedFault pairs;
  for (const GWord& word : instances_zero_) {
    assert(word.text.ends_with("/0"));
    if (has_transition(word.text.substr(0, word.text.size() - 2))) {
      pairs.note(word.offset, word.text);
    }
  }
  pairs.warn(source_, "transition", "is taken for another one than that without \"/0\"");
}

net::Stg GGraph::finish() {
  signed_dummies_.warn(source_, "dummy transition", "cannot have sign");
  repeated_arcs_.warn(source_, "the arc to", "is repeated");
  warn_of_instances_zero();
  net::sort_signals(stg_);
  net::sort_net(stg_);
  return std::move(stg_);
}

}  // namespace vorel::formats
