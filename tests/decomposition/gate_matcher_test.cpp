#include "decomposition/gate_matcher.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "base/run_state.h"
#include "oracle/gate_values.h"
#include "oracle/table_relation.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using oracle::SignalCases;
using oracle::Word;

constexpr std::uint32_t any_inputs = 2147483647;

// Of three variables, backwards, so that the matcher numbers them anew.
bdd::Bdd bdd_of(Word cases) {
  return oracle::bdd_of_function(
      cases, {bdd::bdd_variable(9), bdd::bdd_variable(8), bdd::bdd_variable(7)});
}

Word cases_of(const bdd::Bdd& f) {
  Word cases = 0;
  for (Word i = 0; i < 8; ++i) cases |= (f & bdd_of(Word{1} << i)).is_false() ? 0 : Word{1} << i;
  return cases;
}

// Area, and inverters.
using Price = std::pair<double, std::uint32_t>;

// A library, and all that its gates can do.
class KnownGates {
 public:
  explicit KnownGates(const GateLibrary& library)
      : library_{library}, names_{library.gate_list(any_inputs, true)}, all_{library, names_} {
    for (const std::string& name : names_) {
      uses_.emplace_back(library.gate(name));
      single_.emplace_back(library, std::vector{name});
    }
  }

  // Gives the number of matches.
  std::uint32_t expect_cheapest_matches(const SignalCases& signal) {
    Price best = no_match;
    for (std::size_t gate = 0; gate < names_.size(); ++gate) {
      const Price least = least_price(gate, signal);
      expect_match(single_[gate], signal, least);
      best = std::min(best, least);
    }
    return expect_match(all_, signal, best);
  }

 private:
  static constexpr Price no_match = {std::numeric_limits<double>::infinity(), 0};

  Price least_price(std::size_t number, const SignalCases& signal) const {
    const toolkit::LibraryGate& gate = library_.gate(names_[number]);
    const auto count = uses_[number].fewest_inverters(signal);
    if (!count || gate.pins.empty() != signal.is_constant()) return no_match;
    return {gate.area + *count * library_.inverter_area(), *count};
  }

  bool expect_match(GateMatcher& matcher, const SignalCases& signal, const Price& expected) const {
    const GateMatch match = matcher.match({bdd_of(signal.er_plus), bdd_of(signal.qr_plus),
                                           bdd_of(signal.er_minus), bdd_of(signal.qr_minus)});
    if (!match.exists()) {
      EXPECT_EQ(no_match, expected);
      return false;
    }
    EXPECT_EQ(Price(area_of(match, library_), inversion_count(match)), expected);
    std::vector<Word> pins;
    for (const bdd::Bdd& input : match.inputs) pins.push_back(cases_of(input));
    const toolkit::LibraryGate& gate = library_.gate(match.gate);
    EXPECT_TRUE(signal.is_within(oracle::driven_signal(oracle::next_output(gate, pins, 0),
                                                       oracle::next_output(gate, pins, ~Word{0}),
                                                       match.inverted)))
        << to_string(match, library_);
    return true;
  }

  const GateLibrary& library_;
  const std::vector<std::string> names_;
  std::vector<oracle::GateUses> uses_;
  std::vector<GateMatcher> single_;
  GateMatcher all_;
};

TEST(GateMatcher, FunctionsOfThreeVariablesTakeTheBestOfAllPlacings) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  KnownGates known(*library);
  std::uint32_t matches = 0;
  for (Word on = 0; on < 256; ++on) {
    matches += known.expect_cheapest_matches({on, on, on ^ 255u, on ^ 255u});
  }
  EXPECT_GT(matches, 100u);
}

