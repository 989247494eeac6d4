#include "verify/gate_runs.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <set>

namespace vorel::verify {
namespace {

constexpr std::uint32_t no_move = 0xFFFFFFFFu;
constexpr std::uint32_t from_start = 0xFFFFFFFFu;

}  // namespace

GateRuns::GateRuns(const Composition& composition) : composition_{composition} {
  for (Step m = 0; m < composition.moves().size(); ++m) {
    const Move& move = composition.moves()[m];
    if (!move.wire || move.gate != no_gate) inner_moves_.push_back(m);
  }
}

bool GateRuns::is_enabled(Step move, const std::vector<bool>& marking) const {
  return std::ranges::all_of(composition_.preset(move),
                             [&](std::uint32_t place) { return marking[place]; });
}

void GateRuns::fire(Step move, std::vector<bool>& marking) const {
  for (const std::uint32_t place : composition_.preset(move)) marking[place] = false;
  for (const std::uint32_t place : composition_.postset(move)) marking[place] = true;
}

std::vector<GateRuns::Step> GateRuns::enabled_moves(const std::vector<bool>& marking) const {
  std::vector<Step> moves;
  std::ranges::copy_if(inner_moves_, std::back_inserter(moves),
                       [&](Step move) { return is_enabled(move, marking); });
  return moves;
}

GateRuns::Step GateRuns::edge_among(const std::vector<Step>& moves, WireId wire) const {
  const auto found = std::ranges::find_if(
      moves, [&](Step move) { return composition_.moves()[move].wire == wire; });
  return found == moves.end() ? no_move : *found;
}

bool GateRuns::run_in_rounds(WireId wire, std::vector<bool> marking,
                             std::vector<Step>& steps) const {
  std::set<std::vector<bool>> seen;
  while (seen.insert(marking).second) {
    const std::vector<Step> moves = enabled_moves(marking);
    if (const Step edge = edge_among(moves, wire); edge != no_move) {
      steps.push_back(edge);
      return true;
    }
    for (const Step move : moves) {
      if (!is_enabled(move, marking)) continue;
      fire(move, marking);
      steps.push_back(move);
    }
  }
  return false;
}

RunOutcome GateRuns::explore(WireId wire, const std::vector<bool>& start, std::size_t max_markings,
                             std::vector<Step>& steps) const {
  struct Arrival {
    const std::vector<bool>* from;
    Step by;
  };
  std::map<std::vector<bool>, Arrival> seen;
  std::vector<const std::vector<bool>*> open;
  const auto add = [&](std::vector<bool> marking, Arrival arrival) {
    const auto [entry, is_new] = seen.emplace(std::move(marking), arrival);
    if (is_new) open.push_back(&entry->first);
  };
  add(start, {nullptr, no_move});
  for (std::size_t i = 0; i < open.size(); ++i) {
    if (open.size() > max_markings) return RunOutcome::unknown;
    const std::vector<Step> moves = enabled_moves(*open[i]);
    if (const Step edge = edge_among(moves, wire); edge != no_move) {
      steps.assign(1, edge);
      for (const auto* at = open[i]; seen.at(*at).from != nullptr; at = seen.at(*at).from)
        steps.push_back(seen.at(*at).by);
      std::ranges::reverse(steps);
      return RunOutcome::comes;
    }
    for (const Step move : moves) {
      std::vector<bool> next = *open[i];
      fire(move, next);
      add(std::move(next), {open[i], move});
    }
  }
  return RunOutcome::never;
}

std::vector<std::uint32_t> GateRuns::tokens_needed(const std::vector<Step>& steps) const {
  std::vector<std::uint32_t> producer(composition_.place_count(), from_start);  // of the token now
  std::vector<std::vector<std::uint32_t>> causes(steps.size());  // of each token of its preset
  for (std::uint32_t i = 0; i < steps.size(); ++i) {
    for (const std::uint32_t place : composition_.preset(steps[i]))
      causes[i].push_back(producer[place]);
    for (const std::uint32_t place : composition_.postset(steps[i])) producer[place] = i;
  }
  std::vector<bool> is_needed(steps.size());
  is_needed.back() = true;
  std::vector<std::uint32_t> needed;
  for (std::size_t i = steps.size(); i-- > 0;) {
    if (!is_needed[i]) continue;
    const auto& preset = composition_.preset(steps[i]);
    for (std::size_t k = 0; k < preset.size(); ++k) {
      if (causes[i][k] == from_start)
        needed.push_back(preset[k]);
      else
        is_needed[causes[i][k]] = true;
    }
  }
  return needed;
}

GateRuns::Run GateRuns::run_to_edge(WireId wire, const std::vector<bool>& marking,
                                    bool is_persistent, std::size_t max_markings) const {
  std::vector<Step> steps;
  Run run;
  if (run_in_rounds(wire, marking, steps))
    run.outcome = RunOutcome::comes;
  else if (is_persistent)
    run.outcome = RunOutcome::never;
  else
    run.outcome = explore(wire, marking, max_markings, steps);
  if (run.outcome == RunOutcome::comes) run.needed = tokens_needed(steps);
  return run;
}

}  // namespace vorel::verify
