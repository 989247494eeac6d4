#include "decomposition/gate_covers.h"

#include <gtest/gtest.h>

#include "decomposition/gate_library.h"
#include "oracle/gate_values.h"
#include "toolkit/genlib_reader.h"

namespace vorel::decomposition {
namespace {

// An excited output is one that the gate's function is about to change.
void expect_covers_of_its_function(const toolkit::LibraryGate& gate) {
  const bdd::BDDCover covers = covers_of(gate);
  const std::uint32_t inputs = gate.input_count();
  for (std::uint32_t values = 0; values < 1u << inputs; ++values) {
    std::vector<int> point(64, 0);
    for (std::uint32_t pin = 0; pin < inputs; ++pin) point[pin] = (values >> pin) % 2;
    const std::vector<oracle::Word> pins(point.begin(), point.begin() + inputs);
    const auto next_after = [&](bool output) {
      return oracle::next_output(gate, pins, output) % 2 == 1;
    };
    EXPECT_EQ(covers.er_plus.evaluate(point), next_after(false)) << gate.name << ' ' << values;
    EXPECT_EQ(covers.qr_plus.evaluate(point), next_after(true)) << gate.name << ' ' << values;
    EXPECT_EQ(covers.er_minus.evaluate(point), !next_after(true)) << gate.name << ' ' << values;
    EXPECT_EQ(covers.qr_minus.evaluate(point), !next_after(false)) << gate.name << ' ' << values;
  }
  for (const std::uint32_t variable : covers.support()) EXPECT_LT(variable, inputs) << gate.name;
  EXPECT_TRUE(gate.has_feedback || covers == bdd::BDDCover(covers.er_plus)) << gate.name;
}

TEST(GateCovers, EveryBuiltInGateIsExcitedWhereItsFunctionChangesTheOutput) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  const auto names = library->gate_list(2147483647, true);
  EXPECT_EQ(names.size(), 34u);
  for (const std::string& name : names) expect_covers_of_its_function(library->gate(name));
}

TEST(GateCovers, KnownGatesHaveTheirTextbookCovers) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  const bdd::Bdd a = bdd::bdd_variable(0), b = bdd::bdd_variable(1), c = bdd::bdd_variable(2),
                 d = bdd::bdd_variable(3);
  const struct {
    const char* name;
    bdd::BDDCover covers;
  } rows[] = {
      {"const0:combinational", bdd::BDDCover(bdd::Bdd(false))},
      {"const1:combinational", bdd::BDDCover(bdd::Bdd(true))},
      {"inv:combinational", bdd::BDDCover(~a)},
      {"oai12:combinational", bdd::BDDCover(~(a & (b | c)))},
      {"aoi22:combinational", bdd::BDDCover(~((a & b) | (c & d)))},
      {"delay:asynch", bdd::BDDCover(a)},
      {"delay_inv:asynch", bdd::BDDCover(~a)},
      {"c_element0:asynch", {a & b, a | b, ~a & ~b, ~a | ~b}},
      {"sr_nor:asynch", {a, a | ~b, ~a & b, ~a}},
      {"rs_nor:asynch", {a & ~b, ~b, b, ~a | b}},
      {"sr_nand:asynch", {~a, ~a | b, a & ~b, a}},
      {"rs_nand:asynch", {~b, a | ~b, ~a & b, b}},
      {"gated_latch0:asynch", {a & b, a | ~b, ~a & b, ~a | ~b}},
      {"gated_latch1:asynch", {a & ~b, a | b, ~a & ~b, ~a | b}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(covers_of(library->gate(row.name)), row.covers)
        << row.name << ' ' << bdd::to_string(covers_of(library->gate(row.name)));
  }
}

TEST(GateCovers, WideGatesTakeLittleRoom) {
  const struct {
    const char* sign;
    const char* start;
  } rows[] = {{"*", "CONST1"}, {"^", "CONST0"}};
  for (const auto& row : rows) {
    std::string text = std::string("GATE g 1 o=!(") + row.start;
    bdd::Bdd expected(row.sign[0] == '*');
    for (std::uint32_t i = 0; i < 60; i += 2) {
      text += row.sign + ("(a" + std::to_string(i) + "+a" + std::to_string(i + 1) + ")");
      const bdd::Bdd either = bdd::bdd_variable(i) | bdd::bdd_variable(i + 1);
      expected = row.sign[0] == '*' ? expected & either : expected ^ either;
    }
    const auto gates = toolkit::read_genlib(text + ");PIN * UNKNOWN 1 1 1 1 1 1", "wide");
    ASSERT_TRUE(gates);
    EXPECT_EQ(covers_of(gates->front()), bdd::BDDCover(~expected));
  }
}

}  // namespace
}  // namespace vorel::decomposition
