// -E, -G and -S against all reachable states of random STGs.
#include "synthesis/equation_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "base/messages.h"
#include "conflicts/conflicts_support.h"
#include "oracle/equation_circuit.h"
#include "oracle/parse_g.h"
#include "support/legacy_files.h"
#include "synthesis/assumptions.h"
#include "synthesis/synthesis_support.h"
#include "toolkit/toolkit_testing.h"

namespace vorel::synthesis {
namespace {

using conflicts_support::Subject;

class Derivation {
 public:
  Derivation(const Subject& subject, SynthesisStyle style, int solver, std::size_t max_codes)
      : subject_{subject},
        style_{style},
        engine_{subject.prefix,
                configuration::SearchOptions::of(support::default_params({{"solver", solver}})),
                style, configuration::Notes::given, max_codes} {
    for (const auto& configuration : subject.configurations) states_.insert(configuration.state);
  }

  // By signal, SET before RESET; none when a conflict of codes was reported.
  std::vector<const SignalSolution*> run() { return solutions_of(engine_); }

  void check(const std::vector<const SignalSolution*>& solutions) const {
    const std::size_t functions = has_two_functions(style_) ? 2 : 1;
    ASSERT_EQ(solutions.size(),
              (subject_.prefix.internals_end - subject_.prefix.inputs_end) * functions);
    for (std::size_t i = 0; i < solutions.size(); ++i) {
      const auto signal = static_cast<std::uint32_t>(subject_.prefix.inputs_end + i / functions);
      SCOPED_TRACE(solutions[i]->name());
      check_order(*solutions[i]);
      for (const SignalImplementation& alternative : solutions[i]->alternatives) {
        SCOPED_TRACE(to_string(alternative.equation));
        check_context(*solutions[i], alternative);
        for (const std::uint32_t state : states_) {
          if (functions == 1) {
            EXPECT_EQ(value(alternative, state), next_value(signal, state));
            if (style_ == SynthesisStyle::four_sets) check_sets(alternative, signal, state);
          } else {
            check_driver(alternative, signal, state, /*target=*/i % 2 == 0);
          }
        }
      }
    }
  }

 private:
  static void check_order(const SignalSolution& solution) {
    ASSERT_FALSE(solution.alternatives.empty());
    EXPECT_EQ(solution.cost(), solution.best().cost);
    EXPECT_TRUE(std::ranges::is_sorted(solution.alternatives, {}, &SignalImplementation::cost));
  }

  // The context is what the equation needs and the triggers, which an equation seldom does without.
  void check_context(const SignalSolution& solution,
                     const SignalImplementation& alternative) const {
    EXPECT_EQ(alternative.cost, literal_count(alternative.equation));
    const std::set<std::string> context(alternative.context.begin(), alternative.context.end());
    std::set<std::string> needed = oracle::names_in(alternative.equation);
    EXPECT_TRUE(std::ranges::includes(context, needed)) << "a literal that is not in the context";
    needed.insert(solution.triggers().begin(), solution.triggers().end());
    if (style_ == SynthesisStyle::complex_gate) {
      EXPECT_EQ(needed, context);
    }
  }

  // SET (or RESET) is true where the signal is about to take the target value, and false where its
  // next value is the other; where the signal stays at the target, it is free.
  void check_driver(const SignalImplementation& alternative, std::uint32_t signal,
                    std::uint32_t state, bool target) const {
    const bool next = next_value(signal, state);
    const bool is_excited = subject_.excited[state].contains(signal);
    const bool is_fixed = next != target || is_excited;
    EXPECT_TRUE(!is_fixed || value(alternative, state) == (next == target));
  }

  // A code is in the set of its region and in no other; a code of excited and stable states is in
  // that of the excited ones.
  void check_sets(const SignalImplementation& alternative, std::uint32_t signal,
                  std::uint32_t state) const {
    const bool is_excited = std::ranges::any_of(states_, [&](std::uint32_t other) {
      return subject_.excited[other].contains(signal) &&
             code_of(alternative, other) == code_of(alternative, state);
    });
    const std::size_t region = (next_value(signal, state) ? 0u : 2u) + (is_excited ? 0u : 1u);
    for (std::size_t set = 0; set < alternative.covers.size(); ++set) {
      const bool holds = toolkit::value_at(alternative.covers[set], code_of(alternative, state));
      EXPECT_EQ(holds, set == region) << "set " << set;
    }
  }

  // Bit by bit of the context.
  std::uint32_t code_of(const SignalImplementation& alternative, std::uint32_t state) const {
    std::uint32_t code = 0;
    for (std::size_t i = 0; i < alternative.context.size(); ++i) {
      const std::uint32_t signal = subject_.signal_named(alternative.context[i]);
      if (subject_.codes[state][signal] != 0) code |= 1u << i;
    }
    return code;
  }

