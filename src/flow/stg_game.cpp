#include "flow/stg_game.h"

#include <algorithm>
#include <cassert>
#include <set>

namespace vorel::flow {
namespace {

using Tokens = std::vector<std::uint32_t>;

bool enables(const Tokens& tokens, const net::StgTransition& transition) {
  return std::ranges::all_of(transition.preset,
                             [&](const auto* place) { return tokens[place->index] > 0; });
}

void move_tokens(Tokens& tokens, const net::StgTransition& transition) {
  for (const auto* place : transition.preset) --tokens[place->index];
  for (const auto* place : transition.postset) ++tokens[place->index];
}

}  // namespace

StgGame::StgGame(const net::Stg& stg) : stg_{stg} {
  for (const auto& place : stg.places) tokens_.push_back(place->initial_marking);
  for (const auto& signal : stg.signals) values_.push_back(signal->initial_value == 1);
}

bool StgGame::is_enabled(const net::StgTransition& transition) const {
  return enables(tokens_, transition);
}

const net::StgPlace* StgGame::fire(const net::StgTransition& transition) {
  assert(is_enabled(transition));
  move_tokens(tokens_, transition);
  TraceStep step{transition.name, "", false};
  if (const net::Signal& signal = *transition.signal; !signal.is_dummy()) {
    step.signal = signal.name;
    step.value = transition.sign == net::Sign::toggle ? !values_[signal.index]
                                                      : transition.sign == net::Sign::plus;
    values_[signal.index] = step.value;
  }
  trace_.push_back(std::move(step));
  const auto second = std::ranges::find_if(
      transition.postset, [this](const auto* place) { return tokens_[place->index] > 1; });
  return second == transition.postset.end() ? nullptr : *second;
}

std::vector<const net::StgTransition*> StgGame::edges() const {
  std::vector<bool> can_fire(stg_.transitions.size());
  std::set<Tokens> seen{tokens_};
  std::vector<Tokens> open{tokens_};
  while (!open.empty()) {
    const Tokens tokens = std::move(open.back());
    open.pop_back();
    for (const auto& transition : stg_.transitions) {
      if (!enables(tokens, *transition)) continue;
      can_fire[transition->index] = true;
      if (!transition->signal->is_dummy()) continue;
      Tokens after = tokens;
      move_tokens(after, *transition);
      if (seen.insert(after).second) open.push_back(std::move(after));
    }
  }
  std::vector<const net::StgTransition*> edges;
  for (const auto& transition : stg_.transitions)
    if (can_fire[transition->index] && !transition->signal->is_dummy())
      edges.push_back(transition.get());
  return edges;
}

bool StgGame::can_change(const net::Signal& signal) const {
  return std::ranges::any_of(edges(), [&](const auto* edge) { return edge->signal == &signal; });
}

StgTrace trace_of(const net::Stg& stg, std::span<const net::StgTransition* const> transitions) {
  StgGame game(stg);
  for (const net::StgTransition* transition : transitions) game.fire(*transition);
  return game.trace();
}

}  // namespace vorel::flow
