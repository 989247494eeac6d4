// The program vorel-gates: its modules in the hands of a Verilog simulator, its refusals.
#include <gtest/gtest.h>

#include "decomposition/gate_library.h"
#include "oracle/gate_values.h"
#include "support/run_program.h"
#include "toolkit/verilog_name.h"

namespace vorel::tools {
namespace {

// Names that Verilog does not take as they are, all operators, a pin that is called delay.
constexpr const char* odd_library =
    "GATE reg 1 wire=!(!(a*b[0]+delay)^(c+!c'*d)*1)';PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE \"x:y\" 1 o=!a*(b+CONST0)^c;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE one 1 o=CONST1;\n"
    "GATE **wire** 1 o=a;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "LATCH clocked 1 q=d;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q ANY RISING_EDGE CONTROL k 1 1 1 1 1 1\n"
    "LATCH gc 1 q=a*b+(a+b)*q;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q q ASYNCH\n";

// Prints the next value of a gate's output for all values of its inputs, after 0 and after 1: the
// output is held at a value while the gate takes its inputs in.
struct ModelBench {
  void add(const toolkit::LibraryGate& gate) {
    const std::string module = "bench" + std::to_string(number++);
    text += "module " + module + "; reg [9:0] in; wire out; " + toolkit::verilog_name(gate.name) +
            " gate(." + toolkit::verilog_name(gate.output) + "(out)";
    for (std::uint32_t pin = 0; pin < gate.input_count(); ++pin) {
      text += ", ." + toolkit::verilog_name(gate.pins[pin]) + "(in[" + std::to_string(pin) + "])";
    }
    text += ");\ninitial begin #" + std::to_string(1000 * number) + ";\n";
    for (std::uint32_t values = 0; values < 1u << gate.input_count(); ++values) {
      std::vector<oracle::Word> pins;
      for (std::uint32_t pin = 0; pin < gate.input_count(); ++pin) pins.push_back(values >> pin);
      for (const std::uint32_t output : {0u, 1u}) {
        text += "in = " + std::to_string(values) + "; force out = " + std::to_string(output) +
                "; #4 release out; #0 $display(\"%b\", out);\n";
        expected += oracle::next_output(gate, pins, output) % 2 == 1 ? "1\n" : "0\n";
      }
    }
    text += "end endmodule\n";
  }

  int number = 0;
  std::string text, expected;
};

TEST(GatesCommand, ModelsDoWhatTheGatesDo) {
  const support::TemporaryFolder folder;
  if (folder.shell("command -v iverilog").exit_code != 0) GTEST_SKIP() << "no Icarus Verilog";
  for (const std::string& library : {std::string(), folder.write("odd.genlib", odd_library)}) {
    const auto gates = decomposition::read_gates(library);
    ASSERT_TRUE(gates);
    ModelBench bench;
    for (const toolkit::LibraryGate& gate : *gates) {
      if (decomposition::is_usable(gate)) bench.add(gate);
    }
    folder.write("bench.v", bench.text);
    const auto run = folder.shell(VOREL_GATES_BINARY + (library.empty() ? "" : " -d " + library) +
                                  " gates.v && iverilog -Wall -o t gates.v bench.v && vvp -n t");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, bench.expected);
    if (library.empty()) {
      EXPECT_EQ(support::read_text(folder.path("gates.v")),
                support::read_text(VOREL_SHARE "/vorel_gates.v"));
    }
  }
}

TEST(GatesCommand, NetlistsAreTriedNextToTheirStg) {
  const support::TemporaryFolder folder;
  if (folder.shell("command -v iverilog").exit_code != 0) GTEST_SKIP() << "no Icarus Verilog";
  const std::string prefix = support::example("vme_read_csc.unf.pnml");
  folder.shell(VOREL_BINARY " -T " + prefix + " T.v; " VOREL_BINARY " -S " + prefix + " S.v");
  const std::string netlist = support::read_text(folder.path("T.v"));
  const std::string gate = "\\c_element1:asynch  U3(";
  const auto with = [&](const std::string& name, const std::string& other) {
    std::string changed = netlist;
    folder.write(name, changed.replace(changed.find(gate), gate.size(), other));
    return name;
  };
  const auto error = [](const std::string& text) { return "\nError: " + text + "\n"; };
  const struct {
    std::string netlist, out, err;
  } rows[] = {{"T.v", "VOREL_testbench: 300 edges, all as the STG has them\n", ""},
              {"S.v", "VOREL_testbench: 300 edges, all as the STG has them\n", ""},
              {with("a.v", "\\c_element2:asynch  U3("), " csc was excited and is disabled by ", ""},
              {with("b.v", "\\c_element1:asynch  ("), "",
               error("a gate without a name, which no testbench can refer to (file b.v, line 17, "
                     "column 25)")}};
  for (const auto& row : rows) {
    const auto run = folder.shell(
        VOREL_GATES_BINARY " --testbench " + support::example("vme_read_csc.g") + ' ' +
        row.netlist + " test.v && iverilog -o t test.v " + row.netlist + " && vvp -n t +edges=300");
    EXPECT_NE(run.out.find(row.out), std::string::npos) << run.out;
    EXPECT_EQ(run.err, row.err);
  }
}

TEST(GatesCommand, WhatCannotBeDoneIsAnErrorThatWritesNothing) {
  const support::TemporaryFolder folder;
  const std::string good = "GATE g 1 o=a;PIN * UNKNOWN 1 1 1 1 1 1\n";
  const struct {
    std::string library, output, error;
  } rows[] = {
      {"GATE g 1 o=\"a b\";PIN * UNKNOWN 1 1 1 1 1 1\n", "out.v",
       "gate 'g': the name 'a b' cannot stand in Verilog, which takes names of printable ASCII "
       "characters without blanks"},
      {good, "library", "refusing to overwrite library, which is the library"},
  };
  for (const auto& row : rows) {
    folder.write("library", row.library);
    const auto run = support::run_program({VOREL_GATES_BINARY, "-d", "library", row.output},
                                          {.directory = folder.path()});
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.err, "\nError: " + row.error + "\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path("out.v")));
    EXPECT_EQ(support::read_text(folder.path("library")), row.library);
  }
}

}  // namespace
}  // namespace vorel::tools
