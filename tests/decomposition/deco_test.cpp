#include "decomposition/deco.h"

#include <gtest/gtest.h>

#include "base/run_state.h"
#include "decomposition/alg_decomposer.h"
#include "decomposition/deco_cost.h"
#include "decomposition/gate_matcher.h"
#include "oracle/truth_tables.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd, bdd::bdd_variable;

constexpr std::uint32_t placeholder = oracle::table_variables, own = 11, free_variable = 12;

const GateLibrary& built_in() {
  static const GateLibrary library = *GateLibrary::read("");
  return library;
}

GateLibrary only_nor() {
  const support::TemporaryFolder folder;
  std::string text;
  for (const char* const gate :
       {"zero 1 o=0", "one 1 o=1", "buf 2 o=a", "inv 2 o=!a", "nor 3 o=!(a+b)"})
    text += "GATE " + std::string(gate) + ";PIN * UNKNOWN 1 9 1 1 1 1\n";
  return *GateLibrary::read(folder.write("library", text));
}

TEST(Deco, GatesOfSubfunctionsComposeToTheFunctionInAnyLibrary) {
  const GateLibrary nor = only_nor();
  const Bdd operands[] = {bdd_variable(0), bdd_variable(1)};
  for (const GateLibrary* const library : {&built_in(), &nor}) {
    GateMatcher matcher(*library, library->gate_list(2, true));
    for (auto [seed, end] = support::seeds(40); seed != end; ++seed) {
      SCOPED_TRACE("seed " + std::to_string(seed));
      oracle::Random random(seed);
      const Bdd f = oracle::random_function(random, 63, 4).bdd;
      for (const AlgDecomposition& found : AlgDecomposer(placeholder).decompose(f)) {
        const bool is_collapsed = found.kind == AlgKind::collapsed;
        Deco deco;
        if (is_collapsed) {
          deco = collapsed_deco(found, placeholder);
        } else {
          const bool is_and = found.kind == AlgKind::conjunction;
          const GateMatch match = matcher.match(
              bdd::BDDCover(is_and ? operands[0] & operands[1] : operands[0] | operands[1]));
          deco = gate_deco(found, match, matcher.covers_of_match(match));
          EXPECT_EQ(inversion_count(deco.gate), deco.gate.inverted ? 1u : 0u);
        }
        deco.variable = own;
        EXPECT_EQ(next_value(deco, std::nullopt, free_variable), f);
        for (std::size_t i = 0; i < deco.subfunctions.size(); ++i) {
          const auto left = collapsed_deco(deco, i, free_variable);
          ASSERT_TRUE(left);
          EXPECT_EQ(next_value(*left, std::nullopt, free_variable + 1), f);
        }
      }
    }
  }
}

TEST(Deco, MatchedGatesAndLatchesComposeToTheirQueries) {
  GateMatcher matcher(built_in(), built_in().gate_list(4, true));
  const Bdd a = bdd_variable(4), b = bdd_variable(7), c = bdd_variable(2);
  for (const Bdd& f : {~a, a & ~b, ~(c | (a & b)), Bdd(true)}) {
    const GateMatch match = matcher.match(bdd::BDDCover(f));
    Deco deco = matched_deco(match, matcher.covers_of_match(match));
    deco.judge();
    EXPECT_TRUE(deco.useful && deco.directly_implementable && deco.is_local());
    EXPECT_EQ(next_value(deco, std::nullopt, free_variable), f);
  }
  const GateMatch latch = matcher.match(monotonic_shape(bdd_variable(0), bdd_variable(1)));
  Deco deco = monotonic_deco(a & b, ~a & ~b, latch, matcher.covers_of_match(latch));
  deco.variable = own;
  EXPECT_EQ(next_value(deco, {}, free_variable), bdd::ite(bdd_variable(own), a | b, a & b));
}

