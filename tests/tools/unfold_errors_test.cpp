// What vorel-unfold refuses: with a reason, exit code 2, and no file left behind.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <regex>
#include <string>
#include <vector>

#include "tools/unfold_testing.h"

namespace vorel::tools {
namespace {

using Arguments = std::vector<std::string>;

const std::string ring = "PL\n\"p\"M1\n\"q\"\nTR\n\"t\"\n\"u\"\nTP\n1<2\n2<1\nPT\n1>1\n2>2\n";

struct Refusal {
  std::string input_name, input_text;
  Arguments options;
  std::string message;
};

// How far it got, which differs from run to run, as "; so far ...".
std::string without_progress(const std::string& text) {
  return std::regex_replace(
      text,
      std::regex("; so far \\|B\\|=[0-9]+ \\|E\\|=[0-9]+ \\|C\\|=[0-9]+, events queued: [0-9]+"),
      "; so far ...");
}

// Run in a folder with nothing but the input.
void expect_refusal(const Refusal& row) {
  SCOPED_TRACE(row.input_name + " " + testing::PrintToString(row.options));
  const support::TemporaryFolder folder;
  folder.write(row.input_name, row.input_text);
  Arguments arguments{row.input_name};
  arguments.insert(arguments.end(), row.options.begin(), row.options.end());
  const support::ProgramRun run =
      support::run_vorel_unfold(arguments, {.directory = folder.path()});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(without_progress(run.err), "\nError: " + row.message + "\n");
  EXPECT_EQ(names_in(folder.path()), Arguments{row.input_name});
  EXPECT_EQ(support::read_text(folder.path(row.input_name)), row.input_text);
}

TEST(UnfoldErrors, NetsThatAreNotSafeOrNotConsistent) {
  expect_refusal({"x.g",
                  ".inputs a b\n.graph\na+ q\nb+ q\nq b-\np a+\nr b+\n.marking {p r}\n.end\n",
                  {},
                  "the net is not safe, place q; trace:\na+, b+"});
  expect_refusal({"x.g",
                  ".inputs a\n.graph\np a+\na+ p\n.marking {p}\n.end\n",
                  {},
                  "the STG is inconsistent, signal a; trace:\na+, a+"});
}

TEST(UnfoldErrors, NetsThatExplodeEndAtTheBounds) {
  const std::string late = "the prefix is not complete after 0.25 seconds; so far ...";
  const std::string large = "the prefix has more than 5000 events; so far ...";
  for (const std::string threads : {"1", "3"}) {
    for (const std::string relation : {"40000", "0"}) {
      const auto refusal = [&](const std::string& net, Arguments options,
                               const std::string& message) {
        options.insert(options.end(), {"--threads", threads, "--conc-rel-size", relation});
        expect_refusal({"x.ll_net", net, options, message});
      };
      refusal(doubling_net(40), {"--timeout", "0.25"}, late);
      refusal(doubling_net(40), {"--max-events", "5000"}, large);
      refusal(wide_join_net(40), {"--timeout", "0.25", "--order", "0"}, late);
      refusal(wide_join_net(40), {"--max-events", "5000", "--order", "0"}, large);
    }
  }
}

// Pipes at whose other end nothing happens.
TEST(UnfoldErrors, TimeEndsWhatWaitsForOthersToo) {
  const support::TemporaryFolder folder;
  const std::string late = "\nError: the prefix is not complete after 0.2 seconds; stopped while ";
  const std::string input = folder.path("in.g"), output = folder.path("out.pnml");
  ASSERT_EQ(::mkfifo(input.c_str(), 0600), 0);
  ASSERT_EQ(::mkfifo(output.c_str(), 0600), 0);
  const int writer = ::open(input.c_str(), O_RDWR | O_CLOEXEC);
  auto run = support::run_vorel_unfold({"--timeout", "0.2", input, folder.path("x.pnml")});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.err, late + "reading the net\n");
  run = support::run_vorel_unfold({"--timeout", "0.2", support::example("toggle.g"), output});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_EQ(run.err, late + "writing\n");
  ::close(writer);
  EXPECT_EQ(names_in(folder.path()).size(), 2u);
}

TEST(UnfoldErrors, NamesOfFilesThatTellNothing) {
  const std::string inputs =
      ".g, .ll_net and .pnml, each also with .gz behind, and --format tells the format of other "
      "names";
  const std::string outputs = ".pnml, .pnml.gz, .mci and .mp";
  const auto tells_none = [](const std::string& name, const std::string& known) {
    return "the ending of \"" + name + "\" tells no format; known are " + known;
  };
  const std::string x = "x.ll_net", is_input = ", which is the input";
  const std::string refusing = "refusing to overwrite ";
  const Refusal table[] = {
      {"x.net", ring, {}, tells_none("x.net", inputs)},
      {x, ring, {"y.xml"}, tells_none("y.xml", outputs)},
      {x, ring, {"y.mp"}, ".mp cannot hold a prefix: \"y.mp\" needs --merge"},
      {x,
       ring,
       {"--merge", "y.mci"},
       ".mci cannot hold a merged process: \"y.mci\" does not go with --merge"},
      {"x.pnml", ring, {"--format", "ll_net", "./x.pnml"}, refusing + "./x.pnml" + is_input},
      {x, ring, {"--dot", "none/y.dot"}, "cannot open \"none/y.dot\" for output"},
      {x, ring, {"--dot", "-"}, "--dot needs the name of a file"},
      {x, ring, {"--dot-net", x}, refusing + x + is_input},
      {x,
       ring,
       {"--dot", "./y.pnml", "y.pnml"},
       "--dot and the output are the same file \"y.pnml\""},
  };
  for (const Refusal& row : table) expect_refusal(row);
}

TEST(UnfoldErrors, FilesThatAreNotToBeReplaced) {
  const support::TemporaryFolder folder;
  const std::string net = support::read_text(support::example("celement.g"));
  folder.write("x.g", net);
  folder.write("old.pnml", "kept");
  std::filesystem::create_hard_link(folder.path("x.g"), folder.path("hard.dot"));
  const std::string is_net = "is a net or process by its name (give the output another one)";
  const struct {
    Arguments arguments;
    std::string name, reason;
  } table[] = {
      {{"x.g", "--dot", "hard.dot"}, "hard.dot", "is the input"},
      {{"x.g", "--dot", "old.pnml", "new.pnml"}, "old.pnml", is_net},
  };
  for (const auto& row : table) {
    const support::ProgramRun run =
        support::run_vorel_unfold(row.arguments, {.directory = folder.path()});
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.err,
              "\nError: refusing to overwrite " + row.name + ", which " + row.reason + "\n");
    EXPECT_EQ(support::read_text(folder.path("x.g")), net);
    EXPECT_EQ(support::read_text(folder.path("old.pnml")), "kept");
    EXPECT_EQ(names_in(folder.path()).size(), 3u);
  }
  const Arguments replaces = {"x.g", "--dot", "new.dot", "old.pnml"};
  EXPECT_EQ(support::run_vorel_unfold(replaces, {.directory = folder.path()}).exit_code, 0);
  EXPECT_NE(support::read_text(folder.path("old.pnml")), "kept");
}

