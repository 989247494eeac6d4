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

GateRuns::GateRuns(const Composition& composition, const EdgePresets& presets)
    : composition_{composition}, presets_{presets} {
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

std::vector<bool> GateRuns::after(const std::vector<Step>& steps, std::vector<bool> marking) const {
  for (const Step step : steps) {
    assert(is_enabled(step, marking));
    fire(step, marking);
  }
  return marking;
}

bool GateRuns::is_due(WireId wire, const std::vector<bool>& marking) const {
  const auto is_marked = [&](std::uint32_t place) { return marking[place]; };
  return std::ranges::any_of(presets_[composition_.signal_of(wire)->index],
                             [&](const auto& set) { return std::ranges::all_of(set, is_marked); });
}

bool GateRuns::has_come(const Awaited& awaited, const std::vector<bool>& marking,
                        const std::vector<Step>& enabled, std::vector<Step>& steps) const {
  if (awaited.waits_for_arbiter && !is_due(awaited.wire, marking)) return true;
  const Step edge = edge_among(enabled, awaited.wire);
  if (edge != no_move) steps.push_back(edge);
  return edge != no_move;
}

bool GateRuns::run_in_rounds(const Awaited& awaited, std::vector<bool> marking,
                             std::vector<Step>& steps) const {
  std::set<std::vector<bool>> seen;
  while (seen.insert(marking).second) {
    const std::vector<Step> moves = enabled_moves(marking);
    if (has_come(awaited, marking, moves, steps)) return true;
    for (const Step move : moves) {
      if (!is_enabled(move, marking)) continue;
      fire(move, marking);
      steps.push_back(move);
    }
  }
  return false;
}

RunOutcome GateRuns::explore(const Awaited& awaited, const std::vector<bool>& start,
                             std::size_t max_markings, std::vector<Step>& steps) const {
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
    steps.clear();
    if (has_come(awaited, *open[i], moves, steps)) {
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

std::vector<GateRuns::Step> GateRuns::needed_steps(const std::vector<Step>& steps) const {
  std::vector<std::uint32_t> producer(composition_.place_count(), from_start);  // of the token now
  std::vector<std::vector<std::uint32_t>> causes(steps.size());
  for (std::uint32_t i = 0; i < steps.size(); ++i) {
    for (const std::uint32_t place : composition_.preset(steps[i]))
      if (producer[place] != from_start) causes[i].push_back(producer[place]);
    for (const std::uint32_t place : composition_.postset(steps[i])) producer[place] = i;
  }
  std::vector<bool> is_needed(steps.size());
  is_needed.back() = true;
  std::vector<Step> needed;
  for (std::size_t i = steps.size(); i-- > 0;) {
    if (!is_needed[i]) continue;
    needed.push_back(steps[i]);
    for (const std::uint32_t cause : causes[i]) is_needed[cause] = true;
  }
  std::ranges::reverse(needed);
  return needed;
}

std::vector<std::uint32_t> GateRuns::tokens_taken(const std::vector<Step>& steps) const {
  std::vector<bool> is_touched(composition_.place_count());
  std::vector<std::uint32_t> taken;
  for (const Step step : steps) {
    for (const std::uint32_t place : composition_.preset(step))
      if (!is_touched[place]) taken.push_back(place);
    for (const std::uint32_t place : composition_.preset(step)) is_touched[place] = true;
    for (const std::uint32_t place : composition_.postset(step)) is_touched[place] = true;
  }
  return taken;
}

std::vector<std::uint32_t> GateRuns::tokens_absent(WireId wire, const std::vector<Step>& steps,
                                                   const std::vector<bool>& start) const {
  const std::vector<bool> end = after(steps, start);
  std::vector<std::uint32_t> absent;
  for (const PlaceSet& set : presets_[composition_.signal_of(wire)->index]) {
    const auto is_lost = [&](std::uint32_t place) { return start[place] && !end[place]; };
    if (std::ranges::any_of(set, is_lost)) continue;
    const auto missing = std::ranges::find_if(set, [&](auto place) { return !end[place]; });
    assert(missing != set.end() && "the wire is not due");
    absent.push_back(*missing);
  }
  return absent;
}

GateRuns::Run GateRuns::run_to_edge(const Awaited& awaited, const std::vector<bool>& marking,
                                    bool is_persistent, std::size_t max_markings) const {
  const WireId wire = awaited.wire;
  assert(is_due(wire, marking));
  std::vector<Step> steps;
  Run run;
  if (run_in_rounds(awaited, marking, steps))
    run.outcome = RunOutcome::comes;
  else if (is_persistent)
    run.outcome = RunOutcome::never;
  else
    run.outcome = explore(awaited, marking, max_markings, steps);
  if (run.outcome != RunOutcome::comes) return run;
  const bool is_edge = composition_.moves()[steps.back()].wire == wire;
  std::vector<Step> fewer = needed_steps(steps);
  if (is_edge || !is_due(wire, after(fewer, marking))) steps = std::move(fewer);
  run.needed = tokens_taken(steps);
  if (!is_edge) run.absent = tokens_absent(wire, steps, marking);
  return run;
}

}  // namespace vorel::verify