  bool value(const SignalImplementation& alternative, std::uint32_t state) const {
    return oracle::value_of(alternative.equation, subject_.prefix, subject_.codes[state]);
  }

  bool next_value(std::uint32_t signal, std::uint32_t state) const {
    return (subject_.codes[state][signal] != 0) != subject_.excited[state].contains(signal);
  }

  const Subject& subject_;
  const SynthesisStyle style_;
  EquationSearch engine_;
  std::set<std::uint32_t> states_;
};

constexpr SynthesisStyle styles[] = {SynthesisStyle::complex_gate, SynthesisStyle::four_sets,
                                     SynthesisStyle::generalised_c, SynthesisStyle::standard_c};

void expect_right_equations(const Subject& subject, SynthesisStyle style, int solver,
                            std::size_t max_codes) {
  const support::CaughtMessages messages;
  Derivation derivation(subject, style, solver, max_codes);
  const auto solutions = derivation.run();
  ASSERT_EQ(messages.text(), "");
  derivation.check(solutions);
  const bool has_dummies = subject.prefix.internals_end < subject.prefix.signals.size();
  if (style == SynthesisStyle::standard_c && !has_dummies) {
    EXPECT_EQ(oracle::find_hazard(subject.prefix, subject.graph, subject.initial, solutions), "");
  }
}

// An error ends the process that it happens in. The signal that is named is one of those in
// conflict.
void expect_conflict_told(const Subject& subject, SynthesisStyle style, int solver) {
  std::string names;
  for (const std::uint32_t signal : subject.csc_conflicts()) {
    names += (names.empty() ? "" : "|") + subject.prefix.signals[signal]->name;
  }
  const auto derive = [&] {
    std::exit(Derivation(subject, style, solver, 1).run().empty() ? base::raise_severity(0) : 0);
  };
  EXPECT_EXIT(
      derive(), testing::ExitedWithCode(base::severity_error),
      "^\nError: CSC conflict for output signal (" + names + "): cannot derive equation\n$");
}

void expect_right_equations_of_random_stgs(const oracle::RandomStgParams& params,
                                           std::uint64_t count) {
  std::size_t judged = 0;
  const std::uint64_t tried = support::for_each_seed(count, [&](std::uint64_t seed) {
    const auto subject = Subject::make(oracle::random_stg(seed, params));
    if (!subject || configuration::has_dummy_cutoffs(subject->prefix)) return;
    // What dummies decide can be a conflict or none, by how the state is reached.
    const bool has_conflict = !subject->csc_conflicts().empty();
    if (has_conflict && subject->csc_conflicts_that_no_dummy_decides().empty()) return;
    judged += has_conflict ? 0 : 1;
    for (const SynthesisStyle style : styles) {
      SCOPED_TRACE("style " + std::to_string(static_cast<int>(style)));
      const int solver = static_cast<int>(seed % 2);
      if (has_conflict) {
        expect_conflict_told(*subject, style, solver);
      } else {
        for (const std::size_t max_codes : {3, 1000}) {
          expect_right_equations(*subject, style, solver, max_codes);
        }
      }
    }
  });
  EXPECT_GT(judged, tried / 5);
}

TEST(EquationSearch, EquationsOfRandomStgsAreRightInAllReachableStates) {
  expect_right_equations_of_random_stgs({.max_states = 60}, 60);
  expect_right_equations_of_random_stgs({.dummies = true, .max_states = 60}, 60);
  expect_right_equations_of_random_stgs({.toggles = true, .max_states = 60}, 40);
}

net::StgPrefix prefix_of(const std::string& declarations, const std::string& edges) {
  auto prefix =
      oracle::unfold(*oracle::parse_g(".model m\n.inputs a\n.outputs b c d\n" + declarations +
                                      ".graph\n" + edges + "\n.marking { <d-,a+> }\n.end\n"));
  EXPECT_TRUE(prefix && net::find_initial_values(*prefix));
  return std::move(*prefix);
}

// What is known is told by its cost. c comes just before n, and d just after it.
TEST(EquationSearch, KnownEquationsStayWhereTheInsertedSignalIsNoNeighbour) {
  const net::StgPrefix before =
      prefix_of("", "a+ b+\nb+ c+\nc+ d+\nd+ a-\na- b-\nb- c-\nc- d-\nd- a+");
  const net::StgPrefix after = prefix_of(
      ".internal n\n", "a+ b+\nb+ c+\nc+ n+\nn+ d+\nd+ a-\na- b-\nb- c-\nc- n-\nn- d-\nd- a+");
  for (const SynthesisStyle style : styles) {
    SCOPED_TRACE("style " + std::to_string(static_cast<int>(style)));
    const auto options = configuration::SearchOptions::of(support::default_params({}));
    EquationSearch first(before, options, style), second(after, options, style),
        fresh(after, options, style);
    std::map<std::pair<std::string, std::vector<std::string>>, SignalImplementation> known;
    for (const SignalSolution* solution : solutions_of(first)) {
      for (SignalImplementation implementation : solution->alternatives) {
        implementation.cost += 100;
        known.emplace(std::pair(solution->name(), implementation.context), implementation);
      }
    }
    second.use({"n", [&known](const std::string& name, const auto& context) {
                  const auto found = known.find({name, context});
                  return found == known.end() ? nullptr : &found->second;
                }});
    const auto solutions = solutions_of(second), expected = solutions_of(fresh);
    ASSERT_EQ(solutions.size(), expected.size());
    std::set<char> kept;
    for (std::size_t i = 0; i < solutions.size(); ++i) {
      SCOPED_TRACE(solutions[i]->name());
      std::multiset<std::string> equations, expected_equations;
      for (const auto& alternative : solutions[i]->alternatives) {
        equations.insert(to_string(alternative.equation));
        if (alternative.cost >= 100) kept.insert(solutions[i]->name().front());
      }
      for (const auto& alternative : expected[i]->alternatives)
        expected_equations.insert(to_string(alternative.equation));
      EXPECT_EQ(equations, expected_equations);
    }
    EXPECT_EQ(kept, (std::set{'b'}));
  }
}

// What disables what, and what is dead, by the state graph.
void expect_broken_assumptions_told(const oracle::RandomStgParams& params) {
  std::size_t compared = 0, broken = 0;
  const std::uint64_t tried = support::for_each_seed(150, [&](std::uint64_t seed) {
    const auto prefix = oracle::unfold(oracle::random_stg(seed, params));
    if (!prefix || configuration::has_dummy_cutoffs(*prefix)) return;
    const auto graph = oracle::explore<net::Stg>(*prefix);
    const configuration::StateStructure<net::StgPrefix> structure(*prefix);
    const auto options = configuration::SearchOptions::of(
        support::default_params({{"solver", static_cast<int>(seed % 2)}}));
    std::set<std::pair<std::uint32_t, std::uint32_t>> found;
    for (const Disabling& pair : find_disablings(structure, options.encoding)) {
      EXPECT_TRUE(found.emplace(pair.signal.value, pair.by.value).second) << "told twice";
    }
    auto expected = oracle::disabled_signals(*prefix, graph);
    // Where a dummy decides alone, the state graph does not show that no other signal does.
    for (const std::uint32_t signal : oracle::signals_that_dummies_disable(graph)) {
      const auto is_of_signal = [signal](const auto& pair) { return pair.first == signal; };
      std::erase_if(
          found, [&](const auto& pair) { return is_of_signal(pair) && expected.contains(pair); });
      std::erase_if(expected, is_of_signal);
    }
    EXPECT_EQ(found, expected);
    std::set<net::SignalId> dead;
    for (const net::SignalId signal : prefix->driven_signals()) dead.insert(signal);
    for (const auto& state : graph.states) {
      for (const auto& arc : state.arcs) dead.erase(base::id_of(*arc.transition->signal));
    }
    EXPECT_TRUE(std::ranges::equal(dead_signals(structure), dead));
    ++compared;
    broken += expected.empty() ? 0 : 1;
  });
  EXPECT_GT(compared, tried / 4);
  EXPECT_GT(broken, compared / 40);
  EXPECT_LT(broken, compared);
}

TEST(Assumptions, AgreeWithTheStateGraph) {
  for (const auto& params : conflicts_support::kinds_of_stgs)
    expect_broken_assumptions_told(params);
}

TEST(SignalSolution, TrimmingKeepsWhatTiesWithTheFirstAlternativeThatMayBeTheLast) {
  const struct {
    std::size_t first, last;
    std::vector<std::uint64_t> costs, left;
  } table[] = {
      {0, 0, {1, 1}, {1}},
      {0, 9, {1, 1, 1, 2}, {1, 1, 1}},
      {1, 2, {1, 2, 2, 2, 3}, {1, 2, 2}},
      {1, 3, {1, 2, 3, 3}, {1, 2}},
      {2, 5, {1, 2}, {1, 2}},
      {1, 5, {1, 2}, {1, 2}},
  };
  for (const auto& row : table) {
    SignalSolution solution(false, "z", {});
    for (const std::uint64_t cost : row.costs) {
      SignalImplementation alternative;
      alternative.cost = cost;
      solution.alternatives.push_back(std::move(alternative));
    }
    solution.trim(row.first, row.last);
    std::vector<std::uint64_t> left;
    for (const auto& alternative : solution.alternatives) left.push_back(alternative.cost);
    EXPECT_EQ(left, row.left) << row.first << ' ' << row.last;
  }
}

}  // namespace
}  // namespace vorel::synthesis
