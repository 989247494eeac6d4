// Every way in which a PNML document can be wrong, and what is said of it.
#include <gtest/gtest.h>

#include "support/pnml_text.h"

namespace vorel::formats {
namespace {

std::string error(const std::string& text) { return "\nError: " + text + "\n"; }
std::string lacks_attribute(const std::string& node, const std::string& name) {
  return "XML node \"" + node + "\" must have attribute \"" + name + "\"";
}
std::string lacks_child(const std::string& node, const std::string& name) {
  return "XML node \"" + node + "\" must have a child \"" + name + "\"";
}
TEST(PnmlErrors, OfTheWholeDocument) {
  const std::pair<std::string, std::string> table[] = {
      {" <!-- only this --> ", "XML node \"ROOT\" has no children"},
      {"<net/>", "XML node \"ROOT\" must have a child \"pnml\""},
      {"<pnml>text</pnml>", "XML node \"pnml\" has no children"},
      {"<pnml><page/><net/></pnml>", "XML node \"pnml\" must have a child \"net\""},
      {"<pnml><net/></pnml>", "XML node \"net\" must have attribute \"type\""},
      {"<pnml><net type='low_level_net'/></pnml>", "unexpected net type: low_level_net"},
      {"<pnml>", "syntax error in an XML file: unexpected end of data ()"},
      {"pnml", "syntax error in an XML file: expected < (pnml)"},
      {"<pnml><net></pnml>", "syntax error in an XML file: invalid closing tag name (>)"},
      {support::net_prefix_text + '\0' + "<pnml/>",
       "syntax error in an XML file: zero byte at offset " +
           std::to_string(support::net_prefix_text.size()) + " ()"},
      {"x" + std::string(100000, 'y'),
       "syntax error in an XML file: expected < (x" + std::string(4095, 'y') + "...)"},
  };
  for (const auto& [text, message] : table) {
    const auto result = support::read_document(text);
    EXPECT_EQ(result.input, nullptr);
    EXPECT_EQ(result.messages, error(message));
  }
}

// Each kind of fault once, though most can occur in several elements.
TEST(PnmlErrors, OfThePartsOfADocument) {
  const std::string &net = support::net_prefix_text, &stg = support::stg_prefix_text,
                    &merged = support::net_merged_text;
  const std::string one = "<text>1</text>", depth = "<text>2</text>", cut_off = "<correspondent/>";
  const std::string twice = R"(<signal id="s3" type="input"><name><text>a</text></name></signal>)";
  const std::string value = " of XML node \"signal\" has incorrect value ";
  const std::string number = "positive integer expected: ";
  // Without a message the document is refused silently.
  const struct {
    const std::string& text;
    std::string old_part, new_part, message;
  } faults[] = {
      {net, "id=\"q\"", "", lacks_attribute("place", "id")},
      {net, "id=\"q\"", "id=\"u\"", "Duplicate XML id: \"u\""},
      {net, "<name><text>q</text></name>", "", lacks_child("place", "name")},
      {net, "<text>u</text>", "", lacks_child("name", "text")},
      {net, one, "<text>-1</text>", number + "-1"},
      {net, one, "<text>4294967296</text>", number + "4294967296"},
      {net, "source=\"q\"", "", lacks_attribute("arc", "source")},
      {net, "target=\"u\"", "target=\"c0\"", "XML identifier \"c0\" has not been declared"},
      {net, "target=\"u\"", "target=\"q\"",
       "arc \"q\" --> \"q\" must link a place and a transition"},
      {net, "type=\"low_level_net\"", "type=\"STG\"", ""},
      {net, "type=\"low_level_net\"", "", ""},
      {net, "<page id=\"g\">", "</net><net><page>", ""},
      {stg, "<net type=\"STG\"><page>", "<net type='STG'/></original_net><original_net><net><page>",
       lacks_child("net", "page")},
      {stg, "id=\"s2\"", "id=\"s1\"", "Duplicate XML id: \"s1\""},
      {stg, "type=\"dummy\"", "", lacks_attribute("signal", "type")},
      {stg, "type=\"dummy\"", "type=\"Dummy\"", "attribute \"type\"" + value + "\"Dummy\""},
      {stg, "initialValue=\"0\"", "initialValue=\"2\"",
       "attribute \"initialValue\"" + value + "\"2\""},
      {stg, "<place id=\"p\">", twice + "<place id=\"p\">",
       "signal a is declared more then once (file XML, line 0)"},
      {stg, "<signal ref=\"s2\" sign=\"~\"/>", "", lacks_child("transition", "signal")},
      {stg, "ref=\"s2\"", "ref=\"p\"", "XML identifier \"p\" has not been declared"},
      {stg, "sign=\"~\"", "sign=\"+/1\"", "attribute \"sign\"" + value + "\"+/1\""},
      {stg, "initialValue=\"0\"", "initialValue=\"1\"",
       "the STG is inconsistent, signal a; trace:\na+"},
      {net, "id=\"c1\"", "id=\"e0\"", "Duplicate XML id: \"e0\""},
      {net, "<originalNode ref=\"q\"/>", "", lacks_child("place", "originalNode")},
      {net, "<originalNode ref=\"q\"/>", "<originalNode/>", lacks_attribute("originalNode", "ref")},
      {net, "ref=\"q\"", "ref=\"c0\"", "XML identifier \"c0\" has not been declared"},
      {net, "ref=\"q\"", "ref=\"u\"", "XML identifier \"u\" does not name a place"},
      {net, "ref=\"u\"", "ref=\"q\"", "XML identifier \"q\" does not name a transition"},
      {net, cut_off, "<correspondent ref='e2'/>", "XML identifier \"e2\" has not been declared"},
      {net, cut_off, "<correspondent ref='e0' ref='c0'/>",
       "XML identifier \"c0\" does not name a transition"},
      {net, "target=\"c1\"", "target=\"q\"", "XML identifier \"q\" has not been declared"},
      {net, "target=\"c2\"", "target=\"c1\"", "place \"c1\" has two producers: \"e0\" and \"e1\""},
      {net, "</original_net>\n  <page>", "</original_net>\n  <graphics/></net><net><page>", ""},
      {merged, depth, "", lacks_child("occurrence_depth", "text")},
      {merged, depth, "<text>0</text>", number + "0"},
      {merged, depth, "<text>2147483648</text>", number + "2147483648"},
      {merged, "<text> 1 </text>", depth, "the initial marking is not safe: place(s) c0"},
  };
  for (const auto& fault : faults) {
    const auto result =
        support::read_document(support::with(fault.text, fault.old_part, fault.new_part));
    EXPECT_EQ(result.input, nullptr) << fault.new_part;
    EXPECT_EQ(result.messages, fault.message.empty() ? "" : error(fault.message)) << fault.new_part;
  }
}

TEST(PnmlErrors, WhatTheChecksOfEveryInputRefuseIsRefused) {
  const std::string without_arc =
      support::with(support::net_prefix_text, R"(<arc source="c0" target="e0"/>)", "");
  const auto result = support::read_document(without_arc);
  EXPECT_EQ(result.input, nullptr);
  EXPECT_NE(result.messages.find(error("the net contains 1 transition(s) with empty preset: e0")),
            std::string::npos);
}

TEST(PnmlErrors, ADummyWithAnInitialValueIsWarnedOfWhileReadingAndByTheConsistencyPass) {
  const std::string warning = "\nWarning: dummy signal d has an initial value distinct from '?'\n";
  support::read_as<net::StgPrefix>(support::with(support::stg_prefix_text, "type=\"dummy\"",
                                                 "type=\"dummy\" initialValue=\"1\""),
                                   warning + warning);
}

}  // namespace
}  // namespace vorel::formats
