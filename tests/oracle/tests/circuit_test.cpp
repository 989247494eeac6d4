// Circuits of wires made by hand, with what a circuit can do wrong.
#include <gtest/gtest.h>

#include "oracle/circuit_states.h"
#include "oracle/parse_g.h"

namespace vorel::oracle {
namespace {

CircuitGate wire(const std::string& output, const std::string& input, bool is_inverted = false) {
  return {output, {input}, [is_inverted](const auto& inputs, bool) {
            return inputs[0] != is_inverted;
          }};
}

TEST(CircuitStates, EveryKindOfFaultIsTold) {
  const auto stg = *parse_g(
      ".inputs a\n.outputs x y\n.graph\na+ x+ y+\nx+ a-\ny+ a-\na- x- y-\nx- a+\ny- a+\n"
      ".marking { <x-,a+> <y-,a+> }\n.end\n");
  const auto graph = explore(stg);
  const auto values = find_initial_values(stg, graph);
  ASSERT_TRUE(values);
  const CircuitGate x = wire("x", "a"), y = wire("y", "a");
  const struct {
    std::vector<CircuitGate> gates;
    std::map<std::string, bool> initial;
    std::string fault;
  } rows[] = {
      {{x, y}, {{"x", false}, {"a", false}}, ""},
      {{x}, {}, "y has no driver"},
      {{x, wire("y", "b")}, {}, "b has no driver"},
      {{x, y, y}, {}, "y has too many drivers"},
      {{x, y, wire("a", "x")}, {}, "a has too many drivers"},
      {{x, y}, {{"y", true}}, "y has another initial value"},
      {{x, wire("y", "w"), wire("w", "a")}, {{"w", false}}, ""},
      {{x, wire("y", "w"), wire("w", "a")},
       {{"w", true}},
       "y is not at rest initially; y changes where the STG does not allow it; y is disabled by w"},
      {{x, wire("y", "a", true)},
       {},
       "y is not at rest initially; y changes where the STG does not allow it; y is disabled by "
       "a+; y never changes; all rests where the STG does not"},
      // It may wait for another output, which comes in any case, but for no input.
      {{x, wire("y", "x")}, {}, ""},
      {{wire("x", "y"), wire("y", "x")}, {}, "x never changes; all rests where the STG does not"},
      // The wire that nobody waits for is still on its way when a changes again.
      {{x, y, wire("w", "a")}, {}, "w is disabled by a-"},
      {{x, y, wire("w", "w", true)}, {}, "w is not at rest initially"},
  };
  for (const auto& [gates, initial, fault] : rows)
    EXPECT_EQ(find_fault(stg, graph, *values, {.gates = gates, .initial = initial}), fault);
}

}  // namespace
}  // namespace vorel::oracle
