#include "decomposition/mapped_circuit.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>

#include "bdd/cover_bdd.h"
#include "conflicts/conflicts_support.h"
#include "decomposition/direct_candidates.h"
#include "decomposition/gate_matcher.h"
#include "decomposition/gate_models.h"
#include "oracle/netlist.h"
#include "oracle/parse_g.h"
#include "support/run_program.h"
#include "synthesis/synthesis_support.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd, bdd::bdd_variable;
using conflicts_support::Subject;

constexpr std::uint32_t any_inputs = 2147483647;
constexpr std::uint64_t any_literals = ~std::uint64_t{0};

// Gates for most functions of few signals, an inverter called like an instance, no name that is
// plain.
const char* const rich_library =
    "GATE IN_BUBBLE 2 o=!a;\nGATE buf 1 o=a;\nGATE one 1 o=1;\nGATE zero 1 o=0;\n"
    "GATE module 4 w1=a*b;\nGATE \"nand[2]\" 3 o=!(a*b);\nGATE or2 4 o=a+b;\nGATE nor2 3 "
    "o=!(a+b);\n"
    "GATE and3 5 o=a*b*c;\nGATE or3 5 o=a+b+c;\nGATE mux 6 o=a*s+b*!s;\nGATE xor 6 o=a*!b+!a*b;\n"
    "GATE ao21 6 o=a*b+c;\nGATE oa21 6 o=(a+b)*c;\nGATE ao22 7 o=a*b+c*d;\n"
    "GATE maj 8 o=a*b+a*c+b*c;\nGATE ao31 8 o=a*b*c+d;\nGATE oa31 8 o=(a+b+c)*d;\n"
    "GATE ao211 8 o=a*b+c+d;\nGATE oa211 8 o=(a+b)*c*d;\n"
    "LATCH c 6 q=a*b+(a+b)*n; SEQ q n ASYNCH\nLATCH sr 5 q=s+!r*n; SEQ q n ASYNCH\n"
    "LATCH rs 5 q=!r*(s+n); SEQ q n ASYNCH\nLATCH c3 8 q=a*b*c+(a+b+c)*n; SEQ q n ASYNCH\n"
    "LATCH gc1 7 q=a*b*c+(a+b)*n; SEQ q n ASYNCH\nLATCH gc2 7 q=a*b+(a+b+c)*n; SEQ q n ASYNCH\n"
    "LATCH gc3 7 q=a*b+a*n; SEQ q n ASYNCH\nLATCH gc4 7 q=(a+b)*c+c*n; SEQ q n ASYNCH\n";

// Where an AND is an inverted gate.
const char* const nand_library =
    "GATE inv 1 o=!a;\nGATE buf 1 o=a;\nGATE one 1 o=1;\nGATE zero 1 o=0;\n"
    "GATE nand2 2 o=!(a*b);\nGATE nand3 3 o=!(a*b*c);\nGATE nor2 2 o=!(a+b);\n"
    "LATCH c 5 q=a*b+(a+b)*n; SEQ q n ASYNCH\n";

struct Library {
  explicit Library(const std::string& file)
      : gates{*read_gates(file)}, library{*GateLibrary::read(file)} {
    for (const toolkit::LibraryGate& gate : gates) by_name.emplace(gate.name, gate);
  }
  std::vector<toolkit::LibraryGate> gates;
  GateLibrary library;
  std::map<std::string, toolkit::LibraryGate> by_name;
};

// Of signals that are one gate, or a latch with a gate for SET and one for RESET.
class Mapper {
 public:
  Mapper(const net::StgPrefix& prefix, const Library& library)
      : prefix_{prefix},
        library_{library.library},
        matcher_{library_, library_.gate_list(any_inputs, true)} {
    for (const auto& signal : prefix.signals) names_.push_back(signal->name);
  }

  // Null if there is a signal that is neither.
  std::unique_ptr<MappedCircuit> run(bool prefers_latches) {
    const auto options = configuration::SearchOptions::of(support::default_params({}));
    synthesis::EquationSearch whole(prefix_, options, synthesis::SynthesisStyle::four_sets);
    synthesis::EquationSearch parts(prefix_, options, synthesis::SynthesisStyle::standard_c);
    const auto functions = solutions_of(whole), pairs = solutions_of(parts);
    auto circuit = std::make_unique<MappedCircuit>(prefix_, library_);
    for (std::size_t i = 0; i < functions.size(); ++i) {
      std::vector<Deco> matched = matched_candidates(*functions[i], matcher_, names_);
      Deco deco = matched.empty() ? Deco() : std::move(matched.front());
      deco.judge();
      const auto signal = static_cast<std::uint32_t>(prefix_.inputs_end + i);
      if (prefers_latches || !deco.directly_implementable) {
        for (Deco& latch :
             monotonic_candidates(names_[signal], signal, *pairs[2 * i], *pairs[2 * i + 1],
                                  any_literals, matcher_, names_)) {
          latch.judge();
          if (latch.directly_implementable) deco = std::move(latch);
        }
      }
      if (!deco.directly_implementable) return nullptr;
      circuit->add(deco, functions[i]->triggers(), names_);
    }
    return functions.empty() ? nullptr : std::move(circuit);
  }