// One letter for each sub-function: l(iteral), 1 (constant), n(othing known), g(ate), i(nsertion),
// L(ocal insertion), b(oth gate and insertion).
Deco deco_of(DecoKind kind, const std::string& parts, std::uint64_t cost = 100) {
  const Bdd a = bdd_variable(0), b = bdd_variable(1);
  Deco deco;
  deco.kind = kind;
  deco.signal = "z";
  deco.variable = own;
  deco.literals = 6;
  deco.gate.gate = kind == DecoKind::collapsed ? "COLLAPSED" : "and2:combinational";
  deco.gate.inputs = {a, b};
  deco.shape = bdd::BDDCover(a & b);
  deco.placeholder = placeholder;
  deco.collapsed = bdd_variable(placeholder) & bdd_variable(5);
  for (const char letter : parts) {
    const std::string text(1, letter);
    Subfunction part(text == "l" ? ~a : text == "1" ? Bdd(true) : a ^ bdd_variable(2));
    if (text == "g" || text == "b") part.match = {.gate = "and2:combinational", .inputs = {a, b}};
    if (text == "i" || text == "b") part.insertion = {.cost = cost, .ack_count = 3, .text = "I"};
    if (text == "L") part.insertion = {.cost = cost, .ack_count = 1, .text = "I"};
    --cost;
    deco.subfunctions.push_back(part);
  }
  return deco;
}

TEST(Deco, IsJudgedByGatesAndInsertions) {
  using enum DecoKind;
  const struct {
    DecoKind kind;
    const char* parts;
    bool useful, direct;
    int chosen;  // -1: none
    bool local;
  } rows[] = {
      {boolean, "ll", true, true, -1, true},      {boolean, "l1", true, true, -1, true},
      {boolean, "lg", false, false, -1, false},  // its output would not be acknowledged
      {boolean, "li", true, false, 1, false},     {boolean, "Ln", false, false, 0, true},
      {boolean, "ib", true, false, 1, false},     {boolean, "ii", true, false, 1, false},
      {boolean, "bL", true, false, 1, true},      {monotonic, "gg", true, true, -1, true},
      {monotonic, "lg", true, true, -1, true},    {monotonic, "gi", true, false, 1, false},
      {monotonic, "gn", false, false, -1, false}, {collapsed, "L", true, false, 0, true},
      {collapsed, "g", false, false, -1, false},  {uninitialised, "", false, false, -1, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.parts);
    Deco deco = deco_of(row.kind, row.parts);
    deco.judge();
    EXPECT_EQ(deco.useful, row.useful);
    EXPECT_EQ(deco.directly_implementable, row.direct);
    EXPECT_EQ(deco.chosen ? static_cast<int>(*deco.chosen) : -1, row.chosen);
    EXPECT_EQ(deco.is_local(), row.local);
  }
  Deco without_latch = deco_of(monotonic, "gg");
  without_latch.gate = {};
  without_latch.judge();
  EXPECT_FALSE(without_latch.useful || without_latch.directly_implementable);
}

DecoSetting setting_where(bool has_gate) {
  return {.library = built_in(),
          .signal_count = 9,
          .first_free_variable = free_variable,
          .has_gate = [has_gate](const bdd::BDDCover&) { return has_gate; }};
}

// Areas of the built-in library: an inverter 16, an AND 32, two literals 24, four literals 40.
TEST(DecoCost, HasTheFieldsOfTheCandidate) {
  using enum DecoKind;
  const struct {
    DecoKind kind;
    const char* parts;
    bool has_gate;
    DecoCost cost;
  } rows[] = {
      {boolean, "ll", false, {false, false, false, false, 0, 0, 0, 0, 32}},
      {boolean, "li", false, {true, true, false, true, 72, 2, 40, 9, 72}},
      {boolean, "li", true, {true, true, false, true, 0, 2, 40, 9, 72}},
      {boolean, "lL", false, {true, false, false, false, 0, 0, 40, 9, 72}},
      {boolean, "lb", false, {true, false, false, true, 0, 2, 0, 9, 64}},
      {monotonic, "gg", false, {false, false, false, false, 0, 0, 0, 0, 96}},
      {collapsed, "i", true, {true, true, false, true, 64, 2, 64, 10, 64}},
      {collapsed, "L", false, {true, false, false, false, 24, 0, 64, 10, 64}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.parts);
    Deco deco = deco_of(row.kind, row.parts);
    const DecoSetting setting = setting_where(row.has_gate);
    rate(deco, setting);
    EXPECT_EQ(cost_of(deco, setting), row.cost);
    EXPECT_EQ(deco.cost, row.cost.value(16));
  }
  Deco useless = deco_of(boolean, "lg"), longer = deco_of(boolean, "lL");
  longer.literals = 2;
  rate(useless, setting_where(true));
  rate(longer, setting_where(true));
  EXPECT_EQ(useless.cost, 1.7976931348623157e308);
  EXPECT_TRUE(longer.degraded && longer.cost > 0x1.0p31 + 0x1.0p29);
}

