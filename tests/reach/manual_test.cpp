// Every example of the manual of the property language, run with the program.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/console_steps.h"
#include "support/run_program.h"

namespace vorel::reach {
namespace {

const std::string root = VOREL_EXAMPLES "/..";

struct Block {
  std::vector<std::string> lines;
  std::size_t first_line = 0;  // in the manual, from 1
};

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

const std::string manual = support::read_text(root + "/docs/reach.md");

// What stands between a line "```reach" and the next line "```".
std::vector<Block> predicate_blocks() {
  const std::vector<std::string> lines = lines_of(manual);
  std::vector<Block> blocks;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i] != "```reach") continue;
    blocks.push_back({{}, i + 2});
    while (++i < lines.size() && lines[i] != "```") blocks.back().lines.push_back(lines[i]);
  }
  return blocks;
}

std::string trimmed(std::string_view text) {
  while (text.ends_with(' ')) text.remove_suffix(1);
  while (text.starts_with(' ')) text.remove_prefix(1);
  return std::string(text);
}

std::string text_of_answer(const support::ProgramRun& run) {
  return "\nThe program writes:\n" + run.out + run.err;
}

std::vector<std::string> words_of(const std::string& line) {
  std::istringstream stream(line);
  return {std::istream_iterator<std::string>(stream), {}};
}

// Examples of one command: predicates, each with what comes of it in a comment at its end.
class Predicates {
 public:
  // The first line is the command, in which @p stands for a file with the predicate.
  explicit Predicates(const Block& block) : block_{block} {
    for (const std::string& word : words_of(block.lines.at(0))) {
      if (word == "//" || word == "vorel") continue;
      const bool is_input = word.starts_with("examples/");
      arguments_.push_back(is_input ? root + "/" + word : word);
    }
    EXPECT_EQ(std::ranges::count(arguments_, "@p"), 1) << block.lines.at(0);
    std::ranges::replace(arguments_, "@p", "@" + folder_.path("p"));
  }

  std::size_t run() {
    std::size_t examples = 0;
    std::string predicate;
    for (std::size_t i = 1; i < block_.lines.size(); ++i) {
      const std::string& line = block_.lines[i];
      const std::size_t end = line.rfind(" // ");
      predicate += line.substr(0, end) + "\n";
      if (end == std::string::npos) continue;
      SCOPED_TRACE("docs/reach.md:" + std::to_string(block_.first_line + i) + ": " + predicate);
      check(predicate, trimmed(line.substr(end + 4)));
      predicate.clear();
      ++examples;
    }
    EXPECT_EQ(trimmed(predicate), "") << "without an answer";
    return examples;
  }

 private:
  support::ProgramRun run_with(const std::string& predicate) {
    folder_.write("p", predicate);
    return support::run_vorel(arguments_);
  }

  void check(const std::string& predicate, const std::string& answer) {
    for (const std::string kind : {"= ", "fails: "}) {
      if (!answer.starts_with(kind)) continue;
      const support::ProgramRun run = run_with("true ? fail string (" + predicate + ") : true");
      const std::string value = answer.substr(kind.size());
      const std::string message = "Error: failed to expand reachability expression:\n" + value;
      // A place in the text would be that of the predicate put around the expression.
      std::string err = run.err.substr(0, run.err.rfind(" (located at "));
      if (err.ends_with('\n')) err.pop_back();
      EXPECT_TRUE(err.ends_with(message)) << run.err;
      EXPECT_EQ(run.exit_code, 2);
      return;
    }
    const support::ProgramRun run = run_with(predicate);
    if (answer.starts_with("error: ")) {
      EXPECT_NE(run.err.find(answer.substr(7)), std::string::npos) << text_of_answer(run);
      EXPECT_EQ(run.exit_code, 2);
    } else {
      EXPECT_EQ(verdict_of(run, answer), answer) << text_of_answer(run);
      EXPECT_LE(run.exit_code, 1);
    }
  }

  // In the form of the answer: "after" a trace, or a number of steps.
  static std::string verdict_of(const support::ProgramRun& run, const std::string& answer) {
    const auto has = [&](std::string_view text) { return run.out.find(text) != std::string::npos; };
    const bool is_there = has("\nthere is a reachable state satisfying the predicate\n");
    const bool is_not_there = has("\nno reachable state satisfies the predicate\n");
    if (is_there == is_not_there) return "no verdict";
    if (has("\n Trivial case\n")) return is_there ? "true" : "false";
    if (is_not_there) return "never";
    const auto lines = lines_of(run.out);
    const auto title = std::ranges::find(lines, "SOLUTION 0:");
    if (lines.end() - title < 3) return "no solution";
    if (title[1].empty()) return "at once";
    constexpr std::string_view cost = "path cost: ";
    if (!answer.ends_with(" steps")) return "after " + title[1];
    return title[2].starts_with(cost) ? "after " + title[2].substr(cost.size()) + " steps"
                                      : title[2];
  }

  const Block& block_;
  support::TemporaryFolder folder_;
  std::vector<std::string> arguments_;
};

TEST(ReachManual, EveryPredicateHasTheAnswerThatIsShown) {
  std::size_t examples = 0;
  for (const Block& block : predicate_blocks()) examples += Predicates(block).run();
  EXPECT_GT(examples, 150u);
}

// The lines that are shown, in their order.
TEST(ReachManual, EveryCommandPrintsWhatIsShown) {
  const std::string shell = "PATH=" + std::filesystem::path(VOREL_BINARY).parent_path().string() +
                            ":$PATH; cd '" + root + "' && ";
  const auto steps = support::console_steps(manual);
  for (const support::ConsoleStep& step : steps) {
    SCOPED_TRACE("docs/reach.md:" + std::to_string(step.line));
    const auto run = support::run_program({"/bin/sh", "-c", shell + step.command});
    const std::vector<std::string> printed = lines_of(run.out + "\n" + run.err);
    auto next = printed.begin();
    for (const std::string& line : lines_of(step.answer)) {
      if (trimmed(line).empty()) continue;
      next = std::find(next, printed.end(), line);
      EXPECT_NE(next, printed.end()) << line << text_of_answer(run);
    }
  }
  EXPECT_GT(steps.size(), 10u);
}

}  // namespace
}  // namespace vorel::reach
