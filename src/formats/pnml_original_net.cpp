#include "formats/pnml_original_net.h"

#include <cassert>
#include <utility>

#include "base/messages.h"
#include "formats/pnml_arcs.h"
#include "formats/pnml_signals.h"

namespace vorel::formats::pnml {
namespace {

template <class N>
constexpr std::string_view type_of_net = N::has_signals ? "STG" : "low_level_net";

// The `page` of the original net; null after a silent failure, or an error for an STG without one.
template <class N>
const XmlNode* find_page(const XmlNode& process_element) {
  const XmlNode* const original = first_child(process_element, "original_net");
  const XmlNode* const net = original == nullptr ? nullptr : first_child(*original, "net");
  if (net == nullptr) {
    base::note_silent_failure("it has no original net");
    return nullptr;
  }
  const XmlAttribute* const type = attribute(*net, "type");
  if (type == nullptr || value_of(*type) != type_of_net<N>) {
    base::note_silent_failure("its original net is not of the type that its process is of");
    return nullptr;
  }
  if constexpr (N::has_signals) return require_child(*net, "page");
  const XmlNode* const page = first_child(*net, "page");
  if (page == nullptr) base::note_silent_failure("its original net has no page");
  return page;
}

bool read_place(const XmlNode& element, auto& place) {
  auto name = require_text(element, "name");
  if (!name) return false;
  const auto tokens = initial_marking_of(element);
  if (!tokens) return false;
  place.name = std::move(*name);
  place.initial_marking = *tokens;
  return true;
}

bool read_transition(const XmlNode& element, net::Transition& transition, const SignalTable&) {
  auto name = require_text(element, "name");
  if (!name) return false;
  transition.name = std::move(*name);
  return true;
}

bool read_transition(const XmlNode& element, net::StgTransition& transition,
                     const SignalTable& signals) {
  auto name = require_text(element, "name");
  if (!name) return false;
  transition.name = std::move(*name);
  return signals.label(element, transition);
}

template <class N>
void make_nodes(N& net, OriginalNodes<N>& original) {
  for (const PageNode& node : original.nodes) {
    if (node.is_place) {
      original.places.push_back(&base::append_new(net.places));
    } else {
      original.transitions.push_back(&base::append_new(net.transitions));
    }
  }
}

template <class N>
bool read_nodes(OriginalNodes<N>& original, const SignalTable& signals) {
  for (const PageNode& node : original.nodes) {
    const bool read =
        node.is_place ? read_place(*node.element, *original.places[node.index])
                      : read_transition(*node.element, *original.transitions[node.index], signals);
    if (!read) return false;
  }
  return true;
}

}  // namespace

template <class N>
bool read_original_net(const XmlNode& process_element, N& net, OriginalNodes<N>& original) {
  assert(net.places.empty() && net.transitions.empty());
  const XmlNode* const page = find_page<N>(process_element);
  if (page == nullptr) return false;
  SignalTable signals;
  if constexpr (N::has_signals) {
    if (!signals.read(*page, net)) return false;
  }
  if (!original.nodes.declare(*page)) return false;
  make_nodes(net, original);
  assert(original.places.size() + original.transitions.size() == original.nodes.size());
  if (!read_nodes(original, signals)) return false;
  const auto arcs = read_arcs(*page, original.nodes, Producers::any);
  if (!arcs) return false;
  enter_arcs(original.nodes, *arcs, net.places, net.transitions);
  net::sort_net(net);
  return true;
}

template bool read_original_net<net::Net>(const XmlNode&, net::Net&, OriginalNodes<net::Net>&);
template bool read_original_net<net::Stg>(const XmlNode&, net::Stg&, OriginalNodes<net::Stg>&);

}  // namespace vorel::formats::pnml