TEST(DecoCost, ComparesFieldByFieldAndLargeAreasCarry) {
  const DecoCost ascending[] = {
      {.non_mappable_area = 1e9, .insertion_cost = 200, .total_area = 100},
      {.extra_acks = 1},
      {.extra_acks = 9, .non_mappable_area = 1e9},
      {.non_splittable_area = 1.9},
      {.non_splittable_area = 31, .extra_acks = 9, .non_mappable_area = 1e9},
      {.not_local = true},
      {.not_reduced_literals = true},
      {.chosen_not_expected = true},
      {.not_directly_implementable = true},
      {.not_directly_implementable = true, .non_splittable_area = 32},
      {.not_directly_implementable = true, .not_local = true, .total_area = 1},
      {.non_splittable_area = 1e30},
  };
  for (std::size_t i = 1; i < std::size(ascending); ++i)
    EXPECT_LT(ascending[i - 1].value(16), ascending[i].value(16)) << i;
  EXPECT_EQ((DecoCost{.non_mappable_area = 40, .insertion_cost = 7, .total_area = 24}.value(16)),
            5 * 0x1.0p15 + 0.7 + 3);
  EXPECT_EQ((DecoCost{.non_mappable_area = 4, .total_area = 24}.value(0)), 8 * 0x1.0p15 + 48);
  EXPECT_EQ((DecoCost{.non_splittable_area = -1, .non_mappable_area = -9}.value(16)), 0);
}

TEST(DecoCost, TheOneThatLeavesNothingOrIsOfTheLargerSignalIsCarriedOutFirst) {
  Deco decos[] = {deco_of(DecoKind::boolean, "li"), deco_of(DecoKind::boolean, "lb"),
                  deco_of(DecoKind::boolean, "lL", 1000), deco_of(DecoKind::boolean, "lL")};
  for (Deco& deco : decos) rate(deco, setting_where(false));
  const RatedDeco ascending[] = {{&decos[0], 2}, {&decos[0], 9}, {&decos[1], 5},
                                 {&decos[2], 5}, {&decos[3], 5}, {&decos[1], 6}};
  for (std::size_t i = 0; i < std::size(ascending); ++i)
    for (std::size_t j = 0; j < std::size(ascending); ++j)
      EXPECT_EQ(is_preferred(ascending[i], ascending[j]), i > j) << i << ' ' << j;
}

TEST(Deco, TellsWhatIsKnownBeforeAndAfterItIsRated) {
  Deco deco = deco_of(DecoKind::monotonic, "gL");
  deco.function = deco.inverse_function = toolkit::LogicExpr{toolkit::LogicExpr::Literal{"a"}};
  deco.literals = 1;
  const std::string head = "MONOT Deco (1 lits) for [z]=(SET: a, RESET: a)\nCharacteristics:";
  const std::string parts =
      "\ngate=and2:combinational\nx0' x2 + x0 x2' (cost=4) Gate: and2:combinational, area: 32, "
      "inputs: x0, x1\nx0' x2 + x0 x2' (cost=4) UNSUCCESSFUL MATCH\nIns: I";
  const support::CaughtMessages messages;
  base::run_state().verbosity = 3;
  rate(deco, setting_where(false));
  base::run_state().verbosity = 0;
  EXPECT_TRUE(messages.text().starts_with("\n Evaluating the cost of decomposition\n" + head +
                                          " ### NOT CALCULATED ###" + parts));
  EXPECT_TRUE(messages.text().ends_with("\n\tinsertion cost=9\n\ttotal area=104"));
  EXPECT_EQ(to_string(deco, built_in()),
            head + " USEFUL LOCAL NICE" + parts + "\nDEGRADED\noverall cost=2684518413.90");
}

}  // namespace
}  // namespace vorel::decomposition