TEST(UnfoldErrors, OptionsThatMakeNoSense) {
  const std::pair<Arguments, std::string> table[] = {
      {{"--order", "4"}, "--order: Value 4 not in range 0 to 3"},
      {{"--threads", "0"}, "--threads: Value 0 not in range 1 to 256"},
      {{"--timeout", "nan"}, "--timeout: 'nan' is not a number of seconds above 0"},
      {{"--max-events", "0"}, "--max-events: '0' is not a number of events above 0"},
      {{"--max-events", "99999999999999999999999"},
       "--max-events: '99999999999999999999999' is not a number of events above 0"},
      {{"--format", "mci"}, "--format: mci not in {g,ll_net,pnml}"},
      {{"--quiet", "--progress"}, "--progress excludes --quiet"},
      {{"--faster"}, "The following argument was not expected: --faster"},
  };
  for (const auto& [options, message] : table) {
    expect_refusal({"x.ll_net", ring, options, message + " (vorel-unfold --help tells more)"});
  }
}

TEST(UnfoldErrors, InputsThatAreNotThere) {
  const support::TemporaryFolder folder;
  struct Row {
    Arguments arguments;
    std::string message;
  };
  std::filesystem::create_directory(folder.path("d.g"));
  const Row table[] = {
      {{}, "input is required (vorel-unfold --help tells more)"},
      {{"none.g"}, "cannot open \"none.g\" for input"},
      {{"d.g"}, "cannot open \"d.g\" for input"},
      {{"-", "x.pnml"}, "the standard input needs --format, one of g, ll_net and pnml"},
      {{"--format", "g", "-"}, "no output file is given, and the standard input gives it no name"},
  };
  for (const Row& row : table) {
    const support::ProgramRun run =
        support::run_vorel_unfold(row.arguments, {.directory = folder.path()});
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_EQ(run.err, "\nError: " + row.message + "\n");
    EXPECT_EQ(names_in(folder.path()), Arguments{"d.g"});
  }
}

