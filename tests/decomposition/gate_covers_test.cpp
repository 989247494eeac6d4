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