// Some of the gates are binate, one swings. The area of the inverter is left open.
const std::string odd_library =
    "GATE one 2 o=1;GATE zero 3 o=0;GATE buf 3 o=a;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE maj 9 o=a*b+a*c+b*c;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE mux 8 o=a*s+b*!s;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE nor2 4 o=!(a+b);PIN * UNKNOWN 1 1 1 1 1 1\n"
    "LATCH c 6 q=a*b+(a+b)*n;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q n ASYNCH\n"
    "LATCH sr 5 q=s+!r*n;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q n ASYNCH\n"
    "LATCH swing 1 q=a*!n;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q n ASYNCH\n"
    "LATCH gc 6 q=a*b*c+(a+b+!c)*n;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q n ASYNCH\n"
    "GATE inv ";
// Parts of some functions after 0 and after 1, perhaps where the third variable is the value.
SignalCases random_signal(std::mt19937_64& random) {
  const Word after_0 = random() & random();
  const Word after_1 = random() % 4 == 0 ? after_0 : after_0 | random();
  const bool is_known = random() % 2 == 0;
  const Word ones = is_known ? 0xF0 : 0xFF, zeros = is_known ? 0x0F : 0xFF;
  const auto part_of = [&random](Word cases) { return cases & (random() | random()); };
  return {part_of(after_0 & zeros), part_of(after_1 & ones), part_of(~after_1 & ones),
          part_of(~after_0 & zeros)};
}

TEST(GateMatcher, RandomSignalsTakeTheBestOfAllPlacings) {
  const support::TemporaryFolder folder;
  std::uint32_t matches = 0;
  const auto [first, end] = support::seeds(60);
  for (const char* const area : {"2", "0", "30"}) {
    const auto library = GateLibrary::read(
        folder.write("odd", odd_library + area + " o=!a;PIN * UNKNOWN 1 1 1 1 1 1"));
    ASSERT_TRUE(library);
    KnownGates known(*library);
    for (std::uint64_t seed = first; seed < end; ++seed) {
      std::mt19937_64 random(seed);
      matches += known.expect_cheapest_matches(random_signal(random));
    }
  }
  EXPECT_GT(matches, end - first);
}

// The diagnostics, too, end with the match.
TEST(GateMatcher, KnownSignalsHaveTheGatesOfTheTextbooks) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  GateMatcher matcher(*library, library->gate_list(any_inputs, true));
  std::vector<bdd::Bdd> x;
  for (std::uint32_t i = 0; i < 6; ++i) x.push_back(bdd::bdd_variable(i));
  const bdd::Bdd both = x[3] & x[5], one = x[3] | x[5];
  const std::pair<const char*, bdd::BDDCover> rows[] = {
      {"Best match: Gate: const1:combinational, area: 8, inputs: ", bdd::BDDCover(bdd::Bdd(true))},
      {"Best match: Gate: delay:asynch, area: 0, inputs: e", bdd::BDDCover(x[4])},
      {"Best match: Gate: c_element1:asynch, area: 40, inputs: b, a", monotonic_shape(x[0], x[1])},
      // e is the signal's own value, which no pin needs.
      {"Best match: Gate: c_element0:asynch, area: 40, inputs: d, f",
       {both & ~x[4], one & x[4], ~one & x[4], ~both & ~x[4]}},
      {"Best match: Gate: aoi12:combinational (inverted), area: 48, inputs: f, a, d",
       bdd::BDDCover(x[5] | (x[0] & x[3]))},
      {"No match found - too many inputs", bdd::BDDCover(x[0] & x[1] & x[2] & x[3] & x[4])},
      // A code at which the signal is to rise and to stay 0.
      {"No match found", {x[0], x[0], bdd::Bdd(false), x[0]}},
  };
  const std::vector<std::string> names = {"a", "b", "c", "d", "e", "f"};
  for (const auto& [last_line, query] : rows) {
    const support::CaughtMessages messages;
    base::run_state().verbosity = 5;
    matcher.match(query, names);
    base::run_state().verbosity = 0;
    EXPECT_EQ(messages.text(),
              "\nTrying to match " + bdd::to_string(query, names) + "\n" + last_line);
  }
}

}  // namespace
}  // namespace vorel::decomposition
