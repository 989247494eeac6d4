// New signals for random functions of random STGs, judged by the states of the result.
#include <gtest/gtest.h>

#include "bdd/cover_bdd.h"
#include "decomposition/subfunction_inserter.h"
#include "net/clone_net.h"
#include "oracle/book_insertion.h"
#include "oracle/prefix_checks.h"
#include "oracle/random.h"
#include "oracle/resolution_checks.h"
#include "resolution/insertions.h"
#include "resolution/resolution_support.h"
#include "support/default_params.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd;
using Names = std::vector<std::string>;

Names names_of(const net::Stg& stg) {
  Names names;
  for (const net::SignalId signal : stg.visible_signals())
    names.push_back(base::element(stg.signals, signal).name);
  return names;
}

Bdd random_function(std::size_t variables, oracle::Random& random) {
  Bdd function = bdd::bdd_variable(random.below(variables));
  for (std::uint32_t more = random.below(3); more > 0; --more) {
    const Bdd literal = bdd::bdd_variable(random.below(variables)) ^ Bdd(random.chance(50));
    function = random.chance(60) ? function & literal : function | literal;
  }
  return random.chance(50) ? ~function : function;
}

// How the signal behaves beside a function of the others, by the states of the STG.
struct Behaviour {
  bool computes = true;  // the next value is the function in every state
  bool follows = true;  // it is excited to rise where the function is true, to fall where it is not
};

Behaviour behaviour_of(const net::Stg& stg, const std::string& signal, const Bdd& function,
                       const Names& names) {
  const auto graph = oracle::explore<net::Stg>(stg);
  const auto initial = *oracle::find_initial_values(stg, graph);
  const auto number_of = [&](const std::string& name) {
    return (*std::ranges::find(stg.signals, name, [](const auto& s) { return s->name; }))->index;
  };
  Behaviour behaviour;
  for (std::uint32_t i = 0; i < graph.states.size(); ++i) {
    const oracle::Values code = oracle::code_of(graph.states[i], initial);
    std::vector<int> inputs;
    for (const std::string& name : names) inputs.push_back(code[number_of(name)]);
    inputs.push_back(0);
    const bool value = function.evaluate(inputs), is_high = code[number_of(signal)] != 0;
    const bool excited = oracle::enabled_through_dummies(graph, i).contains(number_of(signal));
    if ((excited != is_high) != value) behaviour.computes = false;
    if (excited && is_high == value) behaviour.follows = false;
  }
  return behaviour;
}

// Prefixes without encoding conflicts, with all initial values.
template <class Check>
void on_coded_prefixes(std::uint64_t usual_count, Check check) {
  resolution_support::on_prefixes(usual_count, [&](const net::StgPrefix& made, std::uint64_t seed) {
    net::StgPrefix prefix = net::clone_prefix(made);
    if (!oracle::assign_initial_values(prefix) || names_of(prefix).empty()) return;
    if (oracle::conflicting_signals(prefix).empty()) check(prefix, seed);
  });
}

void expect_sound(const net::StgPrefix& prefix, const SubfunctionInsertion& insertion,
                  const net::StgPrefix& after, net::SignalId signal, const Bdd& function,
                  const Names& names) {
  const std::string& name = base::element(after.signals, signal).name;
  const resolution_support::OldHazards old_hazards(prefix);
  const std::string fault = oracle::resolution_fault(
      prefix, after, {.new_signals = {name}, .initial_value = insertion.initial_value});
  EXPECT_TRUE(fault.empty() || old_hazards.explain(fault)) << fault;
  EXPECT_EQ(oracle::completeness_fault(after, oracle::explore<net::Stg>(after)), "");
  const Behaviour behaviour = behaviour_of(after, name, function, names);
  EXPECT_EQ(behaviour.computes, insertion.expected_implementation);
  EXPECT_TRUE(behaviour.follows);
}

