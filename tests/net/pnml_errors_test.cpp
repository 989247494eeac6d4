// Every way in which a PNML document can be wrong, and what is said of it.
#include <gtest/gtest.h>

#include "support/pnml_text.h"

namespace vorel {
namespace {

struct Fault {
  std::string old_part, new_part, messages;
};

std::string error(const std::string& text) { return "\nError: " + text + "\n"; }

void expect_refusals(const std::string& text, const std::vector<Fault>& faults) {
  for (const Fault& fault : faults) {
    const auto result = read_text(with(text, fault.old_part, fault.new_part));
    EXPECT_EQ(result.input, nullptr) << fault.new_part;
    EXPECT_EQ(result.messages, fault.messages) << fault.new_part;
  }
}

TEST(PnmlErrors, OfTheWholeDocument) {
  const std::pair<std::string, std::string> table[] = {
      {"", "XML node \"ROOT\" has no children"},
      {" <!-- only this --> ", "XML node \"ROOT\" has no children"},
      {"<net/>", "XML node \"ROOT\" must have a child \"pnml\""},
      {"<pnml/>", "XML node \"pnml\" has no children"},
      {"<pnml>text</pnml>", "XML node \"pnml\" has no children"},
      {"<pnml><page/><net/></pnml>", "XML node \"pnml\" must have a child \"net\""},
      {"<pnml><net/></pnml>", "XML node \"net\" must have attribute \"type\""},
      {"<pnml><net type='low_level_net'/></pnml>", "unexpected net type: low_level_net"},
      {"<pnml>", "syntax error in an XML file: unexpected end of data ()"},
      {"<pnml", "syntax error in an XML file: expected > ()"},
      {"pnml", "syntax error in an XML file: expected < (pnml)"},
      {"<pnml><net></pnml>", "syntax error in an XML file: invalid closing tag name (>)"},
      {"<pnml a=b/>", "syntax error in an XML file: expected ' or \" (b/>)"},
  };
  for (const auto& [text, message] : table) {
    const auto result = read_text(text);
    EXPECT_EQ(result.input, nullptr);
    EXPECT_EQ(result.messages, error(message));
  }
}

TEST(PnmlErrors, AZeroByteIsNotTakenForTheEnd) {
  std::string text = net_prefix_text;
  text.push_back('\0');
  text += "<pnml/>";
  const auto result = read_text(text);
  EXPECT_EQ(result.input, nullptr);
  EXPECT_EQ(result.messages, error("syntax error in an XML file: zero byte at offset " +
                                   std::to_string(net_prefix_text.size()) + " ()"));
}

TEST(PnmlErrors, TheExcerptOfALongTextIsCut) {
  const auto result = read_text("x" + std::string(100000, 'y'));
  EXPECT_EQ(result.messages,
            error("syntax error in an XML file: expected < (x" + std::string(4095, 'y') + "...)"));
}

TEST(PnmlErrors, OfTheOriginalNet) {
  const std::string place = R"(<place id="q"><name><text>q</text></name></place>)";
  expect_refusals(
      net_prefix_text,
      {
          {"id=\"q\"", "", error("XML node \"place\" must have attribute \"id\"")},
          {"id=\"q\"", "id=\"u\"", error("Duplicate XML id: \"u\"")},
          {place, "<place id='q'/>", error("XML node \"place\" must have a child \"name\"")},
          {place, "<place id='q'><name/></place>",
           error("XML node \"name\" must have a child \"text\"")},
          {"<initialMarking><text>1</text>", "<initialMarking>",
           error("XML node \"initialMarking\" must have a child \"text\"")},
          {"<text>1</text>", "<text>-1</text>", error("positive integer expected: -1")},
          {"<text>1</text>", "<text>4294967296</text>",
           error("positive integer expected: 4294967296")},
          {"<text>1</text>", "<text>99999999999999999999</text>",
           error("positive integer expected: 99999999999999999999")},
          {"<text>u</text>", "", error("XML node \"name\" must have a child \"text\"")},
          {"source=\"q\"", "", error("XML node \"arc\" must have attribute \"source\"")},
          {"target=\"u\"", "", error("XML node \"arc\" must have attribute \"target\"")},
          {"target=\"u\"", "target=\"c0\"", error("XML identifier \"c0\" has not been declared")},
          {"target=\"u\"", "target=\"q\"",
           error("arc \"q\" --> \"q\" must link a place and a transition")},
          {"type=\"low_level_net\"", "type=\"STG\"", ""},
          {"type=\"low_level_net\"", "", ""},
          {"<page id=\"g\">", "</net><net><page>", ""},
      });
}

TEST(PnmlErrors, OfTheSignalsOfAnStg) {
  const std::string twice = R"(<signal id="s3" type="input"><name><text>a</text></name></signal>)";
  expect_refusals(
      stg_prefix_text,
      {
          {"id=\"s2\"", "", error("XML node \"signal\" must have attribute \"id\"")},
          {"id=\"s2\"", "id=\"s1\"", error("Duplicate XML id: \"s1\"")},
          {"type=\"dummy\"", "", error("XML node \"signal\" must have attribute \"type\"")},
          {"type=\"dummy\"", "type=\"Dummy\"",
           error("attribute \"type\" of XML node \"signal\" has incorrect value \"Dummy\"")},
          {"initialValue=\"0\"", "initialValue=\"2\"",
           error("attribute \"initialValue\" of XML node \"signal\" has incorrect value \"2\"")},
          {"<name><text>a</text></name>", "",
           error("XML node \"signal\" must have a child \"name\"")},
          {"<place id=\"p\">", twice + "<place id=\"p\">",
           error("signal a is declared more then once (file XML, line 0)")},
          {"<signal ref=\"s2\" sign=\"~\"/>", "",
           error("XML node \"transition\" must have a child \"signal\"")},
          {"ref=\"s2\"", "", error("XML node \"signal\" must have attribute \"ref\"")},
          {"ref=\"s2\"", "ref=\"p\"", error("XML identifier \"p\" has not been declared")},
          {"sign=\"~\"", "", error("XML node \"signal\" must have attribute \"sign\"")},
          {"sign=\"~\"", "sign=\"+/1\"",
           error("attribute \"sign\" of XML node \"signal\" has incorrect value \"+/1\"")},
          {"initialValue=\"0\"", "initialValue=\"1\"",
           error("the STG is inconsistent, signal a; trace:\na+")},
      });
  const auto no_page = read_text(
      "<pnml><net type='merged_process:STG'><original_net><net type='STG'/></original_net></net>"
      "</pnml>");
  EXPECT_EQ(no_page.messages, error("XML node \"net\" must have a child \"page\""));
}

TEST(PnmlErrors, OfAPrefix) {
  const std::string correspondent = "<correspondent/>";
  expect_refusals(
      net_prefix_text,
      {
          {"id=\"c1\"", "", error("XML node \"place\" must have attribute \"id\"")},
          {"id=\"c1\"", "id=\"e0\"", error("Duplicate XML id: \"e0\"")},
          {"<place id=\"c1\"><originalNode ref=\"q\"/>", "<place id=\"c1\">",
           error("XML node \"place\" must have a child \"originalNode\"")},
          {"<originalNode ref=\"q\"/>", "<originalNode/>",
           error("XML node \"originalNode\" must have attribute \"ref\"")},
          {"ref=\"q\"", "ref=\"c0\"", error("XML identifier \"c0\" has not been declared")},
          {"ref=\"q\"", "ref=\"u\"", error("XML identifier \"u\" does not name a place")},
          {"ref=\"u\"", "ref=\"q\"", error("XML identifier \"q\" does not name a transition")},
          {correspondent, "<correspondent ref='e2'/>",
           error("XML identifier \"e2\" has not been declared")},
          {correspondent, "<correspondent ref='e0' ref='c0'/>",
           error("XML identifier \"c0\" does not name a transition")},
          {"target=\"c1\"", "target=\"q\"", error("XML identifier \"q\" has not been declared")},
          {"target=\"c1\"", "target=\"e1\"",
           error("arc \"e0\" --> \"e1\" must link a place and a transition")},
          {"target=\"c2\"", "target=\"c1\"",
           error("place \"c1\" has two producers: \"e0\" and \"e1\"")},
          {"<arc source=\"c1\" target=\"e1\"/>",
           "<arc source=\"e0\" target=\"c1\"/><arc source=\"c1\"/>",
           "\nWarning: ignoring duplicate arc: e0 --> c1\n" +
               error("XML node \"arc\" must have attribute \"target\"")},
          {"</original_net>\n  <page>", "</original_net>\n  <graphics/></net><net><page>", ""},
      });
}

TEST(PnmlErrors, OfAMergedProcess) {
  expect_refusals(
      net_merged_text,
      {
          {"<occurrence_depth><text>2</text></occurrence_depth>", "",
           error("XML node \"place\" must have a child \"occurrence_depth\"")},
          {"<text>2</text>", "", error("XML node \"occurrence_depth\" must have a child \"text\"")},
          {"<text>2</text>", "<text>0</text>", error("positive integer expected: 0")},
          {"<text>2</text>", "<text>two</text>", error("positive integer expected: two")},
          {"<text>2</text>", "<text>2147483648</text>",
           error("positive integer expected: 2147483648")},
          {"<text> 1 </text>", "<text> -1</text>", error("positive integer expected:  -1")},
          {"<text> 1 </text>", "<text>2</text>",
           error("the initial marking is not safe: place(s) c0")},
          {"ref=\"t\"", "ref=\"p\"", error("XML identifier \"p\" does not name a transition")},
      });
}

TEST(PnmlErrors, WhatTheChecksOfEveryInputRefuseIsRefused) {
  const std::string without_arc = with(net_prefix_text, R"(<arc source="c0" target="e0"/>)", "");
  const auto result = read_text(without_arc);
  EXPECT_EQ(result.input, nullptr);
  EXPECT_NE(result.messages.find(error("the net contains 1 transition(s) with empty preset: e0")),
            std::string::npos);
}

TEST(PnmlErrors, ADummyWithAnInitialValueIsWarnedOfWhileReadingAndByTheConsistencyPass) {
  const std::string warning = "\nWarning: dummy signal d has an initial value distinct from '?'\n";
  read_as<StgPrefix>(with(stg_prefix_text, "type=\"dummy\"", "type=\"dummy\" initialValue=\"1\""),
                     warning + warning);
}

}  // namespace
}  // namespace vorel
