// Circuits from Verilog: what is accepted, what is refused and how.
#include <gtest/gtest.h>

#include <map>

#include "decomposition/gate_library.h"
#include "oracle/coding.h"
#include "oracle/parse_g.h"
#include "support/caught_messages.h"
#include "verify/circuit_builder.h"

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
    std::vector<InitialValue> constants = {};
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
      {head + "assign c = \\a & c, y = b & 1'b0, z = 1b`1 & ~1b`0; endmodule",
       "c=0001 a; y=00; z/1=11"},
      {head + c_gate + "u(c, 1'b1, b); endmodule", "c=0111 b"},
      // What a gate is the library tells.
      {"module \\inv:combinational (O, A); parameter x = 1; always @(*) O = ~A; endmodule\n" +
           head + inv + "u(w, a); and (c, w, b); endmodule",
       "w/1=1010 a; c=00010001 w b"},
      {"module n(); endmodule " + head + "assign c = a; endmodule", "c=0101 a", "m"},
      {"module m(output c, input a, b, r, s); assign c = ~r & s & a; endmodule",
       "c=0101 a",
       "",
       {{"r", false}, {"s", true}}},
  };
  for (const Row& row : rows) {
    const support::CaughtMessages messages;
    const auto circuit = read(row.text, {.top = row.top, .constants = row.constants});
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
       "c=1010 a; d=0001101100011011 a b c", true},
      {pragma + inv + "i(v, c); assign c = v & a | b;", "c=01110011 a b"},
      {pragma + inv + "i(c, a);", "c=1010 a", false, "takes time (file m.v, line 6, column 20)"},
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
      {"assign v = v | a & b, c = v;\n`ifndef SYNTHESIS\ninitial begin : x force v = 1'b0; force c "
       "= "
       "0; wait (^{a, b} !== 1'bx); #(2); release c; release v; end\n`endif",
       "", "v 0"},
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

struct ErrorRow {
  std::string text, expected;
  CircuitOptions options = {};
  std::string internal = "";
};

