// What a model says of the state that its configuration ends in, against the token game on it.
#include "configuration/state_literals.h"

#include <gtest/gtest.h>

#include "configuration/configuration_encoding.h"
#include "configuration/decoding.h"
#include "configuration/final_state.h"
#include "net/initial_values.h"
#include "net/merge.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "sat/enumeration.h"
#include "support/caught_messages.h"
#include "support/process_builder.h"
#include "support/seeds.h"

namespace vorel::configuration {
namespace {

// All literals of all states, each definition in the halves that are asked for one after the other.
template <net::Process P>
class Comparison {
 public:
  Comparison(const P& process, Enabledness enabledness)
      : process_{process},
        structure_{process},
        enabledness_{enabledness},
        formula_({}),
        vars_{process, formula_},
        state_{structure_, vars_, enabledness} {
    ConfigurationEncoding<P> encoding(vars_);
    encoding.encode_causality();
    encoding.encode_conflicts();
    if constexpr (P::is_merged) encoding.encode_no_gaps();
    for (const int polarity : {+1, -1}) ask(polarity);
  }

  // Gives how many configurations there were, at most `most`.
  std::size_t run(std::size_t most) {
    sat::Lits lits;
    for (const auto& event : process_.events) lits.push_back(vars_.event_lit(*event));
    std::erase(lits, sat::LitFalse);
    std::size_t count = 0;
    sat::enumerate(
        formula_, lits, formula_.group(0),
        [&](const sat::LiteralCube&) {
          ++count;
          compare(FinalState<P>(structure_, decode_events(vars_), enabledness_));
        },
        most);
    return count;
  }

 private:
  void ask(int polarity) {
    for (const auto& place : process_.places) state_.marked(*place, polarity);
    for (const auto& event : process_.events) state_.enabled(*event, polarity);
    for (const auto& transition : process_.transitions) state_.enabled(*transition, polarity);
    if constexpr (P::NetType::has_signals) {
      for (const net::SignalId signal : process_.visible_signals()) {
        state_.code(signal);
        state_.excited(signal, polarity);
        state_.next_value(signal);
      }
    }
  }

  bool value(sat::Lit lit) { return formula_.is_true(lit); }

  void compare(const FinalState<P>& state) {
    for (const auto& p : process_.places) EXPECT_EQ(value(state_.marked(*p)), state.is_marked(*p));
    for (const auto& e : process_.events) {
      EXPECT_EQ(value(state_.enabled(*e)), state.is_enabled(*e)) << e->transition->name;
    }
    for (const auto& t : process_.transitions) {
      EXPECT_EQ(value(state_.enabled(*t)), state.is_enabled(*t)) << t->name;
    }
    if constexpr (P::NetType::has_signals) {
      for (const net::SignalId signal : process_.visible_signals()) {
        EXPECT_EQ(value(state_.code(signal)), state.value(signal));
        EXPECT_EQ(value(state_.excited(signal)), state.is_excited(signal));
        EXPECT_EQ(value(state_.next_value(signal)), state.next_value(signal));
        EXPECT_EQ(state.code()[signal], state.value(signal));
      }
    }
  }

  const P& process_;
  const StateStructure<P> structure_;
  const Enabledness enabledness_;
  sat::CnfFormula formula_;
  ConfigurationVars<P> vars_;
  StateLiterals<P> state_;
};

TEST(StateLiterals, SayWhatTheTokenGameSaysOnRandomNets) {
  const support::CaughtMessages quiet;
  std::size_t states = 0;
  const std::uint64_t tried = support::for_each_seed(60, [&](std::uint64_t seed) {
    const auto prefix = oracle::unfold(oracle::random_net(seed));
    ASSERT_TRUE(prefix);
    states += Comparison<net::NetPrefix>(*prefix, Enabledness::direct).run(60);
    const auto merged = net::merge(*prefix);
    states += Comparison<net::NetMergedProcess>(merged, Enabledness::direct).run(60);
  });
  EXPECT_GT(states, 40 * tried);
}

TEST(StateLiterals, SayWhatTheTokenGameSaysOnRandomStgs) {
  const support::CaughtMessages quiet;
  support::for_each_seed(60, [&](std::uint64_t seed) {
    auto prefix = oracle::unfold(oracle::random_stg(seed));
    ASSERT_TRUE(prefix);
    net::find_initial_values(*prefix);
    for (const Enabledness enabledness : {Enabledness::direct, Enabledness::via_dummies}) {
      Comparison<net::StgPrefix>(*prefix, enabledness).run(100);
    }
    const auto merged = net::merge(*prefix);
    Comparison<net::StgMergedProcess>(merged, Enabledness::direct).run(60);
  });
}

// Two edges of one signal that know no order count both; one waits behind a dummy.
TEST(StateLiterals, CountEdgesOfASignalThatIsConcurrentWithItself) {
  const support::CaughtMessages quiet;
  const auto prefix =
      support::process_from<net::StgPrefix>("a~: p -> p2; d.k: q -> r; a~/2: r -> r2");
  net::find_initial_values(*prefix);
  EXPECT_EQ(Comparison<net::StgPrefix>(*prefix, Enabledness::via_dummies).run(100), 6u);
}

// More rivals than are listed one by one, some of them behind dummies.
TEST(StateLiterals, TellWhoCanStillFireOfManyRivals) {
  const support::CaughtMessages quiet;
  std::string text = "d.k: q -> r";
  for (int i = 0; i < 40; ++i) {
    const std::string n = std::to_string(i);
    text += "; a" + n + "+: choice " + (i % 4 == 0 ? "r" : "") + " -> p" + n;
  }
  const auto prefix = support::process_from<net::StgPrefix>(text);
  net::find_initial_values(*prefix);
  EXPECT_EQ(Comparison<net::StgPrefix>(*prefix, Enabledness::via_dummies).run(1000), 72u);
}

}  // namespace
}  // namespace vorel::configuration
