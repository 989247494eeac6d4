// Circuits made by hand, with and without what a circuit can do wrong.
#include <gtest/gtest.h>

#include "oracle/circuit_states.h"
#include "oracle/parse_g.h"

namespace vorel::oracle {
namespace {

using toolkit::GateOperator;

toolkit::LibraryGate gate(const char* name) {
  const toolkit::GateStep a{GateOperator::pin, 0}, b{GateOperator::pin, 1},
      own{GateOperator::pin, 2}, both{GateOperator::conjunction}, either{GateOperator::disjunction},
      invert{GateOperator::negation};
  const std::map<std::string, std::vector<toolkit::GateStep>> functions = {
      {"wire", {a}},
      {"inv", {a, invert}},
      {"and", {a, b, both}},
      {"or", {a, b, either}},
      {"nand", {a, b, both, invert}},
      {"c", {a, b, both, a, b, either, own, both, either}},
  };
  toolkit::LibraryGate result;
  result.name = name;
  result.function.steps = functions.at(name);
  result.has_feedback = result.name == "c";
  result.pins = {"a", "b", "own"};
  result.pins.resize(result.has_feedback ? 3 : result.function.steps.size() < 3 ? 1 : 2);
  return result;
}

const std::string c_element = R"(.inputs a b
.outputs c
.graph
a+ c+
b+ c+
c+ a- b-
a- c-
b- c-
c- a+ b+
.marking { <c-,a+> <c-,b+> }
.end
)";

// The environment also waits for the AND that keeps c.
const std::string c_element_with_hold = R"(.inputs a b
.outputs c hold
.graph
a+ c+
b+ c+
c+ hold+
hold+ a- b-
a- hold-
b- hold-
hold- c-
c- a+ b+
.marking { <c-,a+> <c-,b+> }
.end
)";

// y is a and not b; b has a pulse while a is low.
const std::string pulse = R"(.inputs a b
.outputs y
.graph
a+ y+
y+ b+
b+ y-
y- a-
a- b-
b- b+/2
b+/2 b-/2
b-/2 a+
.marking { <b-/2,a+> }
.end
)";

const std::string follower = R"(.inputs a
.outputs x y
.graph
a+ x+ y+
x+ a-
y+ a-
a- x- y-
x- a+
y- a+
.marking { <x-,a+> <y-,a+> }
.end
)";

struct Instance {
  const char* gate;
  std::string output;
  std::vector<CircuitPin> pins;
  bool is_inverted = false;
};

std::string fault_of(const std::string& text, const std::vector<Instance>& instances,
                     const std::map<std::string, bool>& initial = {}) {
  const auto stg = parse_g(text);
  EXPECT_TRUE(stg);
  const auto graph = explore(*stg);
  const auto values = find_initial_values(*stg, graph);
  EXPECT_TRUE(values);
  Circuit circuit{.gates = {}, .initial = initial};
  for (const Instance& instance : instances)
    add_gate(circuit, gate(instance.gate), instance.output, instance.pins, instance.is_inverted);
  return find_fault(*stg, graph, *values, circuit);
}

TEST(CircuitStates, ACElementOfAndsAndOrsNeedsAnEnvironmentThatWaitsForAllOfIt) {
  const std::vector<Instance> instances = {
      {"and", "both", {{"a"}, {"b"}}},
      {"or", "either", {{"a"}, {"b"}}},
      {"and", "hold", {{"either"}, {"c"}}},
      {"or", "c", {{"both"}, {"hold"}}},
  };
  EXPECT_EQ(fault_of(c_element, {{"c", "c", {{"a"}, {"b"}}}}), "");
  EXPECT_EQ(fault_of(c_element_with_hold, instances), "");
  // With `both` c has risen, and nothing has waited for `either`.
  EXPECT_EQ(fault_of(c_element, instances),
            "c changes where the STG does not allow it; either is disabled by b-");
}

