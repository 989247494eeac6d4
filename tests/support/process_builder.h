// tests/support/process_builder.h - small processes written down by hand.
// One line of C++ per condition or event; names decide identity of places, transitions, signals.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "net/net.h"
#include "net/process.h"

namespace vorel::support {

template <net::Process P>
class ProcessBuilder {
 public:
  using Condition = typename P::Condition;
  using Event = typename P::Event;

  // A condition of the named place; in a prefix it is initial until an event produces it.
  Condition& condition(const std::string& place, std::uint32_t marking = 0, int depth = 1) {
    Condition& c = base::append_new(process->conditions);
    c.place = &named(process->places, place);
    if constexpr (P::is_merged) {
      c.initial_marking = marking;
      c.occurrence_depth = depth;
    }
    return c;
  }

  // In an STG the name carries the label, as in "O.x+/1"; it is kept without its prefix.
  Event& event(const std::string& transition, std::initializer_list<Condition*> preset,
               std::initializer_list<Condition*> postset, bool cut_off = false) {
    Event& e = base::append_new(process->events);
    e.transition = &named(process->transitions, transition);
    for (Condition* c : preset) net::add_link(*c, e);
    for (Condition* c : postset) net::add_link(e, *c);
    if (cut_off) e.mark_cut_off();
    return e;
  }

  // Numbers and sorts everything as a reader would.
  P& finish() {
    if constexpr (P::NetType::has_signals) label();
    net::sort_net(*process);
    net::rebuild_arcs(*process);
    net::sort_adjacency(*process);
    net::count_initial_marking(*process);
    return *process;
  }

  std::unique_ptr<P> process = std::make_unique<P>();

 private:
  template <class T>
  static T& named(base::OwnedList<T>& list, const std::string& name) {
    for (const auto& element : list) {
      if (element->name == name) return *element;
    }
    T& element = base::append_new(list);
    element.name = name;
    return element;
  }

  void label() {
    for (const auto& transition : process->transitions) {
      const auto mark = transition->name.find_first_of("+-~/");
      std::string signal = transition->name.substr(0, mark);
      net::SignalKind kind = net::SignalKind::output;
      if (signal.starts_with("i.")) kind = net::SignalKind::input;
      if (signal.starts_with("d.")) kind = net::SignalKind::dummy;
      net::Signal& found = named(process->signals, signal);
      found.kind = kind;
      transition->signal = &found;
      if (mark == std::string::npos) continue;
      if (transition->name[mark] == '+') transition->sign = net::Sign::plus;
      if (transition->name[mark] == '-') transition->sign = net::Sign::minus;
    }
    net::sort_signals(*process);
  }
};

// "marked p; t: p -> q; u!: q r -> p'; s": events with the names of their transitions, "!" behind
// that of a cut-off, and conditions alone. A prime makes another condition of a place, in a merged
// process that of the next depth; the tokens of one are told by "marked", once for each.
template <net::Process P>
std::unique_ptr<P> process_from(const std::string& text) {
  ProcessBuilder<P> b;
  std::map<std::string, typename P::Condition*> known;
  const auto condition = [&](const std::string& name) -> auto& {
    const auto primes = std::ranges::count(name, '\'');
    auto*& c = known[name];
    if (c == nullptr) {
      const std::string place = name.substr(0, name.find('\''));
      c = &b.condition(place, 0, 1 + static_cast<int>(primes));
    }
    return *c;
  };
  std::istringstream entries(text);
  for (std::string entry; std::getline(entries, entry, ';');) {
    std::istringstream words(entry);
    typename P::Event* event = nullptr;
    bool is_marked = false, is_behind = false;
    for (std::string word; words >> word;) {
      if (word.ends_with(':')) {
        const bool is_cut_off = word.ends_with("!:");
        event = &b.event(word.substr(0, word.size() - (is_cut_off ? 2 : 1)), {}, {}, is_cut_off);
      } else if (word == "marked" || word == "->") {
        (word == "->" ? is_behind : is_marked) = true;
      } else {
        auto& named = condition(word);
        if (event != nullptr)
          is_behind ? net::add_link(*event, named) : net::add_link(named, *event);
        if constexpr (P::is_merged) named.initial_marking += is_marked ? 1 : 0;
      }
    }
  }
  b.finish();
  return std::move(b.process);
}

}  // namespace vorel::support
