#include "resolution/apply_reduction.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <thread>
#include <utility>

#include "base/messages.h"
#include "base/run_state.h"
#include "net/edit.h"
#include "unfolder/unfolder.h"

namespace vorel::resolution {
namespace {

constexpr int verbosity_of_unfolding = 2;

std::string place_name(const Reduction& reduction) {
  if (reduction.sources.size() > 1) return "CR";
  return "<" + reduction.sources.front()->name + "," + reduction.target->name + ">";
}

void add_waiting_place(net::Stg& stg, const Reduction& reduction) {
  std::string name = net::unique_node_name(stg, place_name(reduction));
  net::StgPlace& place = base::append_new(stg.places);
  place.name = std::move(name);
  place.initial_marking = reduction.marked ? 1 : 0;
  for (const net::StgTransition* source : reduction.sources) {
    net::add_arc(base::element(stg.transitions, base::id_of(*source)), place);
  }
  net::add_arc(place, base::element(stg.transitions, base::id_of(*reduction.target)));
  net::sort_net(static_cast<net::NetOf<net::StgTransition>&>(stg));
}

}  // namespace

bool re_unfold(net::StgPrefix& prefix) {
  if (base::verbosity() >= verbosity_of_unfolding)
    base::print_formatted(std::cout, "\n re-unfolding the STG");
  unfolder::UnfoldOptions options;
  options.number_of_threads = std::max(1u, std::thread::hardware_concurrency());
  prefix.events.clear();
  prefix.conditions.clear();
  unfolder::Unfolder<net::Stg> unfolder(std::move(static_cast<net::Stg&>(prefix)), options);
  if (!unfolder.unfold()) return false;
  unfolder.warn_if_no_events();
  prefix = std::move(unfolder).result();
  return true;
}

// Insertions are judged by all correspondents, and events are passed in the order of their numbers.
bool prepare_for_insertions(net::StgPrefix& prefix) {
  const auto is_unknown = [](const auto& event) {
    return event->is_cut_off() && event->cut_off.is_unknown();
  };
  if (std::ranges::any_of(prefix.events, is_unknown)) return re_unfold(prefix);
  net::finish_edit(prefix);
  return true;
}

bool apply_reduction(net::StgPrefix& prefix, const Reduction& reduction) {
  assert(!reduction.sources.empty() && reduction.target != nullptr);
  add_waiting_place(prefix, reduction);
  return re_unfold(prefix);
}

}  // namespace vorel::resolution
