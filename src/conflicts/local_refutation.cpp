#include "conflicts/local_refutation.h"

#include <cassert>

namespace vorel::conflicts {
namespace {

constexpr int max_layers = 3;
constexpr std::uint64_t max_conflicts = 300;
constexpr std::size_t max_arcs = 64;        // of one walk
constexpr std::size_t max_neighbours = 16;  // of an event that the next layer goes on behind

}  // namespace

LocalRefutation::LocalRefutation(const configuration::StateStructure<net::StgPrefix>& structure,
                                 const PairQuestion& question,
                                 const configuration::EncodingOptions& options,
                                 std::size_t max_events, bool adds_inclusion)
    : prefix_{structure.process()},
      question_{question},
      max_events_{max_events},
      adds_inclusion_{adds_inclusion},
      formula_{options.formula},
      vars_{{{prefix_, formula_}, {prefix_, formula_}}},
      states_{PairState{structure, vars_[0], options.enabledness},
              PairState{structure, vars_[1], options.enabledness}},
      bottlenecks_{Bottlenecks{prefix_, Direction::backward},
                   Bottlenecks{prefix_, Direction::forward}},
      pair_{formula_, states_[0], states_[1]},
      signals_(prefix_.signals.size()),
      conditions_(prefix_.conditions.size()),
      visited_(prefix_.events.size()) {}

const LocalRefutation::Event& LocalRefutation::mentioned(std::size_t i) const {
  return base::element(prefix_.events, vars_[0].mentioned_events()[i]);
}

bool LocalRefutation::is_too_large() const { return mentioned_count() > max_events_; }

bool LocalRefutation::refutes(std::uint32_t candidate) {
  if (in_vain_ > 2 * prefix_.events.size() + 4 * of_use_) return false;
  const bool refuted = try_to_refute(candidate);
  (refuted ? of_use_ : in_vain_) += mentioned_count();
  return refuted;
}

void LocalRefutation::start() {
  formula_.reset();
  for (PairState& state : states_) state.clear();
  signals_.clear();
  coded_ = 0;
}

bool LocalRefutation::try_to_refute(std::uint32_t candidate) {
  start();
  question_.add_candidate_difference(pair_, candidate, sat::PermanentGroup);
  for (int layer = 0; layer < max_layers; ++layer) {
    if (layer > 0) mention_neighbours();
    add_codes();
    if (is_too_large()) return false;
    add_causality();
    add_conflicts();
    if (adds_inclusion_) add_inclusion();
    if (formula_.solve_assuming({}, max_conflicts) == false) return true;
  }
  return false;
}

void LocalRefutation::add_codes() {
  for (; coded_ < mentioned_count() && !is_too_large(); ++coded_) {
    const net::Signal& signal = *mentioned(coded_).transition->signal;
    if (!signal.is_dummy() && signals_.insert(signal))
      question_.add_code_constraint(pair_, base::id_of(signal));
  }
}

void LocalRefutation::walk_from(const Event& start, Direction direction) {
  visited_.clear();
  pending_.assign({&start});
  std::size_t arcs = 0;
  const auto visit = [&](const Event& next) {
    if (++arcs > max_arcs) return false;
    if (!visited_.insert(next)) return true;
    if (vars_[0].variable_of(next).is_uninit()) {
      pending_.push_back(&next);
    } else {
      add_order(start, next, direction);
    }
    return true;
  };
  const Bottlenecks& bottlenecks = bottlenecks_[static_cast<std::size_t>(direction)];
  for (std::size_t i = 0; i < pending_.size() && arcs < max_arcs; ++i) {
    if (const Event* bottleneck = bottlenecks.of(*pending_[i])) visit(*bottleneck);
    visit_neighbours(*pending_[i], direction, visit);
  }
}

void LocalRefutation::add_order(const Event& start, const Event& end, Direction direction) {
  const bool is_forward = direction == Direction::forward;
  const Event &cause = is_forward ? start : end, &effect = is_forward ? end : start;
  for (auto& vars : vars_)
    formula_.add_binary(~vars.event_lit(effect), vars.event_lit(cause), sat::PermanentGroup);
}

void LocalRefutation::add_causality() {
  const std::size_t count = mentioned_count();
  for (std::size_t i = 0; i < count; ++i) {
    if (mentioned(i).is_cut_off()) continue;
    walk_from(mentioned(i), Direction::backward);
    walk_from(mentioned(i), Direction::forward);
  }
}

void LocalRefutation::add_conflicts() {
  conditions_.clear();
  const std::size_t count = mentioned_count();
  for (std::size_t i = 0; i < count; ++i) {
    for (const auto* condition : mentioned(i).preset) {
      if (condition->postset.size() < 2 || !conditions_.insert(*condition)) continue;
      for (auto& vars : vars_) {
        lits_.clear();
        for (const Event* event : condition->postset) {
          if (!vars_[0].variable_of(*event).is_uninit()) lits_.push_back(vars.event_lit(*event));
        }
        formula_.add_at_most_one(lits_, sat::PermanentGroup);
      }
    }
  }
}

void LocalRefutation::add_inclusion() {
  const sat::Lit is_second_larger(formula_.new_var(false), false);
  const std::size_t count = mentioned_count();
  for (std::size_t i = 0; i < count; ++i) pair_.add_inclusion(mentioned(i), is_second_larger);
}

void LocalRefutation::mention_neighbours() {
  const std::size_t count = mentioned_count();
  for (std::size_t i = 0; i < count && !is_too_large(); ++i) {
    const Event& event = mentioned(i);
    for (const Direction direction : {Direction::backward, Direction::forward}) {
      pending_.clear();
      visit_neighbours(event, direction, [this](const Event& next) {
        pending_.push_back(&next);
        return pending_.size() <= max_neighbours;
      });
      if (pending_.size() > max_neighbours) continue;
      for (const Event* next : pending_) vars_[0].event_lit(*next);
    }
  }
}

}  // namespace vorel::conflicts
