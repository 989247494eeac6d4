#include "synthesis/support_search.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "toolkit/complement.h"

namespace vorel::synthesis {
namespace {

// A support meets every difference: the complement of the sum of their products, whose literals are
// negated. All those with the fewest signals and with one signal more, unless they are very many.
toolkit::Cover supports_meeting(const std::vector<SignalList>& differences, std::size_t width) {
  constexpr std::size_t max_supports = 100;
  toolkit::Cover cover(width, false);
  for (const SignalList& difference : differences) {
    toolkit::Cube cube(width, toolkit::Ternary::dash);
    for (const net::SignalId signal : difference) cube.set(signal.value, toolkit::Ternary::zero);
    cover.add(std::move(cube));
  }
  std::size_t fewest = 1;
  while (toolkit::unate_complement(cover, {.max_literals = fewest, .max_products = 1}).empty())
    ++fewest;
  toolkit::Cover larger =
      toolkit::unate_complement(cover, {.max_literals = fewest + 1, .max_products = max_supports});
  if (larger.size() < max_supports) return larger;
  return toolkit::unate_complement(cover, {.max_literals = fewest, .max_products = max_supports});
}

bool is_smaller(const toolkit::Cube& a, const toolkit::Cube& b) {
  const std::size_t size_a = a.literal_count(), size_b = b.literal_count();
  return size_a != size_b ? size_a < size_b : a < b;
}

std::vector<toolkit::Cube> smallest_first(const toolkit::Cover& cover) {
  std::vector<toolkit::Cube> cubes(cover.begin(), cover.end());
  std::ranges::sort(cubes, is_smaller);
  return cubes;
}

SignalList with_triggers(const toolkit::Cube& cube, const SignalList& triggers) {
  SignalList support = triggers;
  for (std::uint32_t signal = 0; signal < cube.size(); ++signal) {
    if (cube[signal] == toolkit::Ternary::one) support.push_back({signal});
  }
  std::ranges::sort(support);
  assert(std::ranges::adjacent_find(support) == support.end() && "triggers differ in no pair");
  return support;
}

}  // namespace

SupportSearch::SupportSearch(const configuration::StateStructure<net::StgPrefix>& structure,
                             const configuration::EncodingOptions& options, SynthesisStyle style)
    : states_{structure, options, 2}, style_{style}, same_(structure.process().internals_end) {
  sat::CnfFormula& formula = states_.formula();
  for (const net::SignalId signal : structure.process().visible_signals()) {
    // The solver prefers to make variables false: the values of few signals will differ.
    const sat::Lit same(formula.new_var(false), true);
    const sat::Lit a = states_.state(0).code(signal), b = states_.state(1).code(signal);
    const sat::Lit not_above[] = {~a, b, ~same}, not_below[] = {a, ~b, ~same};
    formula.add_clause(not_above, sat::PermanentGroup);
    formula.add_clause(not_below, sat::PermanentGroup);
    same_[signal] = same;
  }
}

std::vector<SignalList> SupportSearch::supports(SignalFunction function,
                                                const SignalList& triggers) {
  assert(std::ranges::is_sorted(triggers));
  assert(states_.prefix().driven_signals().contains(function.signal));
  std::vector<SignalList> differences;
  const bool has_support = find_differences(function, triggers, differences);
  if (base::run_failed()) return {};
  if (!has_support) {
    base::print_error("CSC conflict for output signal " +
                      base::element(states_.prefix().signals, function.signal).name +
                      ": cannot derive equation");
    return {};
  }
  std::vector<SignalList> supports;
  if (differences.empty()) {
    supports.push_back(triggers);
    return supports;
  }
  for (const toolkit::Cube& cube : smallest_first(supports_meeting(differences, same_.size()))) {
    supports.push_back(with_triggers(cube, triggers));
  }
  return supports;
}

bool SupportSearch::find_differences(SignalFunction function, const SignalList& triggers,
                                     std::vector<SignalList>& differences) {
  sat::CnfFormula& formula = states_.formula();
  const sat::ClauseGroup group = formula.new_group();
  for (const net::SignalId trigger : triggers) formula.add_unit(same_[trigger], group);
  add_difference_in_function(function, group);
  bool has_support = true;
  while (has_support && !base::run_failed()) {
    ++solve_calls_;
    if (!formula.solve()) break;
    differences.push_back(least_difference(group));
    has_support = !differences.back().empty();
  }
  formula.remove_group(group);
  return has_support;
}

// From the difference in the model to one of which no part is a difference. What the solver finds
// is large at first; to exclude it alone would leave as much for the next time.
SignalList SupportSearch::least_difference(sat::ClauseGroup group) {
  sat::CnfFormula& formula = states_.formula();
  SignalList difference = difference_in_model();
  while (!difference.empty() && !base::run_failed()) {
    sat::Lits one_is_same, others_are_same;
    for (const net::SignalId signal : states_.prefix().visible_signals())
      (std::ranges::binary_search(difference, signal) ? one_is_same : others_are_same)
          .push_back(same_[signal]);
    formula.add_clause(one_is_same, group);
    ++solve_calls_;
    if (formula.solve_assuming(others_are_same) != true) break;
    difference = difference_in_model();
  }
  assert(std::ranges::is_sorted(difference));
  return difference;
}

// The function is true in the one state and false in the other.
void SupportSearch::add_difference_in_function(SignalFunction function, sat::ClauseGroup group) {
  assert(has_two_functions(style_) == (function.phase != FunctionPhase::next_state));
  sat::CnfFormula& formula = states_.formula();
  if (!has_two_functions(style_)) {
    formula.add_unit(~states_.state(0).next_value(function.signal), group);
    formula.add_unit(states_.state(1).next_value(function.signal), group);
    return;
  }
  const bool target = function.target();
  states_.add_excited(0, function.signal, target, group);
  if (style_ == SynthesisStyle::standard_c) {
    states_.add_not_excited(1, function.signal, target, group);
  } else {
    formula.add_unit(states_.state(1).next_value(function.signal) ^ target, group);
  }
}

SignalList SupportSearch::difference_in_model() {
  const sat::CnfFormula& formula = states_.formula();
  SignalList difference;
  for (const net::SignalId signal : states_.prefix().visible_signals()) {
    const bool one = formula.is_true(states_.state(0).code(signal));
    const bool other = formula.is_true(states_.state(1).code(signal));
    if (one != other) difference.push_back(signal);
  }
  assert(std::ranges::is_sorted(difference));
  return difference;
}

}  // namespace vorel::synthesis