 private:
  const net::StgPrefix& prefix_;
  const GateLibrary& library_;
  GateMatcher matcher_;
  std::vector<std::string> names_;
};

class MappedCircuits : public testing::Test {
 protected:
  MappedCircuits()
      : built_in_{""},
        rich_{folder_.write("rich", with_pins(rich_library))},
        nand_{folder_.write("nand", with_pins(nand_library))} {}

  // Searches end at once in a run that has failed, and its severity never falls.
  void SetUp() override {
    ASSERT_FALSE(base::run_failed()) << "after tests of errors; ctest runs each by itself";
  }

  static std::string with_pins(std::string text) {
    const std::string pins = " PIN * UNKNOWN 1 1 1 1 1 1";
    for (std::size_t at = text.find(';'); at != std::string::npos; at = text.find(';', at + 1))
      if (text[at - 1] != '0' && text[at - 1] != '1') text.insert(at + 1, pins);
    return text;
  }

  void try_all(const Subject& subject, const std::string& title) {
    if (!oracle::disabled_signals(subject.prefix, subject.graph).empty()) return;
    if (!subject.csc_conflicts().empty()) return;
    for (const Library* const library : {&built_in_, &rich_, &nand_}) {
      for (const bool prefers_latches : {false, true}) {
        const auto circuit = Mapper(subject.prefix, *library).run(prefers_latches);
        if (!circuit) continue;
        ++circuits_;
        for (std::size_t i = 0; i < circuit->found().solutions.size(); ++i)
          driven_latches_ += circuit->solution(i).subfunction_gates().empty() ? 0 : 1;
        std::ostringstream text;
        ASSERT_TRUE(circuit->write_verilog(text));
        std::string module = text.str();
        SCOPED_TRACE(title + '\n' + module);
        const oracle::Netlist netlist = oracle::read_netlist(module, library->by_name);
        EXPECT_EQ(netlist.fault, "");
        EXPECT_EQ(netlist.area, circuit->area());
        EXPECT_EQ(
            oracle::find_fault(subject.prefix, subject.graph, subject.initial, netlist.circuit),
            "");
        module.insert(module.find('('), std::to_string(circuits_));
        modules_[library] += module;
        results::save_results(circuit->found(), results::VerdictMessages{"circuit", ""},
                              folder_.path(std::to_string(circuits_) + ".xml"));
      }
    }
  }

  void expect_others_to_read_them() {
    for (const auto& [library, modules] : modules_) {
      std::ostringstream models;
      ASSERT_TRUE(write_gate_models(models, library->gates));
      folder_.write("test.v", models.str() + modules);
      expect_silence("iverilog -o test.vvp test.v");
    }
    expect_silence("xmllint --noout --schema '" + support::example("../docs/results.xsd") +
                   "' *.xml 2> messages || cat messages");
  }

  void expect_silence(const std::string& command) {
    const support::ProgramRun run =
        support::run_program({"/bin/sh", "-c", command}, {.directory = folder_.path()});
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.out + run.err, "");
  }

  const support::TemporaryFolder folder_;
  const Library built_in_, rich_, nand_;
  std::map<const Library*, std::string> modules_;
  std::size_t circuits_ = 0;
  std::size_t driven_latches_ = 0;  // that have gates for SET or RESET
};

TEST_F(MappedCircuits, OfTheExamplesDoWhatTheirStgsAllow) {
  for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
    if (entry.path().extension() != ".g") continue;
    const auto stg = oracle::parse_g(*oracle::read_file(entry.path()));
    const auto subject = Subject::make(*stg);
    if (subject && subject->prefix.internals_end == subject->prefix.signals.size())
      try_all(*subject, entry.path().stem());
  }
  EXPECT_GE(circuits_, 12u);
  EXPECT_GE(driven_latches_, 6u);
  expect_others_to_read_them();
}

TEST_F(MappedCircuits, OfRandomStgsDoWhatTheseAllow) {
  const support::CaughtMessages warnings;
  for (const bool toggles : {false, true}) {
    conflicts_support::on_subjects(40, {.toggles = toggles, .max_states = 60},
                                   [this](const Subject& subject, std::uint64_t seed) {
                                     try_all(subject, "seed " + std::to_string(seed));
                                   });
  }
  EXPECT_GT(circuits_, 80u);
  EXPECT_GT(driven_latches_, 10u);
  expect_others_to_read_them();
}

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
TEST_F(MappedCircuits, HaveOneFormAsTextDocumentAndModule) {
  auto stg = oracle::parse_g(
      ".inputs a b\n.outputs U0 z\n.internal w1\n.graph\na+ b+\nb+ z+\nz+ U0+\nU0+ w1+\n"
      "w1+ a-\na- b-\nb- z-\nz- U0-\nU0- w1-\nw1- a+\n"
      ".marking { <w1-,a+> }\n.end\n");
  ASSERT_TRUE(stg);
  stg->signals[0]->name = "req[0]";
  std::vector<std::string> names;
  for (const auto& signal : stg->signals) names.push_back(signal->name);
  MappedCircuit circuit(*stg, built_in_.library);
  GateMatcher matcher(built_in_.library, built_in_.library.gate_list(4, true));
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
