#include "report/gate_symbol.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "oracle/table_relation.h"

namespace vorel::report {
namespace {

// The value that the shape promises for those of the wires and, of a C-element, of the output.
bool promised(const GateSymbol& symbol, const flow::Instance& instance, std::uint32_t wires,
              bool output) {
  std::size_t ones = 0;
  for (std::size_t i = 0; i < instance.inputs.size(); ++i) {
    const bool value = ((wires >> i) & 1u) != 0;
    ones += value != (instance.inputs[i].is_inverted != symbol.has_bubble[i]) ? 1 : 0;
  }
  const std::size_t all = instance.inputs.size();
  bool value = ones == all;
  if (symbol.shape == GateShape::disjunction) value = ones > 0;
  if (symbol.shape == GateShape::c_element && ones > 0 && ones < all) return output;
  return value != symbol.has_output_bubble;
}

// All functions of two inputs and the output, behind all inversions of the inputs. A shape that
// tells something else than what the gate does is worse than none.
TEST(GateSymbol, ShapesTellTheWholeFunction) {
  constexpr std::uint32_t variables = 3;
  std::vector<int> count(5);
  for (std::uint32_t truth = 0; truth < 256; ++truth)
    for (std::uint32_t inverted = 0; inverted < 4; ++inverted) {
      verify::Circuit circuit;
      circuit.wires.resize(variables);
      circuit.wires[0].name = "a";
      circuit.wires[1].name = "b";
      circuit.wires[2].name = "z";
      const bdd::Bdd function = oracle::bdd_of_function(
          truth, {bdd::bdd_variable(0), bdd::bdd_variable(1), bdd::bdd_variable(2)});
      circuit.gates.push_back(
          {"U1", 1, verify::WireId{2}, {verify::WireId{0}, verify::WireId{1}}, function});
      flow::Instance instance{"U1", "gate", "z", false, {}, "", 0};
      instance.inputs = {{"A", "a", (inverted & 1u) != 0}, {"B", "b", (inverted & 2u) != 0}};
      const GateSymbol symbol = symbol_of(instance, circuit);
      ++count[static_cast<std::size_t>(symbol.shape)];
      if (symbol.shape == GateShape::box) continue;
      ASSERT_EQ(symbol.has_bubble.size(), 2u);
      for (std::uint32_t i = 0; i < 1u << variables; ++i)
        EXPECT_EQ(promised(symbol, instance, i & 3u, (i & 4u) != 0), ((truth >> i) & 1u) != 0)
            << truth << ", inverted " << inverted;
    }
  // Four products and four sums, but one of each with all inputs inverted is drawn as the other;
  // four C-elements.
  EXPECT_EQ(count, (std::vector<int>{4 * (256 - 12), 16, 16, 0, 16}));
}

}  // namespace
}  // namespace vorel::report
