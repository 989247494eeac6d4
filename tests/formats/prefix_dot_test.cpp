#include "formats/prefix_dot.h"

#include <gtest/gtest.h>

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

// Counts the statements of a text of Graphviz; -1 if brackets or quotes do not match.
int statement_count(const std::string& text) {
  int braces = 0, brackets = 0, statements = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted) {
      if (c == '\\') ++i;
      if (c == '"') quoted = false;
      if (c == '\n' || c == '\0') return -1;
      continue;
    }
    if (c == '/') i = text.find('\n', i);
    if (c == '"') quoted = true;
    if (c == '{') ++braces;
    if (c == '}') --braces;
    if (c == '[') ++brackets;
    if (c == ']') --brackets;
    if (c == ';' && brackets == 0) ++statements;
    if (braces < 0 || brackets < 0 || brackets > 1) return -1;
  }
  return quoted || braces != 0 || brackets != 0 ? -1 : statements;
}

TEST(PrefixDot, AnStgIsDrawnWithTheColoursOfItsSignals) {
  support::ProcessBuilder<net::StgPrefix> b;
  auto &p = b.condition("p"), &q = b.condition("q");
  b.event("i.a+", {&p}, {&q});
  b.event("x-", {&q}, {&b.condition("p")}, true);
  EXPECT_EQ(drawn(b.finish()),
            "digraph prefix {\n"
            "  // Circles are conditions, boxes are events; cut-offs are dashed.\n"
            "  // Events and their arcs are coloured by the kind of their signal:\n"
            "  // input red; output blue; internal darkgreen; dummy gray50;\n"
            "  c0 [shape=circle, label=\"p\"];\n"
            "  c1 [shape=circle, label=\"q\"];\n"
            "  c2 [shape=circle, label=\"p\"];\n"
            "  e0 [shape=box, color=red, label=\"i.a+\\ne0\"];\n"
            "  c0 -> e0 [color=red];\n"
            "  e0 -> c1 [color=red];\n"
            "  e1 [shape=box, color=blue, label=\"x-\\ne1\", style=dashed];\n"
            "  c1 -> e1 [color=blue];\n"
            "  e1 -> c2 [color=blue];\n"
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
    EXPECT_NE(text.find("label=" + label + "]"), std::string::npos) << text;
    EXPECT_EQ(statement_count(text), 3) << text;
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
  EXPECT_NE(text.find("  c1 [shape=circle, label=\"p\"];\n  e0 -> c1 [color=black];\n"),
            std::string::npos)
      << text;
}

}  // namespace
}  // namespace vorel::formats
