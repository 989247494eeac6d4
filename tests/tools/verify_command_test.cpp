// The program vorel-verify at the command line: right and wrong circuits by hand, the forms of its
// answers, limits, and what it refuses.
#include <sys/stat.h>

#include <filesystem>
#include <regex>
#include <sstream>
#include <string>

#include "support/value_changes.h"
#include "tools/command_testing.h"

namespace vorel::tools {
namespace {

const std::string celement = support::example("celement.g");

// c = a b + (a + b) c, of simple gates.
const std::string simple_gates =
    "module simple(c, a, b);\n  output c;\n  input a, b;\n  and ab(x, a, b);\n"
    "  and ac(y, a, c);\n  and bc(z, b, c);\n  or o(c, x, y, z);\nendmodule\n";

// The environment of a C-element also waits for the AND that keeps it high.
const std::string waits_for_hold =
    ".inputs a b\n.outputs c hold\n.graph\na+ c+\nb+ c+\nc+ hold+\nhold+ a- b-\na- hold-\n"
    "b- hold-\nhold- c-\nc- a+ b+\n.marking { <c-,a+> <c-,b+> }\n.end\n";

const std::string choice =
    ".inputs a\n.outputs x y\n.graph\na+ p\np x+ y+\nx+ a-\ny+ a-/2\na- x-\na-/2 y-\nx- q\ny- q\n"
    "q a+\n.marking { q }\n.end\n";

std::string chain_of_buffers(int length) {
  std::string text = "module chain(z, a); output z; input a;\n";
  for (int i = 0; i < length; ++i)
    text += "buf (" + (i + 1 == length ? "z" : "w" + std::to_string(i + 1)) + ", " +
            (i == 0 ? "a" : "w" + std::to_string(i)) + ");\n";
  return text + "endmodule\n";
}

class VerifyCommand : public CommandTest {
 protected:
  VerifyCommand() : CommandTest(VOREL_VERIFY_BINARY, VOREL_SCHEMA) {}

