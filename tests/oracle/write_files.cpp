#include "oracle/write_files.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <vector>

namespace vorel::oracle {
namespace {

std::string escaped(const std::string& text) {
  static const std::map<char, std::string> references{
      {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&apos;"}};
  std::string result;
  for (const char c : text) result += references.contains(c) ? references.at(c) : std::string{c};
  return result;
}

std::string id(char letter, std::uint32_t index) { return letter + std::to_string(index); }
std::string named(const std::string& element, const std::string& text) {
  return "<" + element + "><text>" + escaped(text) + "</text></" + element + ">";
}
std::string marking_element(std::uint32_t tokens) {
  return tokens == 0 ? "" : named("initialMarking", std::to_string(tokens));
}
std::string arc(const std::string& source, const std::string& target) {
  return "<arc source=\"" + source + "\" target=\"" + target + "\"/>\n";
}

std::string signal_reference(const net::Transition&) { return ""; }
std::string signal_reference(const net::StgTransition& transition) {
  const char sign = "+-~"[static_cast<std::size_t>(transition.sign)];
  return "<signal ref=\"" + id('s', transition.signal->index) + "\" sign=\"" + sign + "\"/>";
}

std::string signal_elements(const net::Net&) { return ""; }
std::string signal_elements(const net::Stg& stg) {
  constexpr const char* kinds[] = {"input", "output", "internal", "dummy"};
  std::string text;
  for (const auto& signal : stg.signals) {
    text += "<signal id=\"" + id('s', signal->index) + "\" type=\"" +
            kinds[static_cast<std::size_t>(signal->kind)] + "\" initialValue=\"" +
            "01?"[signal->initial_value] + "\">" + named("name", signal->name) + "</signal>\n";
  }
  return text;
}

template <class N>
std::string net_page(const N& net) {
  std::string text = "<page>\n" + signal_elements(net);
  for (const auto& place : net.places) {
    text += "<place id=\"" + id('p', place->index) + "\">" + named("name", place->name) +
            marking_element(place->initial_marking) + "</place>\n";
  }
  for (const auto& transition : net.transitions) {
    text += "<transition id=\"" + id('t', transition->index) + "\">" +
            named("name", transition->name) + signal_reference(*transition) + "</transition>\n";
  }
  for (const auto& t : net.transitions) {
    for (const auto* p : t->preset) text += arc(id('p', p->index), id('t', t->index));
    for (const auto* p : t->postset) text += arc(id('t', t->index), id('p', p->index));
  }
  return text + "</page>\n";
}

template <class N>
std::string condition_details(const net::ConditionOf<N>&) {
  return "";
}
template <class N>
std::string condition_details(const net::MpConditionOf<N>& condition) {
  return named("occurrence_depth", std::to_string(condition.occurrence_depth)) +
         marking_element(condition.initial_marking);
}

template <class N>
std::string cut_off_element(const net::EventOf<N>& event) {
  if (!event.is_cut_off()) return "";
  if (event.cut_off.is_unknown()) return "<cut-off/>";
  std::string text = "<cut-off><correspondent";
  for (const auto* other : event.cut_off.correspondents()) {
    text += " ref=\"" + id('e', other->index) + "\"";
  }
  return text + "/></cut-off>";
}
template <class N>
std::string cut_off_element(const net::MpEventOf<N>& event) {
  return event.is_cut_off() ? "<cut-off/>" : "";
}

std::string original_node(char letter, std::uint32_t index) {
  return "<originalNode ref=\"" + id(letter, index) + "\"/>";
}

template <net::Process P>
bool lists_all_conditions(const P& process) {
  return std::ranges::all_of(process.events, [](const auto& event) {
    return std::ranges::all_of(event->postset,
                               [](const auto* c) { return c->index != base::no_index; });
  });
}

template <net::Process P>
std::string process_page(const P& process) {
  assert(lists_all_conditions(process));
  std::string text = "<page>\n";
  for (const auto& condition : process.conditions) {
    text += "<place id=\"" + id('c', condition->index) + "\">" +
            original_node('p', condition->place->index) + condition_details(*condition) +
            "</place>\n";
  }
  for (const auto& event : process.events) {
    text += "<transition id=\"" + id('e', event->index) + "\">" +
            original_node('t', event->transition->index) + cut_off_element(*event) +
            "</transition>\n";
  }
  for (const auto& e : process.events) {
    for (const auto* c : e->preset) text += arc(id('c', c->index), id('e', e->index));
    for (const auto* c : e->postset) text += arc(id('e', e->index), id('c', c->index));
  }
  return text + "</page>\n";
}

void add_word(std::string& out, std::uint32_t word) {
  for (int shift = 0; shift < 32; shift += 8) out += static_cast<char>((word >> shift) & 0xFFu);
}

std::string file_name_of(const net::Transition& transition) { return transition.name; }
std::string file_name_of(const net::StgTransition& transition) {
  constexpr const char* prefixes[] = {"i.", "O.", "I.", "d."};
  return prefixes[static_cast<std::size_t>(transition.signal->kind)] + transition.name;
}

// Transitions in the order of their names in the file, and the position of each there.
template <class N>
class FileOrder {
 public:
  explicit FileOrder(const N& net) : position_(net.transitions.size()) {
    for (const auto& transition : net.transitions) in_order_.push_back(transition.get());
    std::ranges::sort(in_order_, [](const auto* a, const auto* b) {
      return net::name_less(file_name_of(*a), file_name_of(*b));
    });
    for (std::uint32_t i = 0; i < in_order_.size(); ++i) position_[in_order_[i]->index] = i;
  }
  const std::vector<const typename N::Transition*>& in_order() const { return in_order_; }
  std::uint32_t position(const typename N::Transition& t) const { return position_[t.index]; }

 private:
  std::vector<const typename N::Transition*> in_order_;
  std::vector<std::uint32_t> position_;
};

template <class N>
std::size_t longest_name(const N& net) {
  std::size_t length = 0;
  for (const auto& place : net.places) length = std::max(length, place->name.size());
  for (const auto& t : net.transitions) length = std::max(length, file_name_of(*t).size());
  return length;
}

template <class N>
void add_condition_record(std::string& out, const net::ConditionOf<N>& condition) {
  add_word(out, condition.place->index + 1);
  add_word(out, condition.is_initial() ? 0 : condition.pre_event->index + 1);
  for (const auto* event : condition.postset) add_word(out, event->index + 1);
  add_word(out, 0);
}

template <class N>
void add_cut_off_record(std::string& out, const net::EventOf<N>& event) {
  add_word(out, event.index + 1);
  if (event.cut_off.is_unknown() || event.cut_off.correspondents().size() > 1) {
    add_word(out, 0xFFFFFFFFu);
  } else if (event.cut_off.is_initial_marking()) {
    add_word(out, 0);
  } else {
    add_word(out, event.cut_off.correspondents().front()->index + 1);
  }
}

std::string row(std::initializer_list<std::size_t> numbers) {
  std::string text;
  for (const std::size_t number : numbers) {
    text += (text.empty() ? "" : " ") + std::to_string(number);
  }
  return text;
}

}  // namespace

template <net::Process P>
std::string pnml_text(const P& process) {
  using N = typename P::NetType;
  const std::string net_kind = N::has_signals ? "STG" : "low_level_net";
  const std::string kind = (P::is_merged ? "merged_process:" : "branching_process:") + net_kind;
  return "<pnml>\n<net id=\"process\" type=\"" + kind +
         "\">\n<original_net>\n<net id=\"original\" type=\"" + net_kind + "\">\n" +
         net_page<N>(process) + "</net>\n</original_net>\n" + process_page(process) +
         "</net>\n</pnml>\n";
}

template <class N>
std::string mci_text(const net::PrefixOf<N>& prefix) {
  const FileOrder<N> order(prefix);
  assert(lists_all_conditions(prefix));
  std::string out;
  add_word(out, static_cast<std::uint32_t>(prefix.conditions.size()));
  add_word(out, static_cast<std::uint32_t>(prefix.events.size()));
  for (const auto& event : prefix.events) add_word(out, order.position(*event->transition) + 1);
  for (const auto& condition : prefix.conditions) add_condition_record(out, *condition);
  for (const auto& event : prefix.events) {
    if (event->is_cut_off()) add_cut_off_record(out, *event);
  }
  add_word(out, 0);
  add_word(out, 0);
  add_word(out, static_cast<std::uint32_t>(prefix.places.size()));
  add_word(out, static_cast<std::uint32_t>(prefix.transitions.size()));
  add_word(out, static_cast<std::uint32_t>(longest_name<N>(prefix)));
  for (const auto& place : prefix.places) out += place->name + '\0';
  out += '\0';
  for (const auto* transition : order.in_order()) out += file_name_of(*transition) + '\0';
  out += '\0';
  return out;
}

template <class N>
std::string mp_text(const net::MergedProcessOf<N>& process) {
  assert(lists_all_conditions(process));
  std::string text = row({process.conditions.size(), process.events.size(), process.places.size(),
                          process.transitions.size()}) +
                     "\n";
  for (const auto& condition : process.conditions) {
    text += row({condition->place->index + 1, static_cast<std::size_t>(condition->occurrence_depth),
                 condition->initial_marking}) +
            "\n";
  }
  for (const auto& event : process.events) {
    text += row({event->transition->index + 1, event->is_cut_off() ? 1u : 0u, event->preset.size(),
                 event->postset.size()});
    for (const auto* condition : event->preset) text += " " + std::to_string(condition->index);
    for (const auto* condition : event->postset) text += " " + std::to_string(condition->index);
    text += "\n";
  }
  text += std::to_string(longest_name<N>(process)) + "\n";
  for (const auto& place : process.places) text += place->name + "\n";
  for (const auto& transition : process.transitions) text += file_name_of(*transition) + "\n";
  return text;
}

void write_file(const std::string& path, const std::string& content) {
  std::ofstream stream(path, std::ios::binary);
  stream << content << std::flush;
  if (stream) return;
  std::fprintf(stderr, "cannot write %s\n", path.c_str());
  std::abort();
}

template std::string pnml_text(const net::NetPrefix&);
template std::string pnml_text(const net::StgPrefix&);
template std::string pnml_text(const net::NetMergedProcess&);
template std::string pnml_text(const net::StgMergedProcess&);
template std::string mci_text(const net::NetPrefix&);
template std::string mci_text(const net::StgPrefix&);
template std::string mp_text(const net::NetMergedProcess&);
template std::string mp_text(const net::StgMergedProcess&);

}  // namespace vorel::oracle
