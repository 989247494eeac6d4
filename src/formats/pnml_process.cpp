#include "formats/pnml_process.h"

#include <cassert>
#include <iostream>
#include <limits>
#include <utility>
#include <vector>

#include "base/messages.h"
#include "base/run_state.h"
#include "formats/pnml_arcs.h"
#include "formats/pnml_original_net.h"
#include "net/check.h"
#include "net/initial_values.h"
#include "net/sanity_checks.h"

namespace vorel::formats::pnml {
namespace {

template <net::Process P>
class ProcessReader {
 public:
  ProcessReader(Document& document, P& process) : document_{document}, process_{process} {}

  bool run(const XmlNode& element) {
    if (!read_original_net<N>(element, process_, original_)) return false;
    const XmlNode* const page = first_child(element, "page");
    if (page == nullptr) {
      base::note_silent_failure("it has no page");
      return false;
    }
    if (!nodes_.declare(*page)) return false;
    make_nodes();
    if (!read_nodes()) return false;
    const auto arcs =
        read_arcs(*page, nodes_, P::is_merged ? Producers::any : Producers::at_most_one);
    if (!arcs) return false;
    document_.release_nodes();  // the lists of links take their memory over
    enter_arcs(nodes_, *arcs, process_.conditions, process_.events);
    return true;
  }

 private:
  using N = typename P::NetType;
  using Condition = typename P::Condition;
  using Event = typename P::Event;

  void make_nodes() {
    process_.conditions.reserve(nodes_.place_count());
    process_.events.reserve(nodes_.transition_count());
    for (const PageNode& node : nodes_) {
      if (node.is_place) {
        base::append_new(process_.conditions);
      } else {
        base::append_new(process_.events);
      }
    }
  }

  bool read_nodes() {
    for (const PageNode& node : nodes_) {
      const bool read = node.is_place
                            ? read_condition(*node.element, *process_.conditions[node.index])
                            : read_event(*node.element, *process_.events[node.index]);
      if (!read) return false;
    }
    return true;
  }

  bool read_condition(const XmlNode& element, Condition& condition) {
    const XmlNode* const place = require_child(element, "originalNode");
    if (place == nullptr) return false;
    const std::uint32_t index = original_.nodes.resolve_place(*place);
    if (index == base::no_index) return false;
    assert(index < original_.places.size());
    condition.place = original_.places[index];
    if constexpr (P::is_merged) return read_occurrence(element, condition);
    return true;
  }

  bool read_occurrence(const XmlNode& element, Condition& condition) {
    const auto text = require_text(element, "occurrence_depth");
    if (!text) return false;
    const auto depth = number_of(*text, {1, std::numeric_limits<std::int32_t>::max()});
    if (!depth) return false;
    const auto tokens = initial_marking_of(element);
    if (!tokens) return false;
    assert(*depth >= 1);
    condition.occurrence_depth = static_cast<std::int32_t>(*depth);
    condition.initial_marking = *tokens;
    return true;
  }

  bool read_event(const XmlNode& element, Event& event) {
    const XmlNode* const transition = require_child(element, "originalNode");
    if (transition == nullptr) return false;
    const std::uint32_t index = original_.nodes.resolve_transition(*transition);
    if (index == base::no_index) return false;
    assert(index < original_.transitions.size());
    event.transition = original_.transitions[index];
    const XmlNode* const cut_off = first_child(element, "cut-off");
    if (cut_off == nullptr) return true;
    event.mark_cut_off();
    if constexpr (!P::is_merged) return read_correspondents(*cut_off, event);
    return true;
  }

  // The attributes `ref` of the `correspondent`, if there is one.
  bool read_correspondents(const XmlNode& cut_off, Event& event) {
    const XmlNode* const correspondent = first_child(cut_off, "correspondent");
    if (correspondent == nullptr) return true;
    std::vector<Event*> events;
    for (const XmlAttribute* ref = correspondent->first_attribute(); ref != nullptr;
         ref = ref->next_attribute()) {
      if (std::string_view(ref->name(), ref->name_size()) != "ref") continue;
      const std::uint32_t index = nodes_.resolve_transition(*ref);
      if (index == base::no_index) return false;
      assert(index < process_.events.size());
      events.push_back(process_.events[index].get());
    }
    event.cut_off.set_correspondents(events);
    return true;
  }

  Document& document_;
  P& process_;
  OriginalNodes<N> original_;
  PageNodes nodes_;
};

// The tokens of the net are those of the process, which is what gets analysed, whatever the file
// says of the net: a place has as many as it has initial conditions.
template <net::Process P>
void align_initial_marking(P& process) {
  std::vector<std::uint32_t> told;
  for (const auto& place : process.places) {
    told.push_back(std::exchange(place->initial_marking, 0));
  }
  net::count_initial_marking(process);
  if (base::verbosity() < 1) return;
  for (const auto& place : process.places) {
    if (place->initial_marking == told[place->index]) continue;
    base::print_formatted(std::cerr,
                          "\nthe initial marking of place %s is %u, not %u as the file tells\n",
                          place->name.c_str(), place->initial_marking, told[place->index]);
  }
}

}  // namespace

template <net::Process P>
bool read_process(std::unique_ptr<Document> document, const XmlNode& element, P& process) {
  assert(document != nullptr && process.conditions.empty() && process.events.empty());
  if (!ProcessReader<P>(*document, process).run(element)) return false;
  document.reset();
  align_initial_marking(process);
  if constexpr (std::is_same_v<P, net::StgPrefix>) {
    if (!net::find_initial_values(process)) return false;
  }
  if (!net::passes_sanity_checks(process)) return false;
  net::check(process);
  return true;
}

#define INSTANTIATE(P) template bool read_process<P>(std::unique_ptr<Document>, const XmlNode&, P&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::formats::pnml
