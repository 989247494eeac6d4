// Good and bad resolutions of small STGs.
#include "oracle/resolution_checks.h"

#include <gtest/gtest.h>

#include "oracle/parse_g.h"

namespace vorel::oracle {
namespace {

net::Stg example(const std::string& name) {
  return *parse_g(*read_file(VOREL_EXAMPLES "/" + name + ".g"));
}

net::Stg stg_of(const std::string& graph_and_marking) {
  return *parse_g(".inputs a\n.outputs y z\n.internal x\n.dummy d\n.graph\n" + graph_and_marking +
                  " }\n.end\n");
}

// The same without x and d where they do not occur.
net::Stg without(net::Stg stg, const std::string& name) {
  std::erase_if(stg.signals, [&name](const auto& signal) { return signal->name == name; });
  net::sort_signals(stg);
  return stg;
}

TEST(ResolutionFault, TellsGoodFromBadResolutions) {
  struct Row {
    const char *before, *after, *fault;
    bool resolved = false, reduced = false;
  };
  const char* const cycle = "a+ y+\ny+ a-\na- y-\ny- a+\n.marking { <y-,a+>";
  const char* const choice = "p a+ y+/1\na+ y+\ny+ a-\na- q\ny+/1 q\nq y-\ny- p\n.marking { p";
  const char* const twins = "a+ y+\ny+ a-\na- y-\ny- z+\nz+ z-\nz- a+\n.marking { <z-,a+>";
  const char* const fork =
      "a+ y+ z+\ny+ a-\nz+ a-\na- y- z-\ny- a+\nz- a+\n.marking { <y-,a+> <z-,a+>";
  const char* const queue =
      "a+ y+ z+\ny+ a- z+\nz+ a-\na- y- z-\ny- a+\nz- a+\n.marking { <y-,a+> <z-,a+>";
  const Row rows[] = {
      {cycle, "a+ x+\nx+ y+\ny+ a-\na- x-\nx- y-\ny- a+\n.marking { <y-,a+>", "", true},
      {cycle, "a+ x-\nx- y+\ny+ a-\na- x+\nx+ y-\ny- a+\n.marking { <y-,a+>",
       "x starts with another value"},
      {cycle, "a+ x+\nx+ y+\ny+ a-\na- y-\ny- a+\n.marking { <y-,a+>", "the STG is not consistent"},
      {cycle, "a+ y+\ny+ x+\nx+ a-\na- x-\nx- y-\ny- a+\n.marking { <y-,a+>", "input a- waits"},
      {cycle, "a+ y+\ny+ a-\na- y-\ny- a+\nx+ x-\nx- x+\n.marking { <y-,a+> <x-,x+>",
       "a loop of new signals alone"},
      {cycle, "a+ y+\ny+ y-\ny- a-\na- a+\n.marking { <a-,a+>", "y- could not happen there"},
      {cycle, "a+ y+ x+\ny+ a-\nx+ s\na- y-\ny- a+\n.marking { <y-,a+>", "the net is not safe"},
      {cycle, "a+ y+\ny+ a-\na- y-\ny- a+\na+ r\nr y-\nr x+\n.marking { <y-,a+>",
       "y- cannot follow"},
      {choice, "p a+ y+/1\na+ x+\nx+ y+\ny+ a-\na- x-\nx- q\ny+/1 q\nq y-\ny- p\n.marking { p",
       "a disables y"},
      {twins, "a+ y+\ny+ a-\na- y-\ny- x+\nx+ z+\nz+ z-\nz- x-\nx- a+\n.marking { <x-,a+>",
       "CSC conflict for z", true},
      {fork, queue, "", false, true},
      {fork, queue, "z+ cannot follow"},
      {fork, "a+ r\nr y+ z+\ny+ a-\nz+ a-\na- y- z-\ny- a+\nz- a+\n.marking { <y-,a+> <z-,a+>",
       "a- can never happen again", false, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.after);
    const net::Stg before = without(stg_of(row.before), "x");
    EXPECT_EQ(
        resolution_fault(before, stg_of(row.after),
                         {.new_signals = {"x"}, .resolved = row.resolved, .reduced = row.reduced}),
        row.fault);
  }
}

TEST(ResolutionFault, AcceptsTheStateSignalOfTheBusController) {
  const net::Stg before = example("vme_read"), after = example("vme_read_csc");
  EXPECT_EQ(resolution_fault(before, after, {{"csc"}}), "");
  EXPECT_EQ(resolution_fault(before, before, {{}}), "CSC conflict for d");
  EXPECT_EQ(resolution_fault(before, before, {.new_signals = {}, .resolved = false}), "");
  EXPECT_EQ(resolution_fault(before, after, {{"x"}}), "signal csc is of another kind");
}

}  // namespace
}  // namespace vorel::oracle
