#include "configuration/token_flow.h"

#include <algorithm>
#include <cassert>

namespace vorel::configuration {
namespace {

template <class Conditions>
TokenFlow::Places places_of(const Conditions& conditions) {
  TokenFlow::Places places;
  for (const auto* condition : conditions) places.push_back(condition->place->index);
  std::ranges::sort(places);
  return places;
}

std::vector<Arc> producing_arcs(std::span<const TokenFlow::Change> changes) {
  std::vector<Arc> arcs;
  for (std::uint32_t i = 0; i < changes.size(); ++i) {
    for (const std::uint32_t place : changes[i].produced) arcs.push_back({place, i});
  }
  return arcs;
}

}  // namespace

TokenFlow::TokenFlow(std::vector<Change> changes, std::vector<bool> initial)
    : changes_{std::move(changes)},
      initial_{std::move(initial)},
      producers_{std::max(place_count(), static_cast<std::uint32_t>(changes_.size())),
                 producing_arcs(changes_)} {
  for (const Change& change : changes_) arcs_ += change.consumed.size() + change.produced.size();
}

template <net::Process P>
TokenFlow TokenFlow::of(const P& process) {
  std::vector<bool> initial(process.places.size(), false);
  for (const auto& condition : process.conditions) {
    if (condition->is_initial()) initial[condition->place->index] = true;
  }
  // The arcs of a cut-off's transition may not all be known.
  std::vector<Change> changes;
  std::vector<bool> known(process.transitions.size(), false);
  for (const auto& event : process.events) {
    if (event->is_cut_off() || known[event->transition->index]) continue;
    known[event->transition->index] = true;
    changes.push_back({places_of(event->preset), places_of(event->postset)});
  }
  return TokenFlow(std::move(changes), std::move(initial));
}

bool TokenFlow::has_initial(const std::vector<bool>& places) const {
  for (std::uint32_t place = 0; place < place_count(); ++place) {
    if (places[place] && initial_[place]) return true;
  }
  return false;
}

// The largest trap within the places: what a change takes without giving back is left out.
void TokenFlow::shrink_to_trap(std::vector<bool>& places) const {
  std::vector<std::uint32_t> given_back(changes_.size()), takers;
  for (std::uint32_t i = 0; i < changes_.size(); ++i) {
    given_back[i] = static_cast<std::uint32_t>(std::ranges::count_if(
        changes_[i].produced, [&places](std::uint32_t place) { return places[place]; }));
    if (given_back[i] == 0) takers.push_back(i);
  }
  while (!takers.empty()) {
    const std::uint32_t taker = takers.back();
    takers.pop_back();
    for (const std::uint32_t place : changes_[taker].consumed) {
      if (!places[place]) continue;
      places[place] = false;
      for (const std::uint32_t producer : producers_.successors(place)) {
        if (--given_back[producer] == 0) takers.push_back(producer);
      }
    }
  }
}

TokenFlow::Places TokenFlow::members(const std::vector<bool>& places) const {
  Places result;
  for (std::uint32_t place = 0; place < place_count(); ++place) {
    if (places[place]) result.push_back(place);
  }
  return result;
}

// Leaves out some of the places in hand, and what is no trap without them.
bool TokenFlow::leave_out(std::span<const std::uint32_t> some, std::vector<bool>& trap) const {
  std::vector<bool> smaller(trap);
  for (const std::uint32_t place : some) smaller[place] = false;
  shrink_to_trap(smaller);
  if (!has_initial(smaller)) return false;
  trap = std::move(smaller);
  return true;
}

TokenFlow::Places TokenFlow::marked_trap_outside(const std::vector<bool>& marked,
                                                 std::uint64_t& steps) const {
  assert(marked.size() == place_count());
  std::vector<bool> trap(marked);
  trap.flip();
  shrink_to_trap(trap);
  if (!has_initial(trap)) return {};
  Places places = members(trap);
  for (std::size_t most = places.size() / 2; most > 0; most /= 2) {
    for (std::size_t i = 0; i < places.size() && steps >= arcs_; i += most) {
      steps -= arcs_;
      leave_out(std::span(places).subspan(i, std::min(most, places.size() - i)), trap);
    }
    places = members(trap);
    most = std::min(most, places.size());
  }
  return places;
}

#define INSTANTIATE(P) template TokenFlow TokenFlow::of<P>(const P&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
