// The program vorel-unfold as its users see it: what it writes, and what vorel makes of that.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "tools/unfold_testing.h"

namespace vorel::tools {
namespace {

using Arguments = std::vector<std::string>;

// Names of examples with .g text, without ending.
std::vector<std::string> circuits() {
  std::vector<std::string> stems;
  for (const std::string& name : names_in(VOREL_EXAMPLES)) {
    if (name.ends_with(".g")) stems.push_back(name.substr(0, name.size() - 2));
  }
  std::ranges::sort(stems);
  return stems;
}

TEST(UnfoldCommand, CircuitsUnfoldToTheSizesAndTheVerdictOfTheirPrefixes) {
  const support::TemporaryFolder folder;
  ASSERT_GE(circuits().size(), 10u);
  for (const std::string& name : circuits()) {
    const std::string expected = answer_about(support::example(name + ".unf.pnml"));
    ASSERT_TRUE(expected.starts_with(" |B|=") && expected.ends_with("deadlock-free")) << expected;
    for (const std::string ending : {".pnml", ".pnml.gz", ".mci"}) {
      const std::string output = folder.path(name + ending);
      const support::ProgramRun run =
          support::run_vorel_unfold({support::example(name + ".g"), output});
      EXPECT_EQ(run.exit_code, ending == ".mci" ? 1 : 0) << run.err;
      EXPECT_EQ(run.out,
                "\n" + expected.substr(0, expected.find(';')) + "\nwrote " + output + "\n");
      EXPECT_EQ(answer_about(output), expected) << output;
    }
  }
}

TEST(UnfoldCommand, MergedProcessesHaveTheSizesOfTheExamples) {
  const support::TemporaryFolder folder;
  for (const std::string input : {"muller3.g", "vme_read.g", "philosophers4.ll_net"}) {
    const std::string name = input.substr(0, input.find('.'));
    const std::string expected =
        sizes_in(support::run_vorel({"-D", support::example(name + ".merged.pnml")}));
    ASSERT_NE(expected, "");
    for (const std::string ending : {".pnml", ".mp"}) {
      const std::string output = folder.path(name + ending);
      const support::ProgramRun run =
          support::run_vorel_unfold({"--merge", support::example(input), output});
      EXPECT_EQ(run.exit_code, ending == ".mp" ? 1 : 0) << run.err;
      EXPECT_EQ(sizes_in(run), expected);
      EXPECT_EQ(sizes_in(support::run_vorel({"-D", output})), expected) << output;
    }
  }
}

TEST(UnfoldCommand, StandardStreamsCarryTheSameAsFiles) {
  const support::TemporaryFolder folder;
  support::run_vorel_unfold({support::example("vme_read.g"), folder.path("x.pnml")});
  const support::ProgramRun run = support::run_vorel_unfold(
      {"--format", "g", "-", "-"}, {.input = support::read_text(support::example("vme_read.g"))});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.out, support::read_text(folder.path("x.pnml")));
  EXPECT_EQ(run.err, "\n |B|=15 |E|=12 |C|=1 |BE|=14 |EB|=13\n") << "out of the way of the data";
}

TEST(UnfoldCommand, TheOutputIsNamedAfterTheInputInTheWorkingDirectory) {
  const support::TemporaryFolder folder;
  const std::string text = support::read_text(support::example("philosophers4.ll_net"));
  const gzFile file = gzopen(folder.path("x.y.ll_net.gz").c_str(), "wb");
  ASSERT_EQ(gzwrite(file, text.data(), static_cast<unsigned>(text.size())), int(text.size()));
  ASSERT_EQ(gzclose(file), Z_OK);
  struct Row {
    Arguments arguments;
    std::string name;
  };
  const Row table[] = {
      {{support::example("vme_read.g")}, "vme_read.unf.pnml"},
      {{"--merge", support::example("philosophers4.ll_net")}, "philosophers4.merged.pnml"},
      {{"./x.y.ll_net.gz"}, "x.y.unf.pnml"}};
  for (const Row& row : table) {
    const support::ProgramRun run =
        support::run_vorel_unfold(row.arguments, {.directory = folder.path()});
    EXPECT_TRUE(run.out.ends_with("\nwrote " + row.name + "\n")) << run.out << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder.path(row.name)));
  }
}

