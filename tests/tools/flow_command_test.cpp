// The program vorel-flow at the command line: verdicts, the document, the folder, what it refuses.
// That circuits and findings are right is compared with explicit exploration in tests/flow.
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "tools/command_testing.h"

namespace vorel::tools {
namespace {

using support::Json;

namespace fs = std::filesystem;

const std::string inconsistent =
    ".inputs a\n.outputs z\n.graph\na+ z+\nz+ z+/2\nz+/2 a-\na- z-\nz- a+\n"
    ".marking {<z-,a+>}\n.end\n";

// Input b takes the token that z+ is to have.
const std::string not_persistent =
    ".inputs a b\n.outputs z\n.graph\na+ p\np z+ b+\nz+ a-\na- z-\nz- q\nb+ a-/2\na-/2 b-\n"
    "b- q\nq a+\n.marking {q}\n.end\n";

const std::string stops = ".inputs a\n.outputs z\n.graph\np a+\na+ z+\n.marking {p}\n.end\n";

const std::string without_outputs = ".inputs a\n.graph\na+ a-\na- a+\n.marking {<a-,a+>}\n.end\n";

class FlowCommand : public CommandTest {
 protected:
  FlowCommand() : CommandTest(VOREL_FLOW_BINARY, VOREL_FLOW_SCHEMA) {
    write("follower.g", follower);
    write("unsafe.g", unsafe);
    fs::copy(support::example("vme_read.g"), folder_.path());
  }

  // All below a folder, hidden files too.
  std::set<std::string> files_in(const std::string& name) const {
    std::set<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path(name)))
      if (!entry.is_directory())
        files.insert(fs::relative(entry.path(), folder_.path(name)).string());
    return files;
  }
};

TEST_F(FlowCommand, TellsItsVerdictByTextDocumentAndExitCode) {
  write("inconsistent.g", inconsistent);
  write("not_persistent.g", not_persistent);
  write("no_end.g", follower.substr(0, follower.size() - 5));
  write("stops.g", stops);
  write("without_outputs.g", without_outputs);
  write("empty", "");
  write("broken.g", ".inputs a\n.outputs z\n.graph\na+ z+ )\n.end\n");
  write("unbounded.g", ".inputs a\n.outputs z\n.graph\na+ z+\n.marking { nowhere }\n.end\n");
  // A pipe at whose other end nothing happens.
  ASSERT_EQ(::mkfifo(folder_.path("silent.g").c_str(), 0600), 0);
  const std::string vme = "vme_read.g", mutex = support::example("mutex2.g");
  const struct {
    Arguments arguments;
    int exit_code;
    std::string verdict;
    std::string told;  // a part of the text
    std::string kind;  // of the first finding, if any
  } rows[] = {
      {{vme}, 0, "verified", "\nthe circuit is verified\n", ""},
      {{mutex}, 1, "verified with warnings", "\narbiter: g1, g2\n", "arbitration"},
      {{"no_end.g"}, 1, "verified with warnings", "is verified; there are warnings\n", ""},
      {{vme, "--properties", "empty"}, 1, "verified with warnings", "; there are warnings\n", ""},
      {{"stops.g"}, 1, "verified with warnings", "\n  trace: a+, z+\n", "deadlock"},
      {{"broken.g"}, 2, "error", "\nhint: ", ""},
      {{"none.g"}, 2, "error", "\nhint: ", ""},
      {{"unbounded.g"}, 2, "error", "transition(s) with empty preset: a+\n", ""},
      {{"without_outputs.g"}, 2, "error", "\nhint: ", ""},
      {{vme, "--lib", "none"}, 2, "error", "\nhint: ", ""},
      {{"unsafe.g"}, 3, "faulty STG", "\n  trace: a+, b+\n", "unsafe"},
      {{"inconsistent.g"}, 3, "faulty STG", "\n  trace: a+, z+, z+/2\n", "inconsistent"},
      {{"not_persistent.g"}, 3, "faulty STG", "\n  trace: a+, b+\n", "not_persistent"},
      {{vme, "--no-resolve"}, 4, "gave up", "CSC conflict of signal ", ""},
      {{vme, "--max-events", "5"},
       4,
       "gave up",
       "\nhint: try again with a larger --max-events",
       ""},
      {{vme, "--timeout", "0.000001"}, 4, "gave up", "a longer --timeout", ""},
      {{"silent.g", "--timeout", "0.2"}, 4, "gave up", "over while reading\nhint: ", ""},
  };
  for (const auto& row : rows) {
    Arguments arguments = row.arguments;
    arguments.insert(arguments.end(), {"--json", "out.json"});
    const support::ProgramRun run = call(arguments);
    SCOPED_TRACE(run.out + run.err);
    EXPECT_EQ(run.exit_code, row.exit_code);
    EXPECT_NE(run.out.find(row.told), std::string::npos) << row.told;
    EXPECT_EQ(run.out.find("\nhint: ") != std::string::npos, row.exit_code >= 2);
    EXPECT_EQ(run.err.find("\nError: ") != std::string::npos, row.exit_code == 2);
    const Json document = checked_document(file("out.json"));
    EXPECT_EQ(document.at("verdict"), row.verdict);
    EXPECT_EQ(document.at("exit_code"), row.exit_code);
    EXPECT_EQ(document.at("hint") == "", row.exit_code < 2);
    const Json& findings = document.at("findings");
    ASSERT_EQ(findings.empty(), row.kind.empty());
    if (!row.kind.empty()) {
      EXPECT_EQ(findings.at(0).at("kind"), row.kind);
    }
    for (const Json& step : document.at("steps")) {
      const std::string line = step.at("text");
      EXPECT_NE(run.out.find(line), std::string::npos) << line;
    }
  }
}

