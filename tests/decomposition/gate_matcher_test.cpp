#include "decomposition/gate_matcher.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "base/run_state.h"
#include "oracle/gate_values.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using oracle::SmallSignal;
using oracle::SmallTable;

constexpr std::uint32_t any_inputs = 2147483647;
constexpr std::uint32_t variables[] = {2, 9, 30};  // of the three variables of a small table

bdd::Bdd bdd_of(SmallTable table) {
  bdd::Bdd result(false);
  for (std::uint32_t point = 0; point < 8; ++point) {
    if ((table >> point) % 2 == 0) continue;
    bdd::Bdd code(true);
    for (std::uint32_t v = 0; v < 3; ++v) {
      const bdd::Bdd variable = bdd::bdd_variable(variables[v]);
      code &= (point >> v) % 2 == 1 ? variable : ~variable;
    }
    result |= code;
  }
  return result;
}

bdd::BDDCover cover_of(const SmallSignal& signal) {
  return {bdd_of(signal.er_plus), bdd_of(signal.qr_plus), bdd_of(signal.er_minus),
          bdd_of(signal.qr_minus)};
}

// Gate by gate and inverter by inverter, at each code. With an inverter behind it a gate that
// changes its output must not change it back before the inverter has followed.
void expect_to_implement(const toolkit::LibraryGate& gate, const GateMatch& match,
                         const SmallSignal& signal) {
  ASSERT_EQ(match.inputs.size(), gate.input_count());
  for (std::uint32_t code = 0; code < 8; ++code) {
    std::vector<int> point(64, 0);
    for (std::uint32_t v = 0; v < 3; ++v) point[variables[v]] = (code >> v) % 2;
    std::vector<bool> pins;
    for (const bdd::Bdd& input : match.inputs) pins.push_back(input.evaluate(point));
    const auto has = [code](SmallTable table) { return (table >> code) % 2 == 1; };
    for (const bool value : {false, true}) {
      const bool is_excited = has(value ? signal.er_minus : signal.er_plus);
      if (!is_excited && !has(value ? signal.qr_plus : signal.qr_minus)) continue;
      const bool output = value != match.inverted;
      const bool next = oracle::next_output(gate, pins, output);
      EXPECT_EQ(next != output, is_excited) << gate.name << ' ' << code;
      if (is_excited && match.inverted) {
        EXPECT_EQ(oracle::next_output(gate, pins, next), next) << gate.name << ' ' << code;
      }
    }
  }
}

bool is_constant(const SmallSignal& signal) {
  return (signal.er_plus | signal.qr_plus) == 0 || (signal.er_minus | signal.qr_minus) == 0;
}

// The gates of a library with all that they can do.
struct KnownGates {
  explicit KnownGates(const GateLibrary& its_library, bool use_latches)
      : library{its_library}, names{library.gate_list(any_inputs, use_latches)} {
    for (const std::string& name : names) uses.emplace_back(library.gate(name));
  }

  // Of one gate, or infinite.
  double least_area(std::size_t gate, const SmallSignal& signal) const {
    const toolkit::LibraryGate& description = library.gate(names[gate]);
    const auto count = description.pins.empty() == is_constant(signal)
                           ? uses[gate].fewest_inverters(signal)
                           : std::nullopt;
    return count ? description.area + *count * library.inverter_area()
                 : std::numeric_limits<double>::infinity();
  }

  const GateLibrary& library;
  std::vector<std::string> names;
  std::vector<oracle::GateUses> uses;
};

// True if there is a match.
bool expect_least_area(GateMatcher& matcher, const KnownGates& known, const SmallSignal& signal,
                       double expected) {
  const bdd::BDDCover query = cover_of(signal);
  const GateMatch match = matcher.match(query);
  const double area =
      match.exists() ? area_of(match, known.library) : std::numeric_limits<double>::infinity();
  EXPECT_EQ(area, expected) << bdd::to_string(query) << to_string(match, known.library);
  if (match.exists()) expect_to_implement(known.library.gate(match.gate), match, signal);
  return match.exists();
}

