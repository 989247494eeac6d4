// Circuits from Verilog: what is accepted, what is refused and how, what vorel itself writes.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>

#include "base/messages.h"
#include "decomposition/gate_library.h"
#include "net/initial_values.h"
#include "oracle/netlist.h"
#include "oracle/parse_g.h"
#include "oracle/reference_unfolder.h"
#include "support/caught_messages.h"
#include "support/run_program.h"
#include "verify/circuit_builder.h"
#include "verify/oracle_circuit.h"

namespace vorel::verify {
namespace {

const std::vector<toolkit::LibraryGate>& library() {
  static const auto gates = *decomposition::read_gates("");
  return gates;
}

// Inputs a and b, output c; all low at the start.
net::Stg c_element(const std::string& internal = "") {
  auto stg = *oracle::parse_g(".inputs a b\n.outputs c\n" + internal +
                              ".graph\na+ c+\nb+ c+\nc+ a- b-\na- c-\nb- c-\nc- a+ b+\n"
                              ".marking { <c-,a+> <c-,b+> }\n.end\n");
  oracle::assign_initial_values(stg);
  return stg;
}

// "w/1" is a wire w that starts high. The values of a function stand in the order of the numbers
// whose lowest bit is the first input, the output being the last.
std::string shown(const Circuit& circuit) {
  std::string text;
  const auto wire = [&circuit](WireId id) { return circuit.wires[id.value].name; };
  for (const Gate& gate : circuit.gates) {
    text += (text.empty() ? "" : "; ") + wire(gate.output) +
            (circuit.wires[gate.output.value].initial_value ? "/1" : "") + '=';
    std::vector<int> values(gate.inputs.size() + 1);
    for (std::size_t i = 0; i < std::size_t{1} << values.size(); ++i) {
      for (std::size_t bit = 0; bit < values.size(); ++bit) values[bit] = i >> bit & 1;
      text += gate.function.evaluate(values) ? '1' : '0';
    }
    for (const WireId input : gate.inputs) text += ' ' + wire(input);
  }
  return text;
}

std::optional<Circuit> read(const std::string& text, const CircuitOptions& options = {},
                            const net::Stg& stg = c_element()) {
  return read_circuit_text(text, "m.v", stg, library(), options);
}

const std::string head = "module m(c, a, b);\noutput c;\ninput a, b;\n";
const std::string c_gate = "\\c_element0:asynch ", inv = "\\inv:combinational ";

TEST(VerilogCircuits, AreReadInAllFormsOfTheirText) {
  const std::string c = "c=00010111 a b";
  struct Row {
    std::string text, expected;
    std::string top = "";
  };
  const Row rows[] = {
      {head + c_gate + "U1(.B(b), .C(c), .A(a));\nendmodule\n", c},
      {"module m(output wire c, input a, b);" + c_gate + "#(1, (2)) (c, a, b); endmodule", c},
      {"`timescale 1ns/1ps\n(* keep = \"*)\" *) module \\m (c,a,b); // x\noutput c; wire c; input "
       "wire b; input a; /* assign c = a; */ assign #3 c = a&b | c & (a | b);\nendmodule",
       c},
      {head + "wire w = a && b || !a;\nassign c = w;\nendmodule", "w/1=10111011 a b; c=0101 w"},
      {head + "assign c = a ? b : a & ~b ^ b | c; endmodule", "c=00111011 a b"},
      {head + "assign c = a ~^ b & 1'b1 ^ 0; endmodule", "c=10011001 a b"},
      {head + "assign c = a ? b : b ? c : 1 ? a : b; endmodule", "c=00010011 a b"},
      {head + "nand g(w, a, b), (v, a), (\\u , w , v); not (c, t, u); xnor(s, a, b, c);endmodule",
       "w/1=11101110 a b; v/1=1010 a; u=11101110 w v; c=1010 u; t/1=1010 u; "
       "s/1=1001011010010110 a b c"},
      {head + "assign c = \\a & c, y = b & 1'b0; endmodule", "c=0001 a; y=00"},
      {head + c_gate + "u(c, 1'b1, b); endmodule", "c=0111 b"},
      // What a gate is the library tells.
      {"module \\inv:combinational (O, A); parameter x = 1; always @(*) O = ~A; endmodule\n" +
           head + inv + "u(w, a); and (c, w, b); endmodule",
       "w/1=1010 a; c=00010001 w b"},
      {"module n(); endmodule " + head + "assign c = a; endmodule", "c=0101 a", "m"},
  };
  for (const Row& row : rows) {
    const support::CaughtMessages messages;
    const auto circuit = read(row.text, {.top = row.top});
    EXPECT_EQ(messages.text(), "") << row.text;
    EXPECT_EQ(circuit ? shown(*circuit) : "", row.expected) << row.text;
  }
}

TEST(VerilogCircuits, HaveInvertersWithoutDelayInTheGatesBehindThem) {
  const std::string pragma = "\n// #PRAGMA: zero delay\n";
  struct Row {
    std::string body, expected;
    bool all = false;
    std::string warning = "";
  };
  const Row rows[] = {
      {pragma + inv + "i(v, a);" + inv + "j(w, a); assign c = v & w & b;",
       "w/1=1010 a; c=0000001000000010 a w b"},
      {inv + "i(v, a);" + inv + "j(w, v); assign c = ~w, d = w & ~v & b | c & v;",
       "c=1010 a; d=0011011100110111 a b c", true},
      {pragma + inv + "i(v, c); assign c = v & a | b;", "c=01110011 a b"},
      {pragma + inv + "i(c, a);", "c=10 a", false, "takes time (file m.v, line 6, column 22)"},
      {inv + "i(c, a);", "c=1010 a", true},
      {pragma + inv + "i(v, a), j(w, b); assign c = v ^ w ^ 1;", "c=10011001 a b"},
  };
  for (const Row& row : rows) {
    const support::CaughtMessages messages;
    const auto circuit = read(head + row.body + "endmodule", {.zero_delay_inverters = row.all});
    EXPECT_NE(messages.text().find(row.warning), std::string::npos) << messages.text();
    EXPECT_EQ(messages.text().empty(), row.warning.empty()) << messages.text();
    EXPECT_EQ(circuit ? shown(*circuit) : "", row.expected) << row.body;
  }
}

TEST(VerilogCircuits, StartWhereTheirStgTheUserTheFileOrTheirGatesSay) {
  struct Row {
    std::string body, list, expected;
    std::vector<InitialValue> options = {};
  };
  const Row rows[] = {
      {"assign v = w & a, w = v | a, c = w;", "", "v 0 w 0"},
      // A cycle and a latch that hold any value, but are read by gates that rest at one.
      {"assign v = w & ~a, w = v | a, c = w;", "", "v 0 w 0"},
      {inv + "i(v, b);" + c_gate + "u(w, a, v);" + inv + "(c, w);", "", "v 1 w 1"},
      // What is told is not made better.
      {"assign w = ~a, c = w & b;", "!w !a", "w 0"},
      {"assign w = ~a, c = w & b;", "!w", "w 1", {{"w", true}}},
      {"assign v = w | a, w = v & ~b, c = v;", "v", "v 1 w 1"},
      // Told of the wire behind an inverter without delay.
      {"assign v = w & ~a, w = v | a, c = y;\n// #PRAGMA: zero delay\nassign y = ~w;", "!y",
       "v 1 w 1"},
  };
  for (const Row& row : rows) {
    const support::CaughtMessages messages;
    const auto circuit =
        read(head + row.body + "\n// initial values of the signals\n// " + row.list + "\nendmodule",
             {.initial_values = row.options});
    ASSERT_TRUE(circuit) << row.body << messages.text();
    std::map<std::string, bool> values;
    for (const Wire& wire : circuit->wires)
      if (!wire.signal) values[wire.name] = wire.initial_value;
    std::string found;
    for (const auto& [name, value] : values)
      found += (found.empty() ? "" : " ") + name + (value ? " 1" : " 0");
    EXPECT_EQ(found, row.expected) << row.body;
  }
}

}  // namespace
}  // namespace vorel::verify