TEST_F(FlowCommand, LeavesAFolderThatTheOtherProgramsTake) {
  const support::ProgramRun run =
      call({"vme_read.g", "-o", "a/b", "--testbench", "--json", "out.json", "--module", "bus"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.err, "");
  const Json document = checked_document(file("out.json"));
  EXPECT_EQ(file("a/b/report.json"), file("out.json"));
  std::set<std::string> listed{"report.json"};
  for (const Json& name : document.at("files")) listed.insert(name);
  EXPECT_EQ(files_in("a/b"), listed);
  EXPECT_TRUE(std::ranges::includes(
      listed, std::set<std::string>{"vme_read.g", "vme_read.v", "vme_read_tb.v", "report.html"}));
  EXPECT_EQ(document.at("circuit").at("module"), "bus");
  EXPECT_EQ(document.at("circuit").at("verilog"), file("a/b/vme_read.v"));
  const Json& conflict = document.at("coding").at("conflicts").at(0);
  EXPECT_TRUE(exists("a/b/" + std::string(conflict.at("vcd_first"))));
  EXPECT_TRUE(exists("a/b/" + std::string(conflict.at("vcd_second"))));
  const auto verified = folder_.shell(VOREL_VERIFY_BINARY " a/b/vme_read.g a/b/vme_read.v");
  EXPECT_EQ(verified.exit_code, 0) << verified.out << verified.err;
  // The STG of the circuit has no conflicts left.
  EXPECT_EQ(call({"a/b/vme_read.g", "--no-resolve"}).exit_code, 0);
}

TEST_F(FlowCommand, LeavesNothingOfAnEarlierRunThatIsNoLongerSo) {
  EXPECT_EQ(call({"follower.g", "-o", "out"}).exit_code, 0);
  EXPECT_EQ(call({"vme_read.g", "-o", "out"}).exit_code, 0);
  write("out/mine.txt", "mine");
  EXPECT_TRUE(exists("out/follower.v") && exists("out/traces/conflict1_first.vcd"));
  // The same STG without a circuit: its report only. The other circuit and my file stay.
  const support::ProgramRun run =
      call({"vme_read.g", "-o", "out", "--max-events", "5", "--no-html"});
  EXPECT_EQ(run.exit_code, 4);
  EXPECT_EQ(files_in("out"), (std::set<std::string>{"follower.g", "follower.v", "follower_gates.v",
                                                    "mine.txt", "report.json"}));
  // After an error all is as it was.
  const std::string before = file("out/report.json");
  EXPECT_EQ(call({"vme_read.g", "-o", "out", "--lib", "none"}).exit_code, 2);
  EXPECT_EQ(file("out/report.json"), before);
  // What a document lists that vorel-flow does not write is left alone, as is what is no document.
  Json document = Json::parse(before);
  document["files"] = {"mine.txt", "../vme_read.g", "traces/../mine.txt", "/etc/passwd", 7};
  write("out/report.json", document.dump());
  EXPECT_EQ(call({"vme_read.g", "-o", "out", "--no-html"}).exit_code, 0);
  EXPECT_TRUE(exists("out/mine.txt") && exists("vme_read.g"));
  write("out/report.json", "{\"program\": 1");
  EXPECT_EQ(call({"vme_read.g", "-o", "out", "--no-html"}).exit_code, 2) << "whose STG is there?";
  fs::remove(folder_.path("out/vme_read.g"));
  EXPECT_EQ(call({"vme_read.g", "-o", "out", "--no-html"}).exit_code, 0);
  EXPECT_EQ(checked_document(file("out/report.json")).at("verdict"), "verified");
}

TEST_F(FlowCommand, WritesNothingButTheDocumentToTheStandardOutputIfAskedTo) {
  const support::ProgramRun run = call({"-", "--format", "g", "--json", "-", "--style", "complex",
                                        "--cost", "small", "--cost", "lock=#s,csc=1"},
                                       follower);
  EXPECT_EQ(run.exit_code, 0);
  const Json document = checked_document(run.out);
  EXPECT_EQ(document.at("stg"), "standard input");
  EXPECT_EQ(document.at("request").at("cost"),
            Json::parse(R"({"csc": "1", "usc": "16", "del": "0", "trig": "0", "seq": "1",
                            "conc": "2", "lock": "#s"})"));
  EXPECT_EQ(document.at("circuit").at("style"), "complex");
  EXPECT_EQ(document.at("circuit").at("module"), "stg");
  EXPECT_NE(run.err.find("\nthe circuit is verified\n"), std::string::npos);
  EXPECT_EQ(call({"-q", "follower.g"}).out, "");
}

TEST_F(FlowCommand, RefusesWhatItCannotDoAndWritesNothing) {
  const std::string more = " (vorel-flow --help tells more)";
  fs::create_directory(folder_.path("blocked"));
  write("blocked/traces", "a file");
  write("blocked/follower.g", follower);
  write("named.g",
        ".outputs a\\b\n.graph\na\\b+ a\\b-\na\\b- a\\b+\n.marking {<a\\b-,a\\b+>}\n.end\n");
  const struct {
    Arguments arguments;
    std::string error;
  } rows[] = {
      {{}, "stg is required" + more},
      {{"--bogus"}, "The following argument was not expected: --bogus" + more},
      {{"follower.g", "-o", "."}, "refusing to overwrite ./follower.g, which is the STG"},
      {{"blocked/follower.g", "-o", "."},
       "refusing to overwrite ./follower.g, which is a net or process by its name (give the "
       "output another one)"},
      {{"follower.g", "-o", "vme_read.g"}, "\"vme_read.g\" is no folder"},
      {{"follower.g", "-o", "vme_read.g/x"}, "cannot make the folder \"vme_read.g/x\""},
      {{"unsafe.g", "-o", "blocked"}, "cannot make the folder \"blocked/traces\""},
      {{"follower.g", "--json", "follower.g"},
       "refusing to overwrite follower.g, which is the STG"},
      {{"follower.g", "-o", ".", "--lib", "report.json"},
       "refusing to overwrite ./follower.g, which is the STG"},
      {{"follower.g", "--cost", "csc"}, "--cost: 'csc' is not a list of NAME=EXPR" + more},
      {{"follower.g", "--cost", "CSC=1"}, "--cost: 'CSC=1' is not a list of NAME=EXPR" + more},
      {{"follower.g", "-o", ""}, "--output needs a value" + more},
      {{"follower.g", "--reset", "r s"},
       "--reset: 'r s' cannot be the name of an input in Verilog" + more},
      {{"vme_read.g", "--reset", "csc"},
       "--reset: 'csc' is the name of an inserted signal, so another one is needed"},
      {{"named.g"}, "the name of signal \"a\\b\" does not suit the .g format"},
      {{"follower.g", "--cost", "csc=1-2"},
       "--cost: bad coefficient option: coefficient must be non-negative when parsing 1-2"},
      {{"follower.g", "--lib", "unsafe.g"},
       "incorrect syntax of unsafe.g\n(unsafe.g, line 1: expected a statement, found '.inputs')"},
      {{"follower.g", "--reset", "a"}, "--reset: the STG has a signal 'a' itself"},
      {{"follower.g", "--properties", "unsafe.g"},
       "expected NAME: PROPERTY, found '.inputs a b' (file unsafe.g, line 1)"},
  };
  for (const auto& row : rows) {
    const std::set<std::string> before = files_in("");
    const support::ProgramRun run = call(row.arguments);
    EXPECT_EQ(run.exit_code, 2) << row.error;
    EXPECT_EQ(run.err, "\nError: " + row.error + '\n');
    EXPECT_EQ(files_in(""), before);
  }
  EXPECT_EQ(file("follower.g"), follower);
  for (const char* const option : {"--style", "--insertions", "--solver", "--threads", "--what"})
    EXPECT_EQ(call({"follower.g", option, "x"}).exit_code, 2) << option;
  EXPECT_EQ(call({"--help"}).exit_code, 0);
  EXPECT_TRUE(call({"--version"}).out.starts_with("vorel-flow "));
}

}  // namespace
}  // namespace vorel::tools