TEST(CircuitStates, InvertersTakeTimeUnlessTheyAreBubblesOnInputs) {
  EXPECT_EQ(fault_of(pulse, {{"and", "y", {{"a"}, {"b", true}}}}), "");
  EXPECT_EQ(fault_of(pulse, {{"and", "y", {{"a"}, {"no_b"}}}, {"inv", "no_b", {{"b"}}}}),
            "no_b is disabled by b+/2");
  // The same pulse is fast enough to be missed by a gate behind the inverter.
  EXPECT_EQ(fault_of(pulse, {{"nand", "y", {{"a"}, {"b", true}}, true}}), "");
  EXPECT_EQ(fault_of(c_element, {{"c", "c", {{"a", true}, {"b", true}}, true}}), "");
}

TEST(CircuitStates, EveryKindOfFaultIsTold) {
  const Instance x{"wire", "x", {{"a"}}}, y{"wire", "y", {{"a"}}};
  const struct {
    std::vector<Instance> instances;
    std::map<std::string, bool> initial;
    std::string fault;
  } rows[] = {
      {{x, y}, {{"x", false}, {"a", false}}, ""},
      {{x}, {}, "y has no driver"},
      {{x, {"wire", "y", {{"b"}}}}, {}, "b has no driver"},
      {{x, y, y}, {}, "y has too many drivers"},
      {{x, y, {"wire", "a", {{"x"}}}}, {}, "a has too many drivers"},
      {{x, y}, {{"y", true}}, "y has another initial value"},
      {{x, {"wire", "y", {{"w"}}}, {"wire", "w", {{"a"}}}}, {{"w", false}}, ""},
      {{x, {"wire", "y", {{"w"}}}, {"wire", "w", {{"a"}}}},
       {{"w", true}},
       "y is not at rest initially; y changes where the STG does not allow it; y is disabled by w"},
      {{x, {"wire", "y", {{"a", true}}}},
       {},
       "y is not at rest initially; y changes where the STG does not allow it; y is disabled by "
       "a+; y never changes; all rests where the STG does not"},
      {{x, {"wire", "y", {{""}}}}, {}, "y never changes; all rests where the STG does not"},
      // It may wait for another output, which comes in any case, but for no input.
      {{x, {"wire", "y", {{"x"}}}}, {}, ""},
      {{{"wire", "x", {{"y"}}}, {"wire", "y", {{"x"}}}},
       {},
       "x never changes; all rests where the STG does not"},
      // The wire that nobody waits for is still on its way when a changes again.
      {{x, y, {"wire", "w", {{"a"}}}}, {}, "w is disabled by a-"},
      {{x, y, {"inv", "w", {{"w"}}}}, {}, "w is not at rest initially"},
  };
  for (const auto& row : rows) EXPECT_EQ(fault_of(follower, row.instances, row.initial), row.fault);
}

// Two clients of one resource, between which the STG chooses.
const std::string arbiter = R"(.inputs r1 r2
.outputs g1 g2
.graph
r1+ g1+
r2+ g2+
free g1+ g2+
g1+ r1-
g2+ r2-
r1- g1-
r2- g2-
g1- r1+ free
g2- r2+ free
.marking { <g1-,r1+> <g2-,r2+> free }
.end
)";

TEST(CircuitStates, OutputsMayDisableEachOtherWhereThatIsAChoice) {
  const Instance g1{"and", "g1", {{"r1"}, {"g2", true}}}, g2{"and", "g2", {{"r2"}, {"g1", true}}};
  EXPECT_EQ(fault_of(arbiter, {g1, g2}), "");
  // The choice is made by a wire that the STG does not know.
  EXPECT_EQ(fault_of(arbiter, {{"wire", "g1", {{"w"}}}, {"and", "w", {{"r1"}, {"g2", true}}}, g2}),
            "g1 changes where the STG does not allow it; w is disabled by g2");
}

}  // namespace
}  // namespace vorel::oracle