  // Without the sizes of the prefix, and times.
  static std::string answers_in(const std::string& output) {
    return std::regex_replace(
        output, std::regex(" \\|B\\|=[0-9]+ \\|E\\|=[0-9]+ \\|C\\|=[0-9]+|[0-9]+\\.[0-9]+"), "*");
  }
};

TEST_F(VerifyCommand, TellsRightFromWrongCircuits) {
  const std::string mutex = support::example("mutex2.g");
  const std::string arbiter =
      "module m(g1, g2, r1, r2); output g1, g2; input r1, r2;\n"
      "assign g1 = r1 & ~g2; assign g2 = r2 & ~g1; endmodule\n";
  const std::string inner_choice =
      "module m(z, a); output z; input a;\n"
      "assign m1 = a & ~m2, m2 = a & ~m1, z = m1 | m2; endmodule\n";
  const struct {
    std::string stg, circuit;
    Arguments options;
    std::string expected;  // the answers other than yes, arbiters, the verdict
  } rows[] = {
      {waits_for_hold,
       "module m(c, hold, a, b); output c, hold; input a, b; assign both = a & b,\n"
       "either = a | b; assign hold = either & c, c = both | hold; endmodule\n",
       {},
       "the circuit is correct\n"},
      // SET is on in two steps: it falls while c rises.
      {follower,
       "module m(z, a); output z; input a; assign set = a & ~z, reset = ~a;\n"
       "assign z = set & ~reset | z & (set | ~reset); endmodule\n",
       {},
       "the circuit is correct\n"},
      // The STG would let another output come as well, and this circuit has only the one.
      {choice,
       "module m(x, y, a); output x, y; input a; assign x = a, y = 1'b0; endmodule\n",
       {},
       "progress: no\nthe circuit is not correct\n"},
      {mutex, arbiter, {}, "arbiter: g1, g2\nthe circuit is correct\n"},
      {follower, inner_choice, {}, "no hazard: no\nthe circuit is not correct\n"},
      {follower, inner_choice, {"--mutex", "m1,m2"}, "arbiter: m1, m2\nthe circuit is correct\n"},
      {follower,
       "module m(z, a); output z; input a; buf (z, a); buf (w, a); endmodule\n",
       {},
       "no hazard: no\nthe circuit is not correct\n"},
      {follower,
       "module m(z, a); output z; input a; assign z = a & z; endmodule\n",
       {},
       "progress: no\nno deadlock: no\nthe circuit is not correct\n"},
      {follower,
       "module m(z, a); output z; input a; not (w, a); buf (z, a); endmodule\n",
       {"--initial", "w=0"},
       "initial state: no\nno hazard: no\nthe circuit is not correct\n"},
  };
  for (const auto& row : rows) {
    const std::string stg = row.stg.starts_with('.') ? folder_.write("stg.g", row.stg) : row.stg;
    SCOPED_TRACE(row.circuit);
    Arguments arguments{stg, folder_.write("circuit.v", row.circuit)};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    const support::ProgramRun run = call(arguments);
    EXPECT_EQ(run.err, "");
    std::istringstream lines(run.out);
    std::string told;
    for (std::string line; std::getline(lines, line);)
      if (!line.empty() && !line.starts_with(' ') && !line.ends_with(": yes") &&
          !line.starts_with("circuit: "))
        told += line + '\n';
    EXPECT_EQ(told, row.expected);
    EXPECT_EQ(run.exit_code, told.ends_with("is correct\n") ? 0 : 3);
  }
}

TEST_F(VerifyCommand, TellsTheSameAsTextDocumentAndWaves) {
  folder_.write("simple.v", simple_gates);
  const support::ProgramRun run =
      call({celement, "simple.v", "--json", "out.json", "--vcd", "out.vcd"});
  EXPECT_EQ(run.exit_code, 3);
  EXPECT_EQ(answers_in(run.out), R"(
circuit: 4 gate(s), 6 wire(s)
*

initial state: yes
conformance: no
  gate o (line 7) makes c- where the STG does not allow it
  trace: a+, b+, x+, c+, a-, x-, c-
no hazard: no
  gate ac (line 5) is about to make y+, and is not any more after a-
  trace: a+, b+, x+, c+, a-
progress: yes
no deadlock: yes

the circuit is not correct

 Reading/Verifying time: */*
)");
  const support::Json document = checked_document(file("out.json"));
  EXPECT_EQ(document.at("verdict"), "not correct");
  EXPECT_EQ(document.at("questions").at(0),
            support::Json::parse(R"({"question": "initial_state", "answer": "yes"})"));
  EXPECT_EQ(document.at("questions").at(1),
            support::Json::parse(R"({"question": "conformance", "answer": "no", "wire": "c",
            "message": "gate o (line 7) makes c- where the STG does not allow it",
            "trace": ["a+", "b+", "x+", "c+", "a-", "x-", "c-"]})"));
  EXPECT_EQ(document.at("wires").at(3),
            support::Json::parse(R"({"name": "x", "kind": "wire", "initial_value": 0})"));
}

TEST_F(VerifyCommand, WritesWavesOfTheFirstTraceAndNoneWithoutOne) {
  folder_.write("simple.v", simple_gates);
  call({"-q", celement, "simple.v", "--vcd", "out.vcd"});
  EXPECT_EQ(support::value_changes(file("out.vcd")),
            "#0 c- a- b- x- y- z- #1 a+ #2 b+ #3 x+ #4 c+ #5 a- #6 x- #7 c- #8 ");
  // More wires than a code of one character can tell apart, and names that need care.
  std::string many = "module m(z, a); output z; input a; assign \\$end = a, w0 = \\$end , h = a;\n";
  for (int i = 0; i < 99; ++i)
    many += "buf (w" + std::to_string(i + 1) + ", w" + std::to_string(i) + ");\n";
  many += "buf (z, w99);\n";
  folder_.write("follower.g", follower);
  folder_.write("many.v", many + "endmodule\n");
  EXPECT_EQ(call({"follower.g", "many.v", "--vcd", "many.vcd"}).exit_code, 3);
  EXPECT_NE(support::value_changes(file("many.vcd")).find(" \\$end- w0- "), std::string::npos);
  EXPECT_NE(support::value_changes(file("many.vcd")).find(" w99- #1 a+ #2 \\$end+ "),
            std::string::npos);
  folder_.write("right.v", chain_of_buffers(1));
  EXPECT_EQ(call({"follower.g", "right.v", "--vcd", "right.vcd"}).exit_code, 0);
  EXPECT_FALSE(exists("right.vcd"));
}

TEST_F(VerifyCommand, LeavesUndecidedWhatTakesMoreThanItMay) {
  folder_.write("follower.g", follower);
  folder_.write("chain.v", chain_of_buffers(50));
  // A pipe at whose other end nothing happens.
  ASSERT_EQ(::mkfifo(folder_.path("silent.v").c_str(), 0600), 0);
  const struct {
    Arguments arguments;
    int exit_code;
    std::string verdict;
  } rows[] = {
      {{"follower.g", "chain.v", "--max-events", "2"}, 4, "undecided"},   // of the STG
      {{"follower.g", "chain.v", "--max-events", "20"}, 4, "undecided"},  // of both
      {{"follower.g", "chain.v", "--timeout", "0.000001"}, 4, "undecided"},
      {{"follower.g", "chain.v", "--timeout", "100"}, 0, "correct"},
      {{"follower.g", "silent.v", "--timeout", "0.2"}, 4, "undecided"},
  };
  for (const auto& row : rows) {
    Arguments arguments = row.arguments;
    arguments.insert(arguments.end(), {"--json", "out.json"});
    const support::ProgramRun run = call(arguments);
    SCOPED_TRACE(run.out);
    EXPECT_EQ(run.exit_code, row.exit_code);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(support::Json::parse(file("out.json")).at("verdict"), row.verdict);
    EXPECT_EQ(run.out.find("undecided") != std::string::npos, row.exit_code == 4);
  }
}

TEST_F(VerifyCommand, RefusesWhatItCannotAnswerAndWritesNothing) {
  folder_.write("f.g", follower);
  folder_.write("f.v", chain_of_buffers(1));
  folder_.write("unsafe.g", unsafe);
  folder_.write("net.ll_net", "PL\n\"p\"M1\nTR\n\"t\"\nTP\n1<1\nPT\n1>1\n");
  const std::string more = " (vorel-verify --help tells more)";
  const struct {
    Arguments arguments;
    std::string error;
  } rows[] = {
      {{"f.g"}, "circuit is required" + more},
      {{"f.g", "none.v"}, "cannot open \"none.v\" for input"},
      {{"net.ll_net", "f.v"}, "\"net.ll_net\" has no signals, so it is no STG"},
      {{"unsafe.g", "f.v"}, "the net is not safe, place q; trace:\na+, b+"},
      {{"f.g", "f.v", "--lib", "none"}, "cannot open \"none\" for input"},
      {{"f.g", "f.v", "--mutex", "z"},
       "--mutex: 'z' is not A,B with the names of two outputs" + more},
      {{"f.g", "f.v", "--mutex", "z,x"},
       "--mutex: no gate that takes time drives a wire 'x' in the module 'chain'"},
      {{"f.g", "f.v", "--initial", "z=2"},
       "--initial: 'z=2' is not a list of NAME=0 and NAME=1" + more},
      {{"f.g", "f.v", "--initial", "z=0,"},
       "--initial: 'z=0,' is not a list of NAME=0 and NAME=1" + more},
      {{"f.g", "f.v", "--json", "f.v"}, "refusing to overwrite f.v, which is the circuit"},
      {{"f.g", "f.v", "--vcd", "f.g"}, "refusing to overwrite f.g, which is the STG"},
      {{"f.g", "f.v", "--json", "x", "--vcd", "./x"}, "--vcd and --json are the same file \"x\""},
  };
  for (const auto& row : rows) {
    Arguments arguments = row.arguments;
    if (std::ranges::find(arguments, "--json") == arguments.end())
      arguments.insert(arguments.end(), {"--json", "out.json"});
    const support::ProgramRun run = call(arguments);
    EXPECT_EQ(run.exit_code, 2) << row.error;
    EXPECT_EQ(run.err, "\nError: " + row.error + '\n');
    EXPECT_EQ(run.out, "");
    EXPECT_FALSE(exists("out.json") || exists("x"));
  }
  EXPECT_EQ(file("f.g") + file("f.v"), follower + chain_of_buffers(1));
  EXPECT_EQ(call({"--help"}).exit_code, 0);
  EXPECT_TRUE(call({"--version"}).out.starts_with("vorel-verify "));
}

}  // namespace
}  // namespace vorel::tools