// A way of three steps to a marking that two concurrent events reach, and back.
std::string detour_net() {
  LowLevelNet net;
  const int p = net.place("p", true), q = net.place("q", false);
  const int r = net.place("r", true), s = net.place("s", false);
  const int x = net.place("x", false), y = net.place("y", false);
  net.transition("a", {p}, {q});
  net.transition("b", {r}, {s});
  net.transition("u1", {p, r}, {x});
  net.transition("u2", {x}, {y});
  net.transition("u3", {y}, {q, s});
  net.transition("back", {q, s}, {p, r});
  return net.text();
}

TEST(UnfoldCommand, OptionsOfTheUnfolderReachIt) {
  const std::string dummy_cycle =
      ".inputs a\n.dummy d\n.graph\na+ a-\na- d\nd a+\n.marking { <d,a+> }\n.end\n";
  struct Row {
    std::string input, format;
    Arguments options;
    std::string sizes;
  };
  const Row table[] = {
      {wide_join_net(3), "ll_net", {}, "|E|=7 |C|=4"},
      {wide_join_net(3), "ll_net", {"--order", "3"}, "|E|=7 |C|=4"},
      {wide_join_net(3), "ll_net", {"--order", "0"}, "|E|=14 |C|=8"},
      {detour_net(), "ll_net", {}, "|E|=7 |C|=2"},
      {detour_net(), "ll_net", {"--non-local"}, "|E|=6 |C|=2"},
      {detour_net(), "ll_net", {"--no-cutoffs"}, "|E|=5 |C|=0"},
      {dummy_cycle, "g", {}, "|E|=4 |C|=1"},
      {dummy_cycle, "g", {"--dummy-cutoffs"}, "|E|=3 |C|=1"},
  };
  for (const Row& row : table) {
    Arguments arguments{"--format", row.format, "-", "-"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    const support::ProgramRun run = support::run_vorel_unfold(arguments, {.input = row.input});
    EXPECT_NE(run.err.find(" " + row.sizes + " "), std::string::npos)
        << run.err << testing::PrintToString(row.options);
  }
}

TEST(UnfoldCommand, DrawsThePrefixAndTheNet) {
  const support::TemporaryFolder folder;
  const support::ProgramRun run =
      support::run_vorel_unfold({"--dot", folder.path("x.dot"), "--dot-net", folder.path("net.dot"),
                                 support::example("mutex2.g"), folder.path("x.pnml")});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_TRUE(support::read_text(folder.path("x.dot")).starts_with("digraph prefix"));
  EXPECT_TRUE(support::read_text(folder.path("net.dot")).starts_with("digraph net"));
  // A net that is refused is drawn all the same.
  const support::ProgramRun refused = support::run_vorel_unfold(
      {"--max-events", "1", "--dot", folder.path("none.dot"), "--dot-net", folder.path("net2.dot"),
       support::example("mutex2.g"), folder.path("none.pnml")});
  EXPECT_EQ(refused.exit_code, 2);
  EXPECT_EQ(support::read_text(folder.path("net2.dot")),
            support::read_text(folder.path("net.dot")));
  EXPECT_EQ(names_in(folder.path()).size(), 4u);
}

TEST(UnfoldCommand, TellsFiguresWhereAsked) {
  const auto figures = [](Arguments options) {
    options.insert(options.end(), {"--stats", support::example("key_3.ll_net"), "-"});
    return support::run_vorel_unfold(options).err;
  };
  const std::string usual = figures({});
  EXPECT_EQ(line_starting(usual, " conditions"), " conditions: 13941");
  EXPECT_EQ(line_starting(usual, " events"), " events: 6968");
  EXPECT_EQ(line_starting(usual, " cut-offs"), " cut-offs: 2911");
  for (const std::string name : {"batches", "largest batch", "comparisons", "seconds reading",
                                 "seconds unfolding", "seconds writing", "peak megabytes"}) {
    const std::string line = line_starting(usual, " " + name + ": ");
    ASSERT_GT(line.size(), name.size() + 3) << name;
    EXPECT_GE(std::stod(line.substr(name.size() + 3)), 0) << name;
  }
  const std::string relation = " concurrency relation: ";
  EXPECT_EQ(line_starting(usual, relation), relation + "kept");
  EXPECT_EQ(line_starting(figures({"--conc-rel-size", "1000"}), relation), relation + "dropped");
  EXPECT_EQ(line_starting(figures({"--conc-rel-size", "0"}), relation), relation + "not used");
}

TEST(UnfoldCommand, IsQuietWhereAskedButForWarnings) {
  const support::TemporaryFolder folder;
  const support::ProgramRun run =
      support::run_vorel_unfold({"-q", support::example("mutex2.g"), folder.path("x.mci")});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_TRUE(run.err.starts_with("\nWarning: the legacy *.mci format")) << run.err;
}

// The other side of a terminal.
class Terminal {
 public:
  Terminal() {
    if (::openpty(&descriptor_, &kept_open_, nullptr, nullptr, nullptr) != 0)
      throw std::runtime_error("no terminal for a test");
  }
  ~Terminal() {
    ::close(descriptor_);
    ::close(kept_open_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  std::string path() const { return ::ttyname(kept_open_); }
  // What was written arrives some time later, and in pieces.
  std::string shown() const {
    constexpr int quiet_milliseconds = 200;
    std::string text;
    pollfd waiting{.fd = descriptor_, .events = POLLIN, .revents = 0};
    while (::poll(&waiting, 1, quiet_milliseconds) > 0) {
      std::array<char, 4096> piece;
      const ssize_t size = ::read(descriptor_, piece.data(), piece.size());
      if (size <= 0) break;
      text.append(piece.data(), static_cast<std::size_t>(size));
    }
    return text;
  }

 private:
  int descriptor_;
  int kept_open_;  // what a program wrote can be read as long as somebody has the terminal open
};

TEST(UnfoldCommand, ShowsProgressOnATerminalOnly) {
  const Terminal terminal;
  const support::TemporaryFolder folder;
  const auto run = [&](Arguments arguments, const std::string& error_path) {
    arguments.insert(arguments.end(), {support::example("key_3.ll_net"), folder.path("x.pnml")});
    return support::run_vorel_unfold(arguments, {.error_path = error_path});
  };
  EXPECT_EQ(run({"--progress"}, "").err, "") << "in a pipe or file";
  run({}, terminal.path());
  const std::string shown = terminal.shown();
  EXPECT_TRUE(shown.starts_with("\r\033[K|B|=8 |E|=0 ")) << shown;
  EXPECT_TRUE(shown.ends_with("\r\033[K")) << shown;
  for (const std::string option : {"--no-progress", "--quiet"}) {
    run({option}, terminal.path());
    EXPECT_EQ(terminal.shown(), "") << option;
  }
}

TEST(UnfoldCommand, HelpAndVersionGoToTheStandardOutput) {
  const support::ProgramRun help = support::run_vorel_unfold({"--help"}),
                            version = support::run_vorel_unfold({"--version"});
  EXPECT_EQ(help.exit_code, 0);
  for (const std::string word :
       {"--order", "--merge", ".ll_net", ".pnml.gz", "Exit code", ".marking {", "--dot-net"}) {
    EXPECT_NE(help.out.find(word), std::string::npos) << word;
  }
  EXPECT_TRUE(version.exit_code == 0 && version.out.starts_with("vorel-unfold ")) << version.out;
}

}  // namespace
}  // namespace vorel::tools
