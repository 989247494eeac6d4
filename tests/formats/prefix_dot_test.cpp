#include "formats/prefix_dot.h"

#include <gtest/gtest.h>

#include "formats/net_dot.h"
#include "oracle/net_builder.h"
#include "support/legacy_files.h"
#include "support/process_builder.h"

namespace vorel::formats {
namespace {

template <class N>
std::string drawn(const net::PrefixOf<N>& prefix) {
  std::ostringstream stream;
  EXPECT_TRUE(write_dot(prefix, stream));
  return stream.str();
}

// Sizes of nodes and of the page are a matter of taste.
std::string without_style(std::string text) {
  for (const std::string start : {"  graph [", "  node [", "  edge ["}) {
    const std::size_t at = text.find(start);
    if (at != std::string::npos) text.erase(at, text.find('\n', at) + 1 - at);
  }
  return text;
}

TEST(PrefixDot, AnStgIsDrawnWithTheColoursOfItsSignals) {
  const auto prefix = support::process_from<net::StgPrefix>("i.a+: p -> q r; x-!: q -> p'");
  EXPECT_EQ(without_style(drawn(*prefix)),
            "digraph prefix {\n"
            "  // Boxes are events, dashed for cut-offs. A condition is an arc between its two "
            "neighbours\n"
            "  // where it can be, else a circle, filled for the initial ones.\n"
            "  // Boxes and their arcs are coloured by the kind of their signal:\n"
            "  // input red; output blue; internal darkgreen; dummy gray50;\n"
            "  c0 [shape=circle, label=\"\", xlabel=\"p\", style=filled];\n"
            "  c2 [shape=circle, label=\"\", xlabel=\"r\"];\n"
            "  c3 [shape=circle, label=\"\", xlabel=\"p\"];\n"
            "  e0 [shape=box, color=red, label=\"i.a+ e0\"];\n"
            "  c0 -> e0 [color=red];\n"
            "  e0 -> e1 [color=red, tooltip=\"q\"];\n"
            "  e0 -> c2 [color=red];\n"
            "  e1 [shape=box, color=blue, label=\"x- e1\", style=dashed];\n"
            "  e1 -> c3 [color=blue];\n"
            "}\n");
}

TEST(NetDot, PlacesBetweenTwoTransitionsAreArcs) {
  oracle::NetBuilder<net::Stg> b;
  net::Signal& x = b.add_signal("x", net::SignalKind::output);
  net::Signal& d = b.add_signal("d", net::SignalKind::dummy);
  b.add_transition("x+").label(x, net::Sign::plus).consume("q").consume("p").produce("\"");
  b.add_transition("d").label(d, net::Sign::toggle).consume("\"").produce("q").produce("p");
  b.add_transition("x-").label(x, net::Sign::minus).consume("p");
  b.mark("p");
  b.mark("\"");
  std::ostringstream stream;
  EXPECT_TRUE(write_net_dot(b.finish(), stream));
  const std::string text = without_style(stream.str());
  EXPECT_EQ(text.substr(text.find("  t0")),
            "  t0 [shape=box, color=gray50, label=\"d\"];\n"
            "  t1 [shape=box, color=blue, label=\"x+\"];\n"
            "  t2 [shape=box, color=blue, label=\"x-\"];\n"
            "  t1 -> t0 [color=blue, tooltip=\"\\\"\", label=\"\xE2\x97\x8F\"];\n"
            "  p1 [shape=circle, label=\"\xE2\x97\x8F\", xlabel=\"p\"];\n"
            "  t0 -> p1 [color=gray50];\n"
            "  p1 -> t1 [color=blue];\n"
            "  p1 -> t2 [color=blue];\n"
            "  t0 -> t1 [color=gray50, tooltip=\"q\", label=\"\"];\n"
            "}\n");
}

TEST(PrefixDot, HardNamesStayInsideTheirQuotes) {
  const std::pair<std::string, std::string> rows[] = {{"\"", R"("\"")"},
                                                      {"\\", R"("\\")"},
                                                      {"a\\\"];x", R"("a\\\"];x")"},
                                                      {"\n", R"("\\x0A")"},
                                                      {"\\N", R"("\\N")"},
                                                      {"&lt;", R"("&amp;lt;")"},
                                                      {std::string(1, '\0'), R"("\\x00")"},
                                                      {"<b>", R"("<b>")"},
                                                      {"{[//", R"("{[//")"}};
  for (const auto& [name, label] : rows) {
    support::ProcessBuilder<net::NetPrefix> b;
    b.event(name, {&b.condition(name)}, {});
    const std::string text = drawn(b.finish());
    EXPECT_NE(text.find(", xlabel=" + label + ", style"), std::string::npos) << text;
  }
}

TEST(PrefixDot, ConditionsLeftOutAfterCutOffsAreDrawn) {
  support::ProcessBuilder<net::NetPrefix> b;
  auto& p = b.condition("p");
  auto& t = b.event("t", {&p}, {}, true);
  const net::NetPrefix& prefix = b.finish();
  net::ConditionOf<net::Net> left_out;
  left_out.place = p.place;
  net::add_link(t, left_out);
  const std::string text = drawn(prefix);
  EXPECT_NE(
      text.find("  c1 [shape=circle, label=\"\", xlabel=\"p\"];\n  e0 -> c1 [color=black];\n"),
      std::string::npos)
      << text;
}

}  // namespace
}  // namespace vorel::formats
