#include "bench/make_prefix.h"

#include <algorithm>
#include <string>

namespace vorel::bench {
namespace {

using Copy = PrefixFamily::Copy;

// A third of the signals are inputs, the others outputs.
bool is_input(std::uint32_t signal) { return signal % 3 == 0; }

std::string copy_name(const Copy& copy, const std::string& name) {
  return "g" + std::to_string(copy.number) + name;
}

std::string node(char letter, std::uint64_t number) { return letter + std::to_string(number); }

class PnmlWriter {
 public:
  PnmlWriter(const PrefixFamily& family, NetKind kind, std::ostream& out)
      : family_{family}, is_stg_{kind == NetKind::stg}, out_{out} {}

  void run() {
    const std::string kind = is_stg_ ? "STG" : "low_level_net";
    out_ << "<pnml>\n<net id=\"process\" type=\"branching_process:" << kind
         << "\">\n<original_net>\n<net id=\"original\" type=\"" << kind << "\">\n<page>\n";
    for (const Copy& copy : family_.copies()) {
      if (is_stg_) write_signals(copy);
      write_places(copy);
      write_transitions(copy);
    }
    for (const Copy& copy : family_.copies()) write_net_arcs(copy);
    out_ << "</page>\n</net>\n</original_net>\n<page>\n";
    for (const Copy& copy : family_.copies()) {
      write_conditions(copy);
      write_events(copy);
    }
    for (const Copy& copy : family_.copies()) write_links(copy);
    out_ << "</page>\n</net>\n</pnml>\n";
  }

 private:
  std::string name(const Copy& copy, const std::string& text) const {
    return "<name><text>" + copy_name(copy, text) + "</text></name>";
  }

  void write_signals(const Copy& copy) {
    for (std::uint32_t i = 0; i < copy.group->signals.size(); ++i) {
      out_ << "<signal id=\"" << node('s', copy.start.signals + i) << "\" type=\""
           << (is_input(i) ? "input" : "output") << "\" initialValue=\"?\">"
           << name(copy, copy.group->signals[i]) << "</signal>\n";
    }
  }

  void write_places(const Copy& copy) {
    std::vector<bool> is_marked(copy.group->places.size());
    for (const std::uint32_t place : copy.group->marked) is_marked[place] = true;
    for (std::uint32_t i = 0; i < copy.group->places.size(); ++i) {
      out_ << "<place id=\"" << node('p', copy.start.places + i) << "\">"
           << name(copy, copy.group->places[i])
           << (is_marked[i] ? "<initialMarking><text>1</text></initialMarking>" : "")
           << "</place>\n";
    }
  }

  void write_transitions(const Copy& copy) {
    for (std::uint32_t i = 0; i < copy.group->transitions.size(); ++i) {
      const auto& row = copy.group->transitions[i];
      out_ << "<transition id=\"" << node('t', copy.start.transitions + i) << "\">"
           << name(copy, row.name);
      if (is_stg_) {
        out_ << "<signal ref=\"" << node('s', copy.start.signals + row.signal) << "\" sign=\""
             << (row.falls ? '-' : '+') << "\"/>";
      }
      out_ << "</transition>\n";
    }
  }

  void write_arc(const std::string& source, const std::string& target) {
    out_ << "<arc source=\"" << source << "\" target=\"" << target << "\"/>\n";
  }

  void write_net_arcs(const Copy& copy) {
    for (std::uint32_t i = 0; i < copy.group->transitions.size(); ++i) {
      const auto& row = copy.group->transitions[i];
      const std::string transition = node('t', copy.start.transitions + i);
      for (const auto place : row.preset) {
        write_arc(node('p', copy.start.places + place), transition);
      }
      for (const auto place : row.postset) {
        write_arc(transition, node('p', copy.start.places + place));
      }
    }
  }

  void write_conditions(const Copy& copy) {
    for (std::uint32_t i = 0; i < copy.group->conditions.size(); ++i) {
      out_ << "<place id=\"" << node('c', copy.start.conditions + i) << "\"><originalNode ref=\""
           << node('p', copy.start.places + copy.group->conditions[i].place) << "\"/></place>\n";
    }
  }

