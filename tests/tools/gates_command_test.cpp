// The program vorel-gates: its modules in the hands of a Verilog simulator, its refusals.
#include <gtest/gtest.h>

#include "decomposition/gate_library.h"
#include "oracle/gate_values.h"
#include "support/run_program.h"
#include "toolkit/verilog_name.h"

namespace vorel::tools {
namespace {

support::ProgramRun run_gates(const std::vector<std::string>& arguments,
                              const support::RunOptions& options = {}) {
  std::vector<std::string> command{VOREL_GATES_BINARY};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return support::run_program(command, options);
}

// Names that Verilog does not take as they are, all operators, a pin that is called delay.
constexpr const char* odd_library =
    "GATE reg 1 wire=!(!(a*b[0]+delay)^(c+!c'*d)*1)';PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE \"x:y\" 1 o=!a*(b+CONST0)^c;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "GATE one 1 o=CONST1;\n"
    "GATE **wire** 1 o=a;PIN * UNKNOWN 1 1 1 1 1 1\n"
    "LATCH clocked 1 q=d;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q ANY RISING_EDGE CONTROL k 1 1 1 1 1 1\n"
    "LATCH gc 1 q=a*b+(a+b)*q;PIN * UNKNOWN 1 1 1 1 1 1 SEQ q q ASYNCH\n";

// Prints the next value of each gate's output for all values of its inputs, after 0 and after 1:
// the output is held at a value while the gate takes its inputs in.
class ModelBench {
 public:
  explicit ModelBench(const std::vector<toolkit::LibraryGate>& gates) {
    for (const toolkit::LibraryGate& gate : gates) add(gate);
  }
  std::string text() const {
    return "module test;\n" + wires_ + "initial begin\n" + steps_ + "end endmodule\n";
  }
  const std::string& expected() const { return expected_; }

 private:
  void add(const toolkit::LibraryGate& gate) {
    const std::string number = std::to_string(number_++), instance = "g" + number;
    const std::string inputs = "i" + number;
    wires_ += "reg [" + std::to_string(gate.input_count()) + ":0] " + inputs + "; wire o" + number +
              "; " + toolkit::verilog_name(gate.name) + " " + instance + "(." +
              toolkit::verilog_name(gate.output) + "(o" + number + ")";
    for (std::uint32_t pin = 0; pin < gate.input_count(); ++pin) {
      wires_ += ", ." + toolkit::verilog_name(gate.pins[pin]) + "(" + inputs + "[" +
                std::to_string(pin) + "])";
    }
    wires_ += ");\n";
    for (std::uint32_t values = 0; values < 1u << gate.input_count(); ++values) {
      std::vector<bool> pins;
      for (std::uint32_t pin = 0; pin < gate.input_count(); ++pin) {
        pins.push_back((values >> pin) % 2 == 1);
      }
      for (const bool output : {false, true}) {
        steps_ += inputs + " = " + std::to_string(values) + "; force o" + number + " = " +
                  (output ? "1" : "0") + "; #4; release o" + number + "; #0 $display(\"%b\", o" +
                  number + ");\n";
        expected_ += oracle::next_output(gate, pins, output) ? "1\n" : "0\n";
      }
    }
  }

  int number_ = 0;
  std::string wires_, steps_, expected_;
};

TEST(GatesCommand, ModelsDoWhatTheGatesDo) {
  if (support::run_program({"/bin/sh", "-c", "command -v iverilog"}).exit_code != 0) {
    GTEST_SKIP() << "Icarus Verilog is not installed";
  }
  const support::TemporaryFolder folder;
  for (const std::string& library : {std::string(), folder.write("odd.genlib", odd_library)}) {
    auto gates = decomposition::read_gates(library);
    ASSERT_TRUE(gates);
    std::erase_if(*gates, [](const auto& gate) { return !decomposition::is_usable(gate); });
    const ModelBench bench(*gates);
    const auto models = library.empty() ? run_gates({}) : run_gates({"-d", library});
    EXPECT_EQ(models.exit_code, 0);
    EXPECT_EQ(models.err, "");
    folder.write("test.v", models.out + bench.text());
    const support::ProgramRun run = support::run_program(
        {"/bin/sh", "-c", "iverilog -Wall -o test.vvp test.v && vvp -n test.vvp"},
        {.directory = folder.path()});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, bench.expected()) << models.out;
  }
}

TEST(GatesCommand, TheModelsOfTheBuiltInLibraryAreInShare) {
  const support::TemporaryFolder folder;
  const support::ProgramRun run = run_gates({folder.path("gates.v")});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(support::read_text(folder.path("gates.v")),
            support::read_text(VOREL_SHARE "/vorel_gates.v"));
}

TEST(GatesCommand, WhatCannotBeDoneIsAnErrorThatWritesNothing) {
  const support::TemporaryFolder folder;
  const std::string good = "GATE g 1 o=a;PIN * UNKNOWN 1 1 1 1 1 1\n";
  const struct {
    std::string library, output, error;
  } rows[] = {
      {"", "out.v", "cannot open \"library\" for input"},
      {"GATE", "out.v", "incorrect syntax of library"},
      {"GATE g 1 o=\"a b\";PIN * UNKNOWN 1 1 1 1 1 1\n", "out.v",
       "gate 'g': the name 'a b' cannot stand in Verilog, which takes names of printable ASCII "
       "characters without blanks"},
      {good, "library", "refusing to overwrite library, which is the library"},
      {good, "no/out.v", "cannot open \"no/out.v\" for output"},
  };
  for (const auto& row : rows) {
    if (!row.library.empty()) folder.write("library", row.library);
    const support::ProgramRun run =
        run_gates({"-d", "library", row.output}, {.directory = folder.path()});
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.err, "\nError: " + row.error + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_FALSE(std::filesystem::exists(folder.path("out.v")));
    EXPECT_EQ(row.library.empty() ? "" : support::read_text(folder.path("library")), row.library);
  }
}

}  // namespace
}  // namespace vorel::tools
