#include "synthesis/state_sets.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"

namespace vorel::synthesis {
namespace {

bool meet(const toolkit::Cube& a, const toolkit::Cube& b) {
  for (std::size_t i = 0; i < a.size(); ++i) {
    const bool differ =
        a[i] != toolkit::Ternary::dash && b[i] != toolkit::Ternary::dash && a[i] != b[i];
    if (differ) return false;
  }
  return true;
}

// The cube without one literal after the other, as far as `is_allowed` agrees.
template <class IsAllowed>
toolkit::Cube expanded(toolkit::Cube cube, IsAllowed is_allowed) {
  for (std::size_t i = 0; i < cube.size(); ++i) {
    const toolkit::Ternary literal = cube[i];
    if (literal == toolkit::Ternary::dash) continue;
    cube.set(i, toolkit::Ternary::dash);
    if (!is_allowed(cube)) cube.set(i, literal);
  }
  return cube;
}

// For assertions.
[[maybe_unused]] bool are_disjoint(const toolkit::Cover& a, const toolkit::Cover& b) {
  return std::ranges::none_of(a, [&b](const toolkit::Cube& cube) {
    return std::ranges::any_of(b,
                               [&cube](const toolkit::Cube& other) { return meet(cube, other); });
  });
}

}  // namespace

StateSets StateSetSearch::collect(const ProjectedFunction& projected) {
  assert(states_.prefix().driven_signals().contains(projected.function.signal));
  assert(std::ranges::is_sorted(projected.support));
  assert(has_two_functions(style_) == (projected.function.phase != FunctionPhase::next_state));
  // Definitions come before the first solve, so that every model has their values.
  states_.state(0).next_value(projected.function.signal);
  for (const net::SignalId other : projected.support) states_.state(0).code(other);
  codes_left_ = max_codes_;
  StateSets sets = empty_sets(projected.support);
  if (collect_codes(projected, sets) || base::run_failed()) {
    assert(are_disjoint(sets.on, sets.off) && "the signals are a support");
    return sets;
  }
  sets = empty_sets(projected.support);
  collect_cubes(projected, sets);
  if (style_ == SynthesisStyle::four_sets) collect_four_covers(projected, sets);
  assert(base::run_failed() || are_disjoint(sets.on, sets.off));
  return sets;
}

StateSets StateSetSearch::empty_sets(const SignalList& support) const {
  StateSets sets;
  sets.on = sets.off = toolkit::Cover(support.size(), false);
  sets.four_sets.fill(sets.on);
  return sets;
}

bool StateSetSearch::collect_codes(const ProjectedFunction& projected, StateSets& sets) {
  switch (style_) {
    case SynthesisStyle::complex_gate:
      return collect_all(projected, sets);
    case SynthesisStyle::four_sets:
      return collect_four_sets(projected, sets);
    case SynthesisStyle::generalised_c:
      return collect_excited_and_opposite(projected, sets);
    default:
      assert(style_ == SynthesisStyle::standard_c);
      return collect_excited_and_opposite(projected, sets) && collect_arcs(projected, sets);
  }
}

bool StateSetSearch::collect_all(const ProjectedFunction& projected, StateSets& sets) {
  const sat::ClauseGroup blocked = states_.formula().new_group();
  const bool is_complete = enumerate(
      projected, blocked, [&sets](const toolkit::Cube& code, configuration::Region region) {
        (configuration::next_value(region) ? sets.on : sets.off).add(code);
      });
  states_.formula().remove_group(blocked);
  return is_complete;
}

// A code can stand for an excited and for a stable state: the excited ones are found first, and
// keep it.
bool StateSetSearch::collect_four_sets(const ProjectedFunction& projected, StateSets& sets) {
  sat::CnfFormula& formula = states_.formula();
  const sat::ClauseGroup blocked = formula.new_group();
  const sat::Lit excited = states_.state(0).excited(projected.function.signal);
  const auto visit = [&sets](const toolkit::Cube& code, configuration::Region region) {
    sets.four_sets[static_cast<std::size_t>(region)].add(code);
    (configuration::next_value(region) ? sets.on : sets.off).add(code);
  };
  bool is_complete = true;
  for (const sat::Lit wanted : {excited, ~excited}) {
    const sat::ClauseGroup group = formula.new_group();
    formula.add_unit(wanted, group);
    is_complete = is_complete && enumerate(projected, blocked, visit);
    formula.remove_group(group);
  }
  formula.remove_group(blocked);
  return is_complete;
}

// Where the signal stays at the value that the function drives it to, the function is free.
bool StateSetSearch::collect_excited_and_opposite(const ProjectedFunction& projected,
                                                  StateSets& sets) {
  sat::CnfFormula& formula = states_.formula();
  const bool target = projected.function.target();
  const sat::ClauseGroup blocked = formula.new_group();
  const sat::ClauseGroup excited = formula.new_group();
  states_.add_excited(0, projected.function.signal, target, excited);
  bool is_complete =
      enumerate(projected, blocked,
                [&sets](const toolkit::Cube& code, configuration::Region) { sets.on.add(code); });
  formula.remove_group(excited);
  const sat::ClauseGroup opposite = formula.new_group();
  formula.add_unit(states_.state(0).next_value(projected.function.signal) ^ target, opposite);
  is_complete = is_complete && enumerate(projected, blocked,
                                         [&sets](const toolkit::Cube& code, configuration::Region) {
                                           sets.off.add(code);
                                         });
  formula.remove_group(opposite);
  formula.remove_group(blocked);
  return is_complete;
}

// The edges of other signals in states where the signal stays at its value. A code comes again only
// with a further excited signal.
bool StateSetSearch::collect_arcs(const ProjectedFunction& projected, StateSets& sets) {
  sat::CnfFormula& formula = states_.formula();
  auto& state = states_.state(0);
  const bool value = projected.function.target();
  const sat::ClauseGroup group = formula.new_group();
  formula.add_unit(state.code(projected.function.signal) ^ !value, group);
  states_.add_not_excited(0, projected.function.signal, !value, group);
  sat::Lits changes;
  for (const net::SignalId other : projected.support) {
    if (other != projected.function.signal) changes.push_back(state.excited(other));
  }
  formula.add_clause(changes, group);
  while (!base::run_failed() && codes_left_ > 0 && solve()) {
    --codes_left_;
    const toolkit::Cube code = code_of_model(projected.support);
    sat::Lits clause = other_code(projected.support);
    for (std::size_t i = 0; i < projected.support.size(); ++i) {
      if (projected.support[i] == projected.function.signal) continue;
      const sat::Lit excited = state.excited(projected.support[i]);
      if (!formula.is_true(excited)) {
        clause.push_back(excited);
        continue;
      }
      toolkit::Cube next = code;
      next.set(i,
               code[i] == toolkit::Ternary::one ? toolkit::Ternary::zero : toolkit::Ternary::one);
      assert(!meet(code, next) && "an edge leads to another code");
      sets.arcs.emplace_back(code, std::move(next));
    }
    formula.add_clause(clause, group);
  }
  formula.remove_group(group);
  return codes_left_ > 0;
}

bool StateSetSearch::enumerate(const ProjectedFunction& projected, sat::ClauseGroup blocked,
                               const Visit& visit) {
  assert(blocked != sat::PermanentGroup && "another function asks for the same codes");
  while (!base::run_failed() && codes_left_ > 0 && solve()) {
    --codes_left_;
    visit(code_of_model(projected.support), states_.region(0, projected.function.signal));
    states_.formula().add_clause(other_code(projected.support), blocked);
  }
  return codes_left_ > 0;
}

// The ON-set may take what no state needs, the OFF-set what is left.
void StateSetSearch::collect_cubes(const ProjectedFunction& projected, StateSets& sets) {
  const bool target = projected.function.target();
  const sat::Lit next = states_.state(0).next_value(projected.function.signal) ^ !target;
  const bool has_two = has_two_functions(style_);
  const Constraint on = [&, this](sat::ClauseGroup group) {
    if (has_two) return states_.add_excited(0, projected.function.signal, target, group);
    states_.formula().add_unit(next, group);
  };
  const Constraint off = [&, this](sat::ClauseGroup group) {
    if (style_ == SynthesisStyle::standard_c) {
      return states_.add_not_excited(0, projected.function.signal, target, group);
    }
    states_.formula().add_unit(~next, group);
  };
  sets.on =
      cubes_without(projected.support, on, off, toolkit::Cover(projected.support.size(), false));
  sets.off = cubes_outside(projected.support, off, sets.on);
}

// Each cover is kept away from those before it, and from the states of those after it that could
// still lie in its cubes.
void StateSetSearch::collect_four_covers(const ProjectedFunction& projected, StateSets& sets) {
  using enum configuration::Region;
  const net::SignalId signal = projected.function.signal;
  const sat::Lit next = states_.state(0).next_value(signal);
  const sat::Lit excited = states_.state(0).excited(signal);
  const auto all_of = [this](sat::Lits lits) -> Constraint {
    return [this, lits = std::move(lits)](sat::ClauseGroup group) {
      states_.formula().add_units(lits, false, group);
    };
  };
  const auto any_of = [this](sat::Lits lits) -> Constraint {
    return [this, lits = std::move(lits)](sat::ClauseGroup group) {
      states_.formula().add_clause(lits, group);
    };
  };
  toolkit::Cover taken(projected.support.size(), false);
  const auto keep = [&sets, &taken](configuration::Region region, toolkit::Cover cover) {
    for (const toolkit::Cube& cube : cover) taken.add(cube);
    sets.four_sets[static_cast<std::size_t>(region)] = std::move(cover);
  };
  const Constraint rises = all_of({next, excited}), falls = all_of({~next, excited});
  const SignalList& support = projected.support;
  keep(stable_high,
       cubes_without(support, all_of({next, ~excited}), any_of({~next, excited}), taken, rises));
  keep(rising, cubes_without(support, rises, all_of({~next}), taken));
  keep(stable_low, cubes_without(support, all_of({~next, ~excited}), falls, taken, falls));
  keep(falling, cubes_outside(support, falls, taken));
}

toolkit::Cover StateSetSearch::cubes_without(const SignalList& support, const Constraint& wanted,
                                             const Constraint& others, const toolkit::Cover& taken,
                                             const Constraint& precedence) {
  sat::CnfFormula& formula = states_.formula();
  const sat::ClauseGroup blocked = formula.new_group();
  toolkit::Cover cover(support.size(), false);
  // With the codes of others that stood in the way: they are likely to do so again.
  std::vector<toolkit::Cube> refused(taken.begin(), taken.end());
  const auto is_allowed = [&](const toolkit::Cube& cube) {
    const auto is_inside = [&cube](const toolkit::Cube& code) { return meet(cube, code); };
    if (std::ranges::any_of(refused, is_inside)) return false;
    auto code = state_in(cube, support, others);
    if (code) refused.push_back(std::move(*code));
    return !code;
  };
  while (!base::run_failed()) {
    const auto code =
        state_in(toolkit::Cube(support.size(), toolkit::Ternary::dash), support, wanted);
    if (!code) break;
    if (precedence && state_in(*code, support, precedence)) {
      formula.add_clause(outside_of(*code, support), blocked);
      refused.push_back(*code);
      continue;
    }
    toolkit::Cube cube = expanded(*code, is_allowed);
    assert(meet(cube, *code) && "it still covers the state that it comes from");
    formula.add_clause(outside_of(cube, support), blocked);
    cover.add(std::move(cube));
  }
  formula.remove_group(blocked);
  return cover;
}

toolkit::Cover StateSetSearch::cubes_outside(const SignalList& support, const Constraint& wanted,
                                             const toolkit::Cover& cover) {
  assert(cover.width() == support.size());
  sat::CnfFormula& formula = states_.formula();
  const sat::ClauseGroup group = formula.new_group();
  wanted(group);
  toolkit::Cover result(support.size(), false);
  const auto is_allowed = [&cover](const toolkit::Cube& cube) {
    return std::ranges::none_of(cover,
                                [&cube](const toolkit::Cube& other) { return meet(cube, other); });
  };
  while (!base::run_failed() && solve()) {
    toolkit::Cube cube = expanded(code_of_model(support), is_allowed);
    formula.add_clause(outside_of(cube, support), group);
    result.add(std::move(cube));
  }
  formula.remove_group(group);
  return result;
}

std::optional<toolkit::Cube> StateSetSearch::state_in(const toolkit::Cube& cube,
                                                      const SignalList& support,
                                                      const Constraint& constraint) {
  sat::CnfFormula& formula = states_.formula();
  const sat::ClauseGroup group = formula.new_group();
  constraint(group);
  for (const sat::Lit lit : outside_of(cube, support)) formula.add_unit(~lit, group);
  std::optional<toolkit::Cube> code;
  if (solve()) code = code_of_model(support);
  formula.remove_group(group);
  return code;
}

toolkit::Cube StateSetSearch::code_of_model(const SignalList& support) {
  toolkit::Cube code(support.size(), toolkit::Ternary::dash);
  for (std::size_t i = 0; i < support.size(); ++i) {
    const sat::ModelValue value = states_.formula().value(states_.state(0).code(support[i]));
    if (value == sat::ModelValue::undefined) continue;
    code.set(i, value == sat::ModelValue::yes ? toolkit::Ternary::one : toolkit::Ternary::zero);
  }
  return code;
}

sat::Lits StateSetSearch::other_code(const SignalList& support) {
  return outside_of(code_of_model(support), support);
}

// The literals one of which is true outside of the cube.
sat::Lits StateSetSearch::outside_of(const toolkit::Cube& cube, const SignalList& support) {
  assert(cube.size() == support.size());
  sat::Lits lits;
  for (std::size_t i = 0; i < support.size(); ++i) {
    if (cube[i] == toolkit::Ternary::dash) continue;
    lits.push_back(states_.state(0).code(support[i]) ^ (cube[i] == toolkit::Ternary::one));
  }
  return lits;
}

bool StateSetSearch::solve() {
  ++solve_calls_;
  return states_.formula().solve();
}

}  // namespace vorel::synthesis