  void write_events(const Copy& copy) {
    for (std::uint32_t i = 0; i < copy.group->events.size(); ++i) {
      const auto& row = copy.group->events[i];
      out_ << "<transition id=\"" << node('e', copy.start.events + i) << "\"><originalNode ref=\""
           << node('t', copy.start.transitions + row.transition) << "\"/>";
      if (row.cut_off != Group::no_cut_off) out_ << cut_off_element(copy, row.cut_off);
      out_ << "</transition>\n";
    }
  }

  std::string cut_off_element(const Copy& copy, std::int32_t cut_off) const {
    // With other groups beside it, one that starts again has still reached the initial marking.
    if (cut_off == Group::initial_marking) return "<cut-off><correspondent/></cut-off>";
    const auto event = copy.start.events + static_cast<std::uint32_t>(cut_off);
    return "<cut-off><correspondent ref=\"" + node('e', event) + "\"/></cut-off>";
  }

  void write_links(const Copy& copy) {
    for (std::uint32_t i = 0; i < copy.group->events.size(); ++i) {
      const auto& row = copy.group->events[i];
      const std::string event = node('e', copy.start.events + i);
      for (const auto condition : row.preset) {
        write_arc(node('c', copy.start.conditions + condition), event);
      }
      for (const auto condition : row.postset) {
        write_arc(event, node('c', copy.start.conditions + condition));
      }
    }
  }

  const PrefixFamily& family_;
  bool is_stg_;
  std::ostream& out_;
};

class MciWriter {
 public:
  MciWriter(const PrefixFamily& family, NetKind kind, std::ostream& out)
      : family_{family}, is_stg_{kind == NetKind::stg}, out_{out} {}

  void run() {
    word(family_.sizes().conditions);
    word(family_.sizes().events);
    for (const Copy& copy : family_.copies()) {
      for (const auto& row : copy.group->events) {
        word(copy.start.transitions + row.transition + 1);
      }
    }
    for (const Copy& copy : family_.copies()) write_conditions(copy);
    for (const Copy& copy : family_.copies()) write_cut_offs(copy);
    word(0);
    word(0);
    word(family_.sizes().places);
    word(family_.sizes().transitions);
    word(longest_name());
    for (const Copy& copy : family_.copies()) {
      for (const std::string& place : copy.group->places) out_ << copy_name(copy, place) << '\0';
    }
    out_ << '\0';
    for (const Copy& copy : family_.copies()) {
      for (const auto& row : copy.group->transitions) out_ << transition_name(copy, row) << '\0';
    }
    out_ << '\0';
  }

 private:
  void word(std::uint64_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
      out_.put(static_cast<char>((value >> shift) & 0xFFu));
    }
  }

  std::string transition_name(const Copy& copy, const Group::TransitionRow& row) const {
    const std::string prefix = !is_stg_ ? "" : is_input(row.signal) ? "i." : "O.";
    return prefix + copy_name(copy, row.name);
  }

  std::size_t longest_name() const {
    std::size_t length = 0;
    for (const Copy& copy : family_.copies()) {
      for (const std::string& place : copy.group->places) {
        length = std::max(length, copy_name(copy, place).size());
      }
      for (const auto& row : copy.group->transitions) {
        length = std::max(length, transition_name(copy, row).size());
      }
    }
    return length;
  }

  void write_conditions(const Copy& copy) {
    for (const auto& row : copy.group->conditions) {
      word(copy.start.places + row.place + 1);
      word(row.producer < 0 ? 0 : copy.start.events + static_cast<std::uint64_t>(row.producer) + 1);
      for (const auto consumer : row.consumers) word(copy.start.events + consumer + 1);
      word(0);
    }
  }

  void write_cut_offs(const Copy& copy) {
    for (std::uint32_t i = 0; i < copy.group->events.size(); ++i) {
      const std::int32_t cut_off = copy.group->events[i].cut_off;
      if (cut_off == Group::no_cut_off) continue;
      word(copy.start.events + i + 1);
      word(cut_off == Group::initial_marking
               ? 0
               : copy.start.events + static_cast<std::uint32_t>(cut_off) + 1);
    }
  }

  const PrefixFamily& family_;
  bool is_stg_;
  std::ostream& out_;
};

}  // namespace

void write_pnml(const PrefixFamily& family, NetKind kind, std::ostream& out) {
  PnmlWriter(family, kind, out).run();
  out.flush();
}

void write_mci(const PrefixFamily& family, NetKind kind, std::ostream& out) {
  MciWriter(family, kind, out).run();
  out.flush();
}

}  // namespace vorel::bench
