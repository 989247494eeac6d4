// Files of properties, and what is answered.
#include "flow/properties.h"

#include <algorithm>

#include "base/input_text.h"
#include "base/messages.h"
#include "flow/flow_testing.h"
#include "flow/stg_checks.h"
#include "oracle/parse_g.h"
#include "oracle/random_stg.h"
#include "support/caught_messages.h"
#include "support/seeds.h"

namespace vorel::flow {
namespace {

using flow_testing::state_after;
using flow_testing::Subject;

TEST(Properties, StandInParagraphsWithANameEach) {
  const auto properties = parse_properties(
      "# all of them\n\nfirst: $\"a\"\n# of the first\n  & $\"b\"\n\n\nthe second-2 :@\"c\"\r\n"
      "\n# end\nthird:\n$\"d\"\n",
      "p.txt");
  ASSERT_TRUE(properties);
  std::string told;
  for (const NamedProperty& property : *properties)
    told += std::to_string(property.line) + property.name + "=" + property.text + ";";
  EXPECT_EQ(told,
            "3first=       $\"a\"\n\n  & $\"b\";8the second-2=              @\"c\"\r;"
            "11third=      \n$\"d\";");
  EXPECT_TRUE(parse_properties("", "p.txt").value().empty());
  EXPECT_EQ(parse_properties("\xef\xbb\xbfname: true", "p.txt").value().size(), 1u);
}

TEST(Properties, ThatAreWronglyNamedAreRefusedWithTheirLine) {
  const std::pair<const char*, const char*> cases[] = {
      {"a: true\n\ntrue\n", "expected NAME: PROPERTY, found 'true' (file p.txt, line 3)"},
      {"exists t in TRANSITIONS { @t ? true : false }", "found 'exists t in TRANSITIONS { @t ? "},
      {": true", "expected NAME: PROPERTY, found ': true' (file p.txt, line 1)"},
      {"a: true\n\n# b\na: false", "property 'a' stands already in line 1 (file p.txt, line 4)"},
      {"\n a : \n\nb: true", "nothing behind the name 'a' (file p.txt, line 2)"}};
  for (const auto& [text, error] : cases) {
    base::MessageCapture messages;
    EXPECT_FALSE(parse_properties(text, "p.txt")) << text;
    const auto found = messages.take();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_NE(found[0].text.find(error), std::string::npos) << found[0].text;
  }
}

PropertyResult answer(const net::StgPrefix& prefix, const std::string& text) {
  return check_property(prefix, {"name", text, 7}, {});
}

std::string names_of(const StgTrace& trace) {
  std::string names;
  for (const TraceStep& step : trace) names += step.transition + " ";
  return names;
}

TEST(Properties, AreAnsweredByAShortestTraceAndElements) {
  auto stg = oracle::parse_g(
      ".inputs a\n.outputs b c\n.dummy d\n.graph\na+ d\nd b+ c+\nb+ a-\nc+ a-\na- b- c-\n"
      "b- a+\nc- a+\n.marking { <b-,a+> <c-,a+> }\n.end\n");
  ASSERT_TRUE(stg);
  const net::StgPrefix prefix = flow_testing::prefix_of(std::move(*stg));
  struct Case {
    const char* text;
    const char* told;  // trace and elements, "holds" or the message
  };
  const Case cases[] = {
      {"$S\"b\" & $S\"c\" & ~$S\"a\"", "a+ d b+ c+ a- |"},
      {"$S\"b\" & ~$S\"a\" & @S\"a\"", "holds"},
      {"@S\"b\" & ~$S\"b\"", "a+ |"},
      {"exists s in OUTPUTS s.t. name s != \"b\" { $s & exists r in OUTPUTS { ~$r } }",
       "a+ d c+ |s=c r=b "},
      {"let both = $S\"b\" & $S\"c\", some = SIGNALS {\n"
       "exists x in some, n in {1, 2} s.t. n > 1 { both & $x & @x } }",
       "a+ d b+ c+ |x=a n=2 "},
      {"forall s in SIGNALS { $s }", "a+ d b+ c+ |"},
      {"exists s in SIGNALS {\n  $t }",
       "incorrect syntax of the expression: Undeclared identifier: t "
       "(located at line 8, column 4); Failed to read the property"}};
  for (const Case& c : cases) {
    const PropertyResult result = answer(prefix, c.text);
    std::string told = result.answer == PropertyAnswer::holds ? "holds" : result.message;
    if (result.answer == PropertyAnswer::witness) {
      told = names_of(result.trace) + "|";
      for (const auto& [name, value] : result.values) told += name + "=" + value + " ";
    }
    EXPECT_EQ(told, c.told) << c.text;
  }
}

// The same question twice: by a property and by the check of the STG.
TEST(Properties, AgreeWithTheCheckOfTheStg) {
  std::string text;
  ASSERT_TRUE(base::read_whole_file(VOREL_EXAMPLES "/output_persistency.reach", text));
  const support::CaughtMessages warnings;
  int witnesses = 0;
  const auto [first, end] = support::seeds(60);
  for (std::uint64_t seed = first; seed < end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Subject subject(oracle::random_stg(seed, {.toggles = seed % 3 == 1}));
    const auto findings = check_stg(subject.prefix, {});
    const auto is_lost = [](const StgFinding& finding) {
      return finding.kind == FindingKind::not_persistent ||
             finding.kind == FindingKind::arbitration;
    };
    const PropertyResult result = answer(subject.prefix, text);
    ASSERT_EQ(result.answer == PropertyAnswer::witness, std::ranges::any_of(findings, is_lost))
        << result.message;
    if (result.answer != PropertyAnswer::witness) continue;
    ++witnesses;
    std::size_t shortest = SIZE_MAX;
    for (const StgFinding& finding : findings)
      if (is_lost(finding)) shortest = std::min(shortest, finding.trace->size());
    EXPECT_EQ(result.trace.size() + 1, shortest);
    const auto state = state_after(subject, result.trace);
    ASSERT_TRUE(state);
    ASSERT_EQ(result.values.size(), 2u);
    // After the taker has fired the loser cannot.
    const auto taker = std::ranges::find_if(
        subject.graph.states[*state].arcs,
        [&](const auto& arc) { return arc.transition->name == result.values[1].second; });
    ASSERT_NE(taker, subject.graph.states[*state].arcs.end());
    for (const auto& arc : subject.graph.states[taker->target].arcs)
      EXPECT_NE(arc.transition->name, result.values[0].second);
  }
  EXPECT_GT(witnesses, 3);
}

}  // namespace
}  // namespace vorel::flow