TEST(SubfunctionInserter, MakesSignalsThatDoWhatIsSaidOfThem) {
  unsigned expected = 0, unexpected = 0, local = 0, general = 0;
  on_coded_prefixes(40, [&](net::StgPrefix& prefix, std::uint64_t seed) {
    oracle::Random random(seed);
    const Names names = names_of(prefix);
    const base::Params params =
        support::default_params({{"concurrent_insertions", static_cast<int>(seed % 3)}});
    for (int i = 0; i < 6; ++i) {
      net::StgPrefix edited = net::clone_prefix(prefix);
      SubfunctionInserter inserter(edited, "x", names, params);
      const Bdd function = random_function(names.size(), random);
      const bool locally = random.chance(30);
      auto insertion = inserter.insert(function, "test", locally);
      while (insertion && !inserter.keeps_coding(inserter.after(*insertion).prefix)) {
        inserter.refuse(function, *insertion);
        insertion = inserter.insert(function, "test", locally);
      }
      if (!insertion) continue;
      SCOPED_TRACE(toolkit::to_string(bdd::expression_of(function, names)) + ": " +
                   insertion->text());
      EXPECT_TRUE(!locally || insertion->is_local());
      ++(insertion->expected_implementation ? expected : unexpected);
      local += insertion->is_local();
      general += std::ranges::any_of(insertion->edges, [](const net::Insertion& edge) {
        return std::holds_alternative<net::General>(edge);
      });
      resolution::InsertedSignal inserted = inserter.after(*insertion);
      const net::SignalId signal = inserted.signal;
      inserter.adopt(std::move(inserted.prefix));
      expect_sound(prefix, *insertion, edited, signal, function, names);
    }
  });
  EXPECT_GT(expected, 0u);
  EXPECT_GT(unexpected, 0u);
  EXPECT_GT(local, 0u);
  RecordProperty("expected", static_cast<int>(expected));
  RecordProperty("unexpected", static_cast<int>(unexpected));
  RecordProperty("general", static_cast<int>(general));
}

// All signals of a rising and a falling edge, put into the net by states.
std::vector<net::Stg> signals_by_the_book(const net::StgPrefix& prefix) {
  const std::vector<net::Insertion> all = resolution::insertions(prefix, 0);
  std::vector<net::Stg> results;
  oracle::for_each_set(prefix, all, 2, [&](std::span<const std::size_t> set) {
    std::vector<net::Insertion> edges;
    for (const std::size_t number : set) edges.push_back(all[number]);
    if (edges.size() < 2) return;
    oracle::BookStep step = oracle::insert_signal_by_the_book(prefix, edges, "x");
    if (step.fault.empty() && step.has_one_code && step.signs.front() != step.signs.back() &&
        oracle::conflicting_signals(step.stg).empty())
      results.push_back(std::move(step.stg));
  });
  return results;
}

TEST(SubfunctionInserter, FindsASignalForTheFunctionWhereThereIsOneOfTwoEdges) {
  unsigned found = 0;
  on_coded_prefixes(12, [&](net::StgPrefix& prefix, std::uint64_t seed) {
    const Names names = names_of(prefix);
    // Where a cut-off is a dummy, the check for conflicts sees some that are none.
    const bool has_dummies = names.size() < prefix.signals.size();
    if (has_dummies || prefix.transitions.size() > 10) return;
    oracle::Random random(seed);
    const std::vector<net::Stg> results = signals_by_the_book(prefix);
    SubfunctionInserter inserter(prefix, "x", names, support::default_params({}));
    for (int i = 0; i < 10; ++i) {
      const Bdd function = random_function(names.size(), random);
      const bool exists = std::ranges::any_of(results, [&](const net::Stg& stg) {
        return behaviour_of(stg, "x", function, names).computes;
      });
      if (!exists) continue;
      ++found;
      const auto insertion = inserter.insert(function, "test", false);
      EXPECT_TRUE(insertion && insertion->expected_implementation)
          << toolkit::to_string(bdd::expression_of(function, names));
    }
  });
  EXPECT_GT(found, 0u);
}

TEST(SubfunctionInserter, KnowsWhatItWasAskedBefore) {
  net::StgPrefix prefix = resolution_support::unfold_example("celement");
  ASSERT_TRUE(oracle::assign_initial_values(prefix));
  const Names names = names_of(prefix);
  SubfunctionInserter inserter(prefix, "x", names, support::default_params({}));
  const Bdd both = bdd::bdd_variable(0) & bdd::bdd_variable(1);
  for (const bool local : {false, true, false, true}) {
    for (const Bdd& function : {both, ~both}) {
      const auto first = inserter.insert(function, "test", local);
      const auto second = inserter.insert(~function, "test", local);
      ASSERT_EQ(first.has_value(), second.has_value());
      if (first) {
        EXPECT_NE(first->initial_value, second->initial_value);
      }
    }
  }
  EXPECT_GE(inserter.stats().cache_hits, 14u);
}

}  // namespace
}  // namespace vorel::decomposition
