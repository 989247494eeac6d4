// tests/support/legacy_files.h - for the tests of the formats *.mci and *.mp.
// Here:      files as text in memory, reading with the messages caught, processes as text to
// compare.
#pragma once

#include <initializer_list>
#include <istream>
#include <memory>
#include <sstream>
#include <string>

#include "net/process.h"
#include "support/caught_messages.h"

namespace vorel::support {

// Little-endian words, and zero-terminated names.
inline std::string words(std::initializer_list<std::uint32_t> values) {
  std::string bytes;
  for (const std::uint32_t value : values) {
    for (int shift = 0; shift < 32; shift += 8) {
      bytes.push_back(static_cast<char>(static_cast<unsigned char>(value >> shift)));
    }
  }
  return bytes;
}
inline std::string names(std::initializer_list<std::string> values) {
  std::string bytes;
  for (const std::string& value : values) bytes.append(value).push_back('\0');
  return bytes;
}

inline std::string deprecation(const std::string& format) {
  return "\nWarning: the legacy " + format +
         " format is deprecated, as it does not store sufficient information for some applications "
         "and may result in errorneous output; you are STRONGLY ADVISED to switch to the new "
         "PNML-based format\n";
}

template <class P>
struct ReadResult {
  std::unique_ptr<P> process;
  std::string messages;
};
template <class P>
ReadResult<P> read_bytes(std::unique_ptr<P> (*reader)(std::istream&, const std::string&),
                         const std::string& bytes) {
  const CaughtMessages messages;
  std::istringstream stream(bytes);
  auto process = reader(stream, "FILE");
  return {std::move(process), messages.text()};
}

namespace describing {

template <class List>
void add_indices(std::ostream& out, const char* before, const List& list) {
  out << before;
  for (const auto* element : list) out << ' ' << element->index;
}

template <class T>
void add_transition(std::ostream& out, const T& transition) {
  out << "transition " << transition.name;
  if constexpr (requires { transition.signal; }) {
    out << " = " << transition.signal->name << " kind " << int(transition.signal->kind) << " from "
        << int(transition.signal->initial_value) << " sign " << int(transition.sign);
  }
  add_indices(out, " <-", transition.preset);
  add_indices(out, " ->", transition.postset);
  out << '\n';
}

template <class E>
void add_event(std::ostream& out, const E& event) {
  out << "event " << event.transition->name;
  add_indices(out, " <-", event.preset);
  add_indices(out, " ->", event.postset);
  if (event.is_cut_off()) out << " cut-off";
  if constexpr (requires { event.cut_off.is_unknown(); }) {
    if (event.cut_off.is_unknown()) out << " of ?";
    if (event.is_cut_off() && !event.cut_off.is_unknown()) {
      add_indices(out, " of", event.cut_off.correspondents());
    }
  }
  out << '\n';
}

template <class C>
void add_condition(std::ostream& out, const C& condition) {
  out << "condition " << condition.place->name;
  if constexpr (requires { condition.occurrence_depth; }) {
    out << " depth " << condition.occurrence_depth << " marked " << condition.initial_marking;
  }
  add_indices(out, " <-", condition.producers());
  add_indices(out, " ->", condition.postset);
  out << '\n';
}

}  // namespace describing

// Everything in the process, a line per element; neighbours by number.
template <net::Process P>
std::string describe(const P& process) {
  std::ostringstream out;
  for (const auto& place : process.places) {
    out << "place " << place->name << " marked " << place->initial_marking;
    describing::add_indices(out, " <-", place->preset);
    describing::add_indices(out, " ->", place->postset);
    out << '\n';
  }
  for (const auto& transition : process.transitions) describing::add_transition(out, *transition);
  for (const auto& condition : process.conditions) describing::add_condition(out, *condition);
  for (const auto& event : process.events) describing::add_event(out, *event);
  return out.str();
}

// The formats keep the arcs of those transitions only that have events.
template <net::Process P>
void forget_arcs_of_dead_transitions(P& process) {
  const auto clear = [](const auto& list) {
    for (const auto& node : list) {
      node->preset.clear();
      node->postset.clear();
    }
  };
  clear(process.places);
  clear(process.transitions);
  net::rebuild_arcs(process);
  net::sort_adjacency(process);
}

}  // namespace vorel::support
