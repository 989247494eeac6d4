#include "decomposition/mapped_circuit.h"

#include <gtest/gtest.h>

#include <sstream>

#include "bdd/cover_bdd.h"
#include "decomposition/gate_matcher.h"
#include "oracle/parse_g.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd, bdd::bdd_variable;

const char* const expected_module = R"(module VOREL_mapped_implementation(z, U0, \req[0] , b);
    output z, U0;
    input \req[0] , b;

    // mapped implementation; total area=168.00

    // [z] = req[0] + b'
    // #PRAGMA: zero delay
    \inv:combinational  IN_BUBBLE3(.O(w2), .A(\req[0] ));
    \and2:combinational  U1(.O(w4), .A(w2), .B(b));
    \inv:combinational  OUT_BUBBLE5(.O(z), .A(w4));

    // [U0] = b
    \delay:asynch  U6(.Q(U0), .D(b));

    // [w1] = monotonic_covers(SET: b', RESET: req[0] b')
    // #PRAGMA: zero delay
    \inv:combinational  IN_BUBBLE11(.O(w10), .A(b));
    \and2:combinational  U9(.O(w8), .A(\req[0] ), .B(w10));
    // #PRAGMA: zero delay
    \inv:combinational  IN_BUBBLE13(.O(w12), .A(b));
    \c_element1:asynch  U7(.C(w1), .A(w8), .B(w12));

    // initial values of the signals
    // !req[0] !b !z !U0 !w1
endmodule
)";
const char* const expected_text = R"(
Signal z (cost 2)
Triggers (approximation): b
Context: req[0] b
Equation: req[0] + b'
Gate and2:combinational (inverted), sub-functions:
 pin A: Equation: req[0]'; Gate: inv:combinational; #PRAGMA: zero delay; pins/inputs: req[0]
 pin B: Equation: b; Gate: delay:asynch; pins/inputs: b
Signal U0 (cost 1)
Triggers (approximation):
Context: b
Equation: b; Gate: delay:asynch; pins/inputs: b
Signal w1 (cost 3)
Triggers (approximation): b z
Context: req[0] b
Equation: monotonic_covers(SET: b', RESET: req[0] b')
Gate c_element1:asynch, sub-functions:
 pin A: Equation: req[0] b'; Gate: and2:combinational; pins/inputs: req[0] b'
 pin B: Equation: b'; Gate: inv:combinational; #PRAGMA: zero delay; pins/inputs: b)";
const char* const expected_document =
    R"xml(<solution cost="3" signal="w1" message="Logic decomposition for signal w1" )xml"
    R"xml(equation="monotonic_covers(SET: b', RESET: req[0] b')" triggers="b, z" )xml"
    R"xml(context="req[0], b">
	<gate inverted="false" zero_delay="false">
		c_element1:asynch
		<pin name="A" signal="w8" inverted="false"/>
		<pin name="B" signal="b" inverted="true"/>
	</gate>
	<gate inverted="false" zero_delay="false">
		and2:combinational
		<pin name="A" signal="req[0]" inverted="false"/>
		<pin name="B" signal="b" inverted="true"/>
	</gate>
</solution>

)xml";

// Two literals; a wire; a latch whose RESET is a gate and whose SET is a literal.
TEST(MappedCircuit, HasOneFormAsTextDocumentAndModule) {
  auto stg = oracle::parse_g(
      ".inputs a b\n.outputs U0 z\n.internal w1\n.graph\na+ b+\nb+ z+\nz+ U0+\nU0+ w1+\n"
      "w1+ a-\na- b-\nb- z-\nz- U0-\nU0- w1-\nw1- a+\n"
      ".marking { <w1-,a+> }\n.end\n");
  ASSERT_TRUE(stg);
  stg->signals[0]->name = "req[0]";
  std::vector<std::string> names;
  for (const auto& signal : stg->signals) names.push_back(signal->name);
  const GateLibrary library = *GateLibrary::read("");
  MappedCircuit circuit(*stg, library);
  GateMatcher matcher(library, library.gate_list(4, true));
  const auto expression = [&](const Bdd& f) { return bdd::expression_of(f, names); };
  const auto add = [&](Deco deco, std::size_t signal, const std::vector<std::string>& triggers) {
    deco.signal = names[signal];
    deco.judge();
    circuit.add(deco, triggers, names);
  };
  const Bdd a = bdd_variable(0), b = bdd_variable(1);
  GateMatch turned = {"and2:combinational", {~a, b}, true};
  Deco deco = matched_deco(turned, matcher.covers_of_match(turned));
  deco.function = expression(a | ~b);
  add(deco, 2, {"b"});
  const GateMatch wire = {"delay:asynch", {b}, false};
  deco = matched_deco(wire, matcher.covers_of_match(wire));
  deco.function = expression(b);
  add(deco, 3, {});
  const GateMatch latch = matcher.match(monotonic_shape(bdd_variable(0), bdd_variable(1)));
  deco = monotonic_deco(~b, a & ~b, latch, matcher.covers_of_match(latch));
  deco.subfunctions[1].match = {"and2:combinational", {a, ~b}, false};
  deco.function = expression(~b);
  deco.inverse_function = expression(a & ~b);
  add(deco, 4, {"b", "z"});

  std::ostringstream module, text, document;
  EXPECT_TRUE(circuit.write_verilog(module));
  EXPECT_EQ(module.str(), expected_module);
  for (const std::size_t i : {0u, 1u, 2u}) circuit.solution(i).print(text << '\n');
  EXPECT_EQ(text.str(), expected_text);
  results::XmlDocument xml;
  xml.append_node(circuit.solution(2).to_xml(xml));
  results::print_xml(document, xml);
  EXPECT_EQ(document.str(), expected_document);
}

}  // namespace
}  // namespace vorel::decomposition