TEST(GateMatcher, FunctionsOfThreeVariablesTakeTheAreaOfTheBestOfAllPlacings) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  const KnownGates known(*library, true);
  GateMatcher all(*library, known.names);
  std::vector<GateMatcher> single;
  for (const std::string& name : known.names) single.emplace_back(*library, std::vector{name});
  std::uint32_t matches = 0;
  for (std::uint32_t table = 0; table < 256; ++table) {
    const auto on = static_cast<SmallTable>(table), off = static_cast<SmallTable>(~table);
    const SmallSignal signal{on, on, off, off};
    double best = std::numeric_limits<double>::infinity();
    for (std::size_t gate = 0; gate < known.names.size(); ++gate) {
      const double least = known.least_area(gate, signal);
      best = std::min(best, least);
      if (expect_least_area(single[gate], known, signal, least)) ++matches;
    }
    expect_least_area(all, known, signal, best);
  }
  EXPECT_GT(matches, 1000u);
}

// Some of the gates are binate, some have pins that may change places, one swings.
const char* const odd_library =
    "GATE one 2 o=1;GATE zero 3 o=0;GATE buf 3 o=a;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE maj 9 o=a*b+a*c+b*c;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE mux 8 o=a*s+b*!s;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE xor 7 o=a^b;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE nor2 4 o=!(a+b);PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE aoi 5 o=!(a*b+c);PIN * UNKNOWN 1 1 1 1 1 1\n"
    "LATCH c 6 q=a*b+(a+b)*n;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q n ASYNCH\n"
    "LATCH sr 5 q=s+!r*n;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q n ASYNCH\n"
    "LATCH swing 1 q=a*!n;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q n ASYNCH\n"
    "LATCH gc 6 q=a*b*c+(a+b+!c)*n;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q n ASYNCH\n"
    "GATE inv ";

SmallTable random_subset(std::mt19937_64& random, std::uint32_t table) {
  return static_cast<SmallTable>(table & (random() | random()));
}

// Of some functions after 0 and after 1, perhaps those that a gate can have; the value is perhaps
// that of the third variable.
SmallSignal random_signal(std::mt19937_64& random) {
  const auto after_0 = static_cast<SmallTable>(random() & random());
  const auto after_1 = random() % 4 == 0 ? after_0 : static_cast<SmallTable>(after_0 | random());
  SmallTable ones = 0xF0, zeros = 0x0F;
  if (random() % 2 == 0) ones = zeros = 0xFF;
  return {random_subset(random, after_0 & zeros), random_subset(random, after_1 & ones),
          random_subset(random, ~after_1 & ones), random_subset(random, ~after_0 & zeros)};
}

TEST(GateMatcher, RandomSignalsTakeTheAreaOfTheBestOfAllPlacings) {
  const support::TemporaryFolder folder;
  std::uint32_t matches = 0;
  const auto [first, end] = support::seeds(100);
  for (const char* inverter : {"2", "0", "30"}) {
    const std::string text =
        odd_library + std::string(inverter) + " o=!a;PIN * UNKNOWN 1 1 1 1 1 1\n";
    const auto library = GateLibrary::read(folder.write("odd", text));
    ASSERT_TRUE(library);
    const KnownGates known(*library, true);
    GateMatcher matcher(*library, known.names);
    for (std::uint64_t seed = first; seed < end; ++seed) {
      std::mt19937_64 random(seed);
      const SmallSignal signal = random_signal(random);
      double best = std::numeric_limits<double>::infinity();
      for (std::size_t gate = 0; gate < known.names.size(); ++gate) {
        best = std::min(best, known.least_area(gate, signal));
      }
      if (expect_least_area(matcher, known, signal, best)) ++matches;
    }
  }
  EXPECT_GT(matches, (end - first) / 2);
}

struct NamedQuery {
  const char* expected;
  bdd::BDDCover query;
};