// With the head, which has three lines.
const ErrorRow errors_of_circuits[] = {
    {"assign c = a | d;", "the wire 'd' has no driver (file m.v, line 4, column 8)"},
    {"\nnot(d, e); assign c = a;", "the wire 'e' has no driver (file m.v, line 5"},
    {"", "the wire 'c' has no driver (file m.v, line 1, column 10)"},
    {"assign c = a;\nassign c = b;",
     "the wire 'c' has two drivers, this one and that of line 4 (file m.v, line 5"},
    {"assign c = a;\n" + inv + "i(a, b);", "the input 'a' is driven by the gate 'i' (file m.v, li"},
    {"\ninv i(c, a);", "there is no gate 'inv' in the library (file m.v, line 5, column 5)"},
    {c_gate + "u(c, a);", "has 3 ports, but 2 connections (file m.v, line 4"},
    {c_gate + "u(c, a, );", "the port 'B' of the gate 'c_element0:asynch' is not connected (file"},
    {c_gate + "u(.C(c), .A(a));", "the port 'B' of the gate"},
    {c_gate + "u(.C(c), .A(a), .C_NEXT(b));", "has no port 'C_NEXT' (file m.v, line 4, column 36)"},
    {c_gate + "u(.C(c), .A(a), .A(b));", "the port 'A' is connected twice"},
    {c_gate + "u(.C(c), .A(a), b);", "by name and by position cannot be mixed"},
    {c_gate + "u(.C(1'b0), .A(a), .B(b));", "a constant cannot be driven"},
    {"and u(c, a), u(d, b);", "the instance 'u' stands twice (file m.v, line 4"},
    {"assign c = a;", "the internal signal 'x' of the STG is no wire", {}, ".internal x\n"},
    {"assign c = a;\n// #PRAGMA: zero delay\nassign v = a & b;",
     "delay is no inverter (file m.v, line 6"},
    {"assign c = a;\n// #PRAGMA: zero delay\nwire w;", "no gate stands below the pragma"},
    {"assign c = \n// #PRAGMA: zero delay\n~a;",
     "stands within a statement, not before it (file m.v"},
    {"assign v = ~w, w = ~v, c = v;",
     "drive each other in a cycle",
     {.zero_delay_inverters = true}},
    {"assign c = w; \n" + c_gate + "u(w, a, ~b);", "expected a wire or a constant, found '~'"},
    {"assign v = v, c = a;",
     "the initial value of the wire 'v': it must be told by --initial (file"},
    {"assign c = a;\n// initial values of the signals\n// !a b",
     "of 'b' contradicts the STG, where"},
    {"assign c = a;",
     "--initial: the initial value 1 of 'c' contradicts the STG",
     {.initial_values = {{"c", true}}}},
    {"assign c = a;", "--initial: there is no wire 'd'", {.initial_values = {{"d", true}}}},
    {"assign v = v, c = a;", "told twice", {.initial_values = {{"v", false}, {"v", true}}}},
    {"assign c = a;",
     "--mutex: no gate that takes time drives a wire 'a'",
     {.mutexes = {{"c", "a"}}}},
    {"assign c = !(~a & 1);", "makes this expression wider than one bit"},
    {"assign c = a + b;", "(file m.v, line 4, column 14): expected ';', found '+'"},
    {"assign c = a[0];", "parts of vectors are not supported"},
    {"assign c = 1'bx;", "expected a constant, 1'b0 or 1'b1, found '1'bx'"},
    {"wire [3:0] w;", "vectors are not supported"},
    {"\nalways @(a) c = a;",
     "line 5, column 1): expected a declaration, an assignment, a gate or 'endmodule', found 'al"},
    {"assign c = a; initial begin force c = 1'b0; end",
     "'c' is forced and never released (file m.v"},
    {"assign c = a; initial begin force c = 0; force c = 0; end", "the wire 'c' is forced twice"},
    {"assign c = a; initial begin release c; end", "the wire 'c' is released and is not forced"},
    {"assign c = a; initial begin force c = 1; release c; end", "of 'c' contradicts the STG"},
    {"assign c = a; initial begin force c = a;",
     "an initial value is 1'b0 or 1'b1 (file m.v, line"},
    {"assign c = a; initial begin force a = 0; release a; end", "no gate drives the wire 'a'"},
    {"assign c = a; initial c = 0;", "expected 'begin', found 'c'"},
    {"assign c = a; initial begin c = 0; end",
     "expected 'force', 'release', 'wait', a delay or 'en"},
    {"assign c = a; initial begin end initial begin : x end initial begin end",
     "two initial blocks"},
    {"`ifndef A", "expected SYNTHESIS, the only condition that is known, found 'A'"},
    {"assign c = a;", "--constant: 'd' is no input of the module", {.constants = {{"d", false}}}},
    {"assign c = a;", "--constant: 'c' is no input of the mod", {.constants = {{"c", false}}}},
    {"assign c = a;", "--constant: 'a' is a signal of the STG", {.constants = {{"a", false}}}},
    {"output reg c;", "expected the name of a wire, found 'reg'"},
    {"input d;", "'d' is no port of the module (file m.v, line 4, column 7)"},
    {"input c;", "the port 'c' has two directions"},
    {"assign c = " + std::string(100'000, '(') + "a", "no more than 500 nested expressions"},
};

const ErrorRow errors_of_texts[] = {
    {"", "expected 'module', found the end of the file"},
    {"module m(c, a, b); output c; input a, b;", "expected 'endmodule', found the end"},
    {"module m(c, a); output c; input a; assign c = a; endmodule",
     "'b' of the STG is no input port"},
    {"module m(a, b); wire c; input a, b; assign c = a; endmodule",
     "'c' of the STG is no output por"},
    {"module m(a, b, c, d); output c; input a, b, d; assign c = a; endmodule",
     "'d' is no input of"},
    {"module m(a, b, c); output c; input a; assign c = a; endmodule",
     "'b' is neither an input nor"},
    {"module m(a, a); endmodule", "the port 'a' stands twice"},
    {"module m(inout a); endmodule", "expected 'input' or 'output'"},
    {"module m(); endmodule\nmodule n(); endmodule",
     "'m' and 'n' among them: choose by --top (file m.v, line 2"},
    {"module m(); endmodule", "there is no module 'n'", {.top = "n"}},
    {"`define x\n", "the directive '`define' is not supported"},
    {"`ifndef SYNTHESIS\n", "'`ifndef' without '`endif' (file m.v, line 1, column 1)"},
    {"`endif", "'`endif' without '`ifndef'"},
    {"`ifndef SYNTHESIS `ifndef SYNTHESIS", "'`ifndef' stands within another one"},
    {"module m(); /* endmodule", "a comment does not end"},
    {"module m(); (* endmodule", "an attribute does not end"},
};

TEST(VerilogCircuits, AreRefusedWithOneErrorThatTellsWhere) {
  const auto try_row = [](const std::string& text, const ErrorRow& row) {
    const support::CaughtMessages messages;
    EXPECT_FALSE(read(text, row.options, c_element(row.internal))) << text;
    const std::string told = messages.text();
    EXPECT_NE(told.find(row.expected), std::string::npos) << text << '\n' << told;
    EXPECT_EQ(told.rfind("\nError: "), 0u) << text << '\n' << told;
  };
  for (const ErrorRow& row : errors_of_circuits) try_row(head + row.text + "\nendmodule\n", row);
  for (const ErrorRow& row : errors_of_texts) try_row(row.text, row);
}

}  // namespace
}  // namespace vorel::verify
