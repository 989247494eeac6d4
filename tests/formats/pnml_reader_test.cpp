#include "formats/pnml_reader.h"

#include <gtest/gtest.h>

#include "base/run_state.h"
#include "support/pnml_text.h"

namespace vorel::formats {
namespace {

TEST(PnmlReader, ReadsAPrefixOfANet) {
  EXPECT_EQ(support::describe(support::read_as<net::NetPrefix>(support::net_prefix_text)),
            "place q marked 0 <- 0 -> 1\n"
            "place the p marked 1 <- 1 -> 0\n"
            "transition t <- 1 -> 0\n"
            "transition u <- 0 -> 1\n"
            "condition the p <- -> 0\n"
            "condition q <- 0 -> 1\n"
            "condition the p <- 1 ->\n"
            "event t <- 0 -> 1\n"
            "event u <- 1 -> 2 cut-off of\n");
}

TEST(PnmlReader, ReadsAPrefixOfAnStg) {
  EXPECT_EQ(support::describe(support::read_as<net::StgPrefix>(support::stg_prefix_text)),
            "place p marked 1 <- -> 1\n"
            "place q marked 0 <- 1 -> 0\n"
            "place r marked 0 <- 0 ->\n"
            "transition d = d kind 3 from 2 sign 2 <- 1 -> 2\n"
            "transition a+ = a kind 1 from 0 sign 0 <- 0 -> 1\n"
            "condition p <- -> 0\n"
            "condition q <- 0 -> 1\n"
            "condition r <- 1 ->\n"
            "event a+ <- 0 -> 1\n"
            "event d <- 1 -> 2\n");
}

TEST(PnmlReader, AShapeTakesItsOwnKindsOnly) {
  const std::string types[] = {"branching_process:low_level_net",
                               "branching_process:STG",
                               "merged_process:low_level_net",
                               "merged_process:STG",
                               "low_level_net",
                               ""};
  // "x": unexpected; what is expected fails later on, silently, as the net is empty.
  const auto answers = [&types]<class Shape>(std::type_identity<Shape>) {
    std::string marks;
    for (const std::string& type : types) {
      const auto result = support::read_document<Shape>("<pnml><net type='" + type + "'/></pnml>");
      EXPECT_EQ(result.input, nullptr);
      const bool unexpected = result.messages == "\nError: unexpected net type: " + type + "\n";
      EXPECT_TRUE(unexpected || result.messages.empty()) << result.messages;
      marks += unexpected ? 'x' : '.';
    }
    return marks;
  };
  EXPECT_EQ(answers(std::type_identity<net::FullVariant>()), "....xx");
  EXPECT_EQ(answers(std::type_identity<net::NoStgMergedVariant>()), "...xxx");
  EXPECT_EQ(answers(std::type_identity<net::StgPrefixVariant>()), "x.xxxx");
}

TEST(PnmlReader, TheCorrespondentsOfACutOffAreTakenInDocumentOrder) {
  const std::string written = "<cut-off><correspondent/></cut-off>";
  const std::pair<std::string, std::string> table[] = {
      {"", ""},
      {"<cut-off/>", " cut-off of ?"},
      {"<cut-off><other ref='e0'/></cut-off>", " cut-off of ?"},
      {"<cut-off><correspondent/></cut-off>", " cut-off of"},
      {"<cut-off><correspondent ref='e0'/></cut-off>", " cut-off of 0"},
      {"<cut-off><correspondent ref='e1' id='c' ref='e0'/></cut-off>", " cut-off of 1 0"},
  };
  for (const auto& [text, cut_off] : table) {
    const std::string description = support::describe(
        support::read_as<net::NetPrefix>(support::with(support::net_prefix_text, written, text)));
    EXPECT_TRUE(description.ends_with("event u <- 1 -> 2" + cut_off + "\n")) << description;
  }
}

TEST(PnmlReader, ARepeatedArcIsSkippedWithAWarningPerRepetition) {
  const std::string repeated = support::with(
      support::with(
          support::net_prefix_text, R"(<arc source="c0" target="e0"/>)",
          R"(<arc source="c0" target="e0"/><arc source="e1" target="c2"/><arc source="c0" target="e0"/>)"),
      R"(<arc source="q" target="u"/>)",
      R"(<arc source="q" target="u"/><arc source="q" target="u"/><arc source="q" target="u"/>)");
  EXPECT_EQ(support::describe(
                support::read_as<net::NetPrefix>(repeated,
                                                 "\nWarning: ignoring duplicate arc: q --> u\n"
                                                 "\nWarning: ignoring duplicate arc: q --> u\n"
                                                 "\nWarning: ignoring duplicate arc: c0 --> e0\n"
                                                 "\nWarning: ignoring duplicate arc: e1 --> c2\n")),
            support::describe(support::read_as<net::NetPrefix>(support::net_prefix_text)));
}

TEST(PnmlReader, NamesAreTakenAsTheyAre) {
  const std::string long_name(10000, 'n');
  const std::pair<std::string, std::string> table[] = {
      {"a b  c", "a b  c"},
      {" a\tb ", " a\tb "},
      {"\"a' ", "\"a' "},
      {"&lt;a,b&gt; &amp; &quot;&#65;&#xe9;", "<a,b> & \"A\xC3\xA9"},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x90\xA7", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x90\xA7"},
      {"<![CDATA[<a> & b]]>", "<a> & b"},
      {"a<!-- not -->b<?nor this?><![CDATA[c]]>d", "abcd"},
      {"", ""},
      {long_name, long_name},
  };
  for (const auto& [text, name] : table) {
    const auto process =
        support::read_as<net::NetPrefix>(support::with(support::net_prefix_text, "the p", text));
    ASSERT_EQ(process.conditions.size(), 3u);
    EXPECT_EQ(process.conditions[0]->place->name, name);
  }
}

TEST(PnmlReader, ANumberIsWhatTheTextStartsWith) {
  const std::string written = "<text> 1 </text></initialMarking></place>\n    <place id=\"c1\">";
  const auto marking_of = [&written](const std::string& text) {
    const auto process = support::read_as<net::NetMergedProcess>(
        support::with(support::net_merged_text, written,
                      "<text>" + text + "</text></initialMarking></place><place id=\"c1\">"));
    return process.conditions.at(0)->initial_marking;
  };
  EXPECT_EQ(marking_of("x"), 0u);
  EXPECT_EQ(marking_of(""), 0u);
  EXPECT_EQ(marking_of("\n 01 tokens"), 1u);
}

TEST(PnmlReader, WhatTheFormatDoesNotNameIsIgnored) {
  const std::string extended = support::with(
      support::with(support::net_prefix_text, "<pnml>",
                    "<!DOCTYPE pnml [<!ELEMENT pnml ANY>]><pnml note='>'>x"),
      R"(<place id="c1">)", R"(<graphics><place/></graphics>text<place colour="red" id="c1">)");
  EXPECT_EQ(support::describe(support::read_as<net::NetPrefix>(extended)),
            support::describe(support::read_as<net::NetPrefix>(support::net_prefix_text)));
}

TEST(PnmlReader, TheTokensOfTheNetAreThoseOfTheProcess) {
  const std::string unmarked = support::with(support::net_prefix_text,
                                             "<initialMarking><text>1</text></initialMarking>", "");
  EXPECT_EQ(support::describe(support::read_as<net::NetPrefix>(unmarked)),
            support::describe(support::read_as<net::NetPrefix>(support::net_prefix_text)));
}

TEST(PnmlReader, ASilentFailureIsExplainedToThoseWhoAskForDiagnostics) {
  const std::string without_net = "<pnml><net type='branching_process:STG'><page/></net></pnml>";
  EXPECT_EQ(support::read_document(without_net).messages, "");
  base::run_state().verbosity = 1;
  EXPECT_EQ(support::read_document(without_net).messages,
            "\nthe input is not read: it has no original net\n");
  base::run_state().verbosity = 0;
}

}  // namespace
}  // namespace vorel::formats