TEST(UnfoldErrors, OutputsThatCannotBeWritten) {
  const support::TemporaryFolder folder;
  std::filesystem::create_directory(folder.path("d.pnml"));
  std::filesystem::create_symlink("/dev/full", folder.path("full.pnml"));
  std::filesystem::create_symlink("/dev/full", folder.path("full.mci"));
  const auto message_about = [&](const std::string& name) {
    const support::ProgramRun run = support::run_vorel_unfold(
        {support::example("vme_read.g"), name}, {.directory = folder.path()});
    EXPECT_EQ(run.exit_code, 2) << name;
    EXPECT_EQ(run.out, "") << name;
    return run.err;
  };
  EXPECT_EQ(message_about("d.pnml"), "\nError: cannot open \"d.pnml\" for output\n");
  EXPECT_EQ(message_about("full.pnml"), "\nError: cannot write a file\n");
  EXPECT_TRUE(message_about("full.mci").ends_with("\nError: cannot write a file\n"));
  const support::ProgramRun run = support::run_vorel_unfold({support::example("vme_read.g"), "-"},
                                                            {.output_path = "/dev/full"});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find("\nError: cannot write a file\n"), std::string::npos) << run.err;
  EXPECT_EQ(names_in(folder.path()).size(), 3u);
}

TEST(UnfoldErrors, MemoryThatRunsOutEndsWithAnExitCodeOfItsOwn) {
#ifdef VOREL_SANITIZED
  GTEST_SKIP() << "sanitizers need more address space than any limit";
#endif
  const support::TemporaryFolder folder;
  folder.write("x.ll_net", wide_join_net(40));
  const support::ProgramRun run = support::run_vorel_unfold(
      {"--order", "0", "--threads", "1", "x.ll_net"},
      {.directory = folder.path(), .address_space = std::size_t{100} << 20});
  EXPECT_EQ(run.exit_code, 5);
  EXPECT_EQ(run.err, "\nError: memory overflow\n");
  // Stacks take all there is, and sometimes so much that nothing is left for the other report.
  const support::ProgramRun many = support::run_vorel_unfold(
      {"--threads", "200", support::example("vme_read.g"), folder.path("y.pnml")},
      {.address_space = std::size_t{400} << 20});
  EXPECT_TRUE(many.err == "\nError: cannot start 200 threads\n" || many.exit_code == 5) << many.err;
  EXPECT_GE(many.exit_code, 2);
  EXPECT_EQ(names_in(folder.path()), Arguments{"x.ll_net"});
}

}  // namespace
}  // namespace vorel::tools
