// tests/support/pnml_text.h - for the tests of the PNML reader.
// Here:      a small document of each sort to vary, reading with the messages caught.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <variant>

#include "formats/pnml_reader.h"
#include "support/legacy_files.h"

namespace vorel::support {

// The text with the only occurrence of `old_part` replaced.
inline std::string with(std::string text, const std::string& old_part,
                        const std::string& new_part) {
  const std::size_t at = text.find(old_part);
  EXPECT_NE(at, std::string::npos) << old_part;
  if (at == std::string::npos) return text;
  EXPECT_EQ(text.find(old_part, at + 1), std::string::npos) << old_part;
  return text.replace(at, old_part.size(), new_part);
}

// p -t-> q -u-> p, with the event of u a cut-off.
inline const std::string net_prefix_text = R"(<?xml version="1.0" encoding="UTF-8"?>
<pnml>
 <net id="N" type="branching_process:low_level_net">
  <original_net>
   <net id="O" type="low_level_net">
    <page id="g">
     <place id="p"><name><text>the p</text></name><initialMarking><text>1</text></initialMarking></place>
     <place id="q"><name><text>q</text></name></place>
     <transition id="t"><name><text>t</text></name></transition>
     <transition id="u"><name><text>u</text></name></transition>
     <arc id="a1" source="p" target="t"/>
     <arc source="t" target="q"/>
     <arc source="q" target="u"/>
     <arc source="u" target="p"/>
    </page>
   </net>
  </original_net>
  <page>
   <place id="c0"><originalNode ref="p"/></place>
   <place id="c1"><originalNode ref="q"/></place>
   <place id="c2"><originalNode ref="p" /></place>
   <transition id="e0"><originalNode ref="t"/></transition>
   <transition id="e1"><originalNode ref="u"/><cut-off><correspondent/></cut-off></transition>
   <arc source="c0" target="e0"/>
   <arc source="e0" target="c1"/>
   <arc source="c1" target="e1"/>
   <arc source="e1" target="c2"/>
  </page>
 </net>
</pnml>
)";

// a+ and then the dummy d.
inline const std::string stg_prefix_text = R"(<pnml><net type="branching_process:STG">
  <original_net><net type="STG"><page>
    <signal id="s1" type="output" initialValue="0"><name><text>a</text></name></signal>
    <signal id="s2" type="dummy"><name><text>d</text></name></signal>
    <place id="p"><name><text>p</text></name><initialMarking><text>1</text></initialMarking></place>
    <place id="q"><name><text>q</text></name></place>
    <place id="r"><name><text>r</text></name></place>
    <transition id="t"><name><text>a+</text></name><signal ref="s1" sign="+"/></transition>
    <transition id="u"><name><text>d</text></name><signal ref="s2" sign="~"/></transition>
    <arc source="p" target="t"/><arc source="t" target="q"/><arc source="q" target="u"/>
    <arc source="u" target="r"/>
  </page></net></original_net>
  <page>
    <place id="c0"><originalNode ref="p"/></place>
    <place id="c1"><originalNode ref="q"/></place>
    <place id="c2"><originalNode ref="r"/></place>
    <transition id="e0"><originalNode ref="t"/></transition>
    <transition id="e1"><originalNode ref="u"/></transition>
    <arc source="c0" target="e0"/><arc source="e0" target="c1"/><arc source="c1" target="e1"/>
    <arc source="e1" target="c2"/>
  </page></net></pnml>
)";

// p -t-> p, folded into two mp-conditions.
inline const std::string net_merged_text = R"(<pnml><net type="merged_process:low_level_net">
  <original_net><net type="low_level_net"><page>
    <place id="p"><name><text>p</text></name><initialMarking><text>1</text></initialMarking></place>
    <transition id="t"><name><text>t</text></name></transition>
    <arc source="p" target="t"/><arc source="t" target="p"/>
  </page></net></original_net>
  <page>
    <place id="c0"><originalNode ref="p"/><occurrence_depth><text>1</text></occurrence_depth>
      <initialMarking><text> 1 </text></initialMarking></place>
    <place id="c1"><originalNode ref="p"/><occurrence_depth><text>2</text></occurrence_depth></place>
    <transition id="e0"><originalNode ref="t"/><cut-off><correspondent ref="nobody"/></cut-off></transition>
    <arc source="c0" target="e0"/><arc source="e0" target="c1"/>
  </page></net></pnml>
)";

template <class Shape>
struct PnmlResult {
  std::unique_ptr<Shape> input;
  std::string messages;
};

template <class Shape = net::FullVariant>
PnmlResult<Shape> read_document(const std::string& text) {
  const CaughtMessages messages;
  auto input = formats::read_pnml_text<Shape>(text);
  return {std::move(input), messages.text()};
}

// The process of a text that has to be of this kind, with no messages but these.
template <net::Process P>
P read_as(const std::string& text, const std::string& messages = "") {
  auto result = read_document(text);
  EXPECT_EQ(result.messages, messages);
  if (result.input == nullptr || !std::holds_alternative<P>(*result.input)) {
    ADD_FAILURE() << "not read as the kind it is of";
    return {};
  }
  return std::get<P>(std::move(*result.input));
}

}  // namespace vorel::support
