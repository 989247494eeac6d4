#include "flow/irreducible.h"

#include <algorithm>
#include <cassert>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>

#include "flow/stg_game.h"

namespace vorel::flow {
namespace {

constexpr std::size_t most_states = 1000;  // that inputs lead to from one state

using Signals = std::set<const net::Signal*>;

StgTrace joined(const StgTrace& first, const StgTrace& then) {
  StgTrace trace = first;
  trace.insert(trace.end(), then.begin(), then.end());
  return trace;
}

std::string text_of(std::span<const TraceStep> trace) {
  std::string text;
  for (const TraceStep& step : trace) text += (text.empty() ? "" : ", ") + step.transition;
  return text.empty() ? "(nothing)" : text;
}

class Search {
 public:
  explicit Search(const net::Stg& stg) : stg_{stg} {}

  std::vector<StgFinding> run(const std::vector<Conflict>& conflicts) {
    for (const Conflict& conflict : conflicts) {
      if (!conflict.is_csc) continue;
      if (are_inputs(conflict.first) && are_inputs(conflict.second)) tell(conflict);
      look_behind(joined(conflict.common, conflict.first));
      look_behind(joined(conflict.common, conflict.second));
    }
    return std::move(findings_);
  }

 private:
  bool are_inputs(const StgTrace& trace) const {
    return std::ranges::all_of(trace, [this](const TraceStep& step) {
      return std::ranges::any_of(stg_.signals, [&](const auto& signal) {
        return signal->kind == net::SignalKind::input && signal->name == step.signal;
      });
    });
  }

  Signals due_in(const StgGame& game) const {
    Signals due;
    for (const net::StgTransition* edge : game.edges())
      if (edge->signal->kind != net::SignalKind::input) due.insert(edge->signal);
    return due;
  }

  StgGame game_after(const StgTrace& trace) const {
    StgGame game(stg_);
    for (const TraceStep& step : trace) {
      const auto transition = std::ranges::find_if(stg_.transitions, [&](const auto& candidate) {
        return candidate->name == step.transition;
      });
      assert(transition != stg_.transitions.end() && "a conflict is told by traces of its STG");
      game.fire(**transition);
    }
    return game;
  }

  // Whether inputs lead from the state to another one with its code in which another output is due.
  void look_behind(const StgTrace& trace) {
    const StgGame start = game_after(trace);
    if (!starts_.insert(start.tokens()).second) return;
    const Signals due = due_in(start);
    std::set<std::vector<std::uint32_t>> seen{start.tokens()};
    std::vector<StgGame> open{start};
    for (std::size_t next = 0; next < open.size() && open.size() < most_states; ++next) {
      for (const auto& transition : stg_.transitions) {
        if (transition->signal->kind != net::SignalKind::input) continue;
        if (!open[next].is_enabled(*transition)) continue;
        StgGame game = open[next];
        game.fire(*transition);
        if (!seen.insert(game.tokens()).second) continue;
        if (game.values() == start.values()) compare(due, trace.size(), game);
        open.push_back(std::move(game));
      }
    }
  }

  void compare(const Signals& due, std::size_t length, const StgGame& game) {
    Signals differing;
    std::ranges::set_symmetric_difference(due, due_in(game),
                                          std::inserter(differing, differing.end()));
    const std::span<const TraceStep> trace(game.trace());
    for (const net::Signal* signal : differing)
      add(signal->name,
          "from a state to another one with its code: " + text_of(trace.subspan(length)) +
              " after " + text_of(trace.first(length)),
          game.trace());
  }

  void tell(const Conflict& conflict) {
    add(conflict.signal,
        "to both of its states: " + text_of(conflict.first) + " and " + text_of(conflict.second) +
            " after " + text_of(conflict.common),
        joined(conflict.common, conflict.second));
  }

  void add(const std::string& signal, const std::string& way, StgTrace trace) {
    if (std::ranges::any_of(findings_, [&](const StgFinding& finding) {
          return finding.subjects.front() == signal;
        }))
      return;
    findings_.push_back({.kind = FindingKind::irreducible,
                         .gravity = Gravity::fault,
                         .subjects = {signal},
                         .message = "no new signal can resolve the conflict of " + signal +
                                    ", as inputs alone lead " + way,
                         .trace = std::move(trace)});
  }

  const net::Stg& stg_;
  std::set<std::vector<std::uint32_t>> starts_;  // markings that have been looked behind
  std::vector<StgFinding> findings_;
};

}  // namespace

std::vector<StgFinding> irreducible_conflicts(const net::Stg& stg, const Coding& coding) {
  return Search(stg).run(coding.conflicts);
}

}  // namespace vorel::flow