TEST(GateMatcher, KnownSignalsHaveTheGatesOfTheTextbooks) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  GateMatcher matcher(*library, library->gate_list(any_inputs, true));
  std::vector<bdd::Bdd> x;
  for (std::uint32_t i = 0; i < 6; ++i) x.push_back(bdd::bdd_variable(i));
  const bdd::Bdd both = x[3] & x[5], one = x[3] | x[5];
  const NamedQuery rows[] = {
      {"Gate: const1:combinational, area: 8, inputs: ", bdd::BDDCover(bdd::Bdd(true))},
      {"Gate: delay:asynch, area: 0, inputs: x4", bdd::BDDCover(x[4])},
      {"Gate: c_element1:asynch, area: 40, inputs: x1, x0", monotonic_shape(x[0], x[1])},
      // The variable 4 is the signal's own: no pin needs it.
      {"Gate: c_element0:asynch, area: 40, inputs: x3, x5",
       {both & ~x[4], one & x[4], ~one & x[4], ~both & ~x[4]}},
      {"Gate: aoi12:combinational (inverted), area: 48, inputs: x5, x0, x3",
       bdd::BDDCover(x[5] | (x[0] & x[3]))},
      {"Gate: and4:combinational, area: 48, inputs: x0, x1, x2, x5",
       bdd::BDDCover(x[5] & x[2] & x[1] & x[0])},
      {"UNSUCCESSFUL MATCH", bdd::BDDCover(x[0] & x[1] & x[2] & x[3] & x[4])},
      {"UNSUCCESSFUL MATCH", bdd::BDDCover(x[0] ^ x[1] ^ x[2])},
      // A code at which the signal is to rise and to stay 0.
      {"UNSUCCESSFUL MATCH", {x[0], x[0], bdd::Bdd(false), x[0]}},
  };
  for (const NamedQuery& row : rows) {
    EXPECT_EQ(to_string(matcher.match(row.query), *library), row.expected);
  }
  EXPECT_EQ(matcher.max_inputs(), 4u);
  GateMatcher without_latches(*library, library->gate_list(any_inputs, false));
  EXPECT_EQ(to_string(without_latches.match(monotonic_shape(x[0], x[1])), *library),
            "UNSUCCESSFUL MATCH");
}

TEST(GateMatcher, WideGatesAreMatchedWithoutLookingAtAllCodes) {
  const support::TemporaryFolder folder;
  std::string wide = "GATE wide 50 o=!(";
  bdd::Bdd query(false);
  for (std::uint32_t i = 0; i < 20; i += 2) {
    const std::string a = "a" + std::to_string(i), b = "a" + std::to_string(i + 1);
    wide += (i == 0 ? "" : "+") + a + "*" + b;
    query |= bdd::bdd_variable(40 - i) & ~bdd::bdd_variable(41 - i);
  }
  const auto library = GateLibrary::read(
      folder.write("wide", std::string(odd_library) + "2 o=!a;PIN * UNKNOWN 1 1 1 1 1 1\n" + wide +
                               ");PIN * UNKNOWN 1 1 1 1 1 1\n"));
  ASSERT_TRUE(library);
  GateMatcher matcher(*library, library->gate_list(any_inputs, true));
  const GateMatch match = matcher.match(bdd::BDDCover(query));
  EXPECT_EQ(match.gate, "wide");
  EXPECT_EQ(inversion_count(match), 11u);
  EXPECT_EQ(matcher.covers_of_match(match), bdd::BDDCover(query));
}

TEST(GateMatcher, DiagnosticsFollowTheSearch) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  GateMatcher matcher(*library, library->gate_list(2, false));
  const std::vector<std::string> names = {"req", "ack", "x"};
  const bdd::Bdd req = bdd::bdd_variable(0), ack = bdd::bdd_variable(1);
  const auto told = [&](int verbosity, const bdd::Bdd& function) {
    const support::CaughtMessages messages;
    base::run_state().verbosity = verbosity;
    matcher.match(bdd::BDDCover(function), names);
    base::run_state().verbosity = 0;
    return messages.text();
  };
  EXPECT_EQ(told(4, req & ack), "");
  EXPECT_EQ(told(5, req & ack),
            "\nTrying to match BDDCover{req ack}\nBest match: Gate: and2:combinational, area: 32, "
            "inputs: req, ack");
  EXPECT_EQ(told(5, req ^ ack), "\nTrying to match BDDCover{req' ack + req ack'}\nNo match found");
  EXPECT_EQ(told(5, req & ack & bdd::bdd_variable(2)),
            "\nTrying to match BDDCover{req ack x}\nNo match found - too many inputs");
  const std::string all = told(7, ~req);
  for (const char* const part :
       {"\nCovers after substituting variables: BDDCover{x0'}",
        "\nMatch(es) exist for gate inv:combinational",
        "\nBDD for all matches: x1' x2' (x0' x3' + x0 x3)",
        "\nBetter match found with gate inv:combinational",
        "\nNo improvement in cost with gate nand2:combinational; skip the gate"}) {
    EXPECT_NE(all.find(part), std::string::npos) << part << all;
  }
}

}  // namespace
}  // namespace vorel::decomposition
