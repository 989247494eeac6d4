#include <gtest/gtest.h>

#include "formats/net_reading.h"

namespace vorel::formats {
namespace {

NetReading read_pnml_net(const std::string& text) { return read_text(text, NetFormat::pnml); }

// The net stands on line 2, what is inside it starts on line 3.
std::string document(const std::string& inside, const std::string& type = "ptnet") {
  return "<?xml version=\"1.0\"?>\n<pnml><net id=\"n\" type=\"http://host/" + type + "\">\n" +
         inside + "</net></pnml>\n";
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

const std::string nodes =
    "<place id='p'><name><text>p</text></name><initialMarking><text> 1\n</text></initialMarking>"
    "</place>\n<transition id='t'/>";
const std::string arc_from_place = "<arc id='a' source='p' target='t'>";

TEST(PnmlNetReader, TakesAllFormsOfNets) {
  const std::vector<ReadingRow> rows = {
      {"pages, names, things to ignore",
       document("<name><text>net</text></name><page id='g'><toolspecific tool='x' version='1'>"
                "<place id='no'/></toolspecific><page id='h'>" +
                nodes + "</page>" + arc_from_place +
                "<inscription><graphics/><text>1</text></inscription></arc>"
                "<place id='q'><name><graphics/><text>a &lt;\n  b <![CDATA[& c]]></text></name>"
                "</place></page><arc id='b' source='t' target='q'><type value='normal'/></arc>"),
       "marked p; t: p -> a < b & c", ""},
      {"references through references, in any order",
       document(
           "<page id='g'><referencePlace id='r2' ref='r1'/><arc id='a' source='r2' target='u'/>"
           "</page><page id='h'><referencePlace id='r1' ref='p'/><referenceTransition id='u' "
           "ref='t'/>" +
           nodes + "</page>"),
       "marked p; t: p ->", ""},
      {"prefixes of a namespace",
       "<x:pnml xmlns:x='y'><x:net id='n' type='PTNet'><x:place id='p'><x:initialMarking><x:text>"
       "01</x:text></x:initialMarking></x:place></x:net></x:pnml>",
       "marked p", ""},
      {"names that occurred before",
       document(
           "<place id='p'/><place id='q'><name><text>p</text></name></place><transition id='t'>"
           "<name><text>p</text></name></transition>\n<transition id='u'><name><text>p</text>"
           "</name></transition>"),
       "marked; p: ->; p_u: ->",
       "Warning: node 'p_q' is renamed with its id, as its name occurred before, the first of 2 "
       "such cases " +
           at(3, 16)},
      {"several nets", "<pnml><net id='a' type='ptnet'/>\n<net id='b' type='?'/></pnml>", "marked",
       "Warning: only the first net of the document is read " + at(2, 1)},
      {"900 pages in each other",
       document(repeated("<page>", 900) + nodes + repeated("</page>", 900)), "marked p; t: ->", ""},
  };
  expect_readings(rows, NetFormat::pnml);
}

TEST(PnmlNetReader, AFaultIsReportedWithItsPlaceAndId) {
  const std::string weight = ", but the net of a safe system has arcs of weight 1 ";
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"", "syntax error " + at(1, 1) + ": expected the element pnml, found the end of the file"},
      {"\n<net/>", "syntax error " + at(2, 1) + ": expected the element pnml, found 'net'"},
      {"<pnml>\n</pnm>", "syntax error " + at(2, 6) + ": invalid closing tag name, found '>'"},
      {"<pnml/>", "the element pnml has no net " + at(1, 1)},
      {"<pnml><net id='n'/></pnml>", "net \"n\" has no type " + at(1, 7)},
      {document("", "symmetricnet"),
       "net \"n\" has the type \"http://host/symmetricnet\", but only "
       "place/transition nets can be read " +
           at(2, 7)},
      {document("\n<place/>"), "place has no id " + at(4, 1)},
      {document(nodes + "<transition id='p'/>"),
       "transition \"p\" has an id that occurred before " + at(5, 21)},
      {document("<place id='a\tb'/>"), "place \"a\\x09b\" has an unprintable id " + at(3, 1)},
      {document("<place id='p'><name><text>\x7F</text></name></place>"),
       "place \"p\" has an unprintable name " + at(3, 1)},
      {document("<place id='p'><initialMarking><text>2</text></initialMarking></place>"),
       "the net is not safe, place p has 2 tokens in the initial marking " + at(3, 1)},
      {document("<place id='p'><initialMarking><text>-1</text></initialMarking></place>"),
       "place \"p\" has the initial marking \"-1\", which is not a number " + at(3, 1)},
      {document(nodes + arc_from_place + "<inscription><text>2</text></inscription></arc>"),
       "arc \"a\" has the inscription \"2\"" + weight + at(5, 21)},
      {document(nodes + arc_from_place + "</arc><arc id='b' source='p' target='t'/>"),
       "arc \"b\" runs between the same nodes as another arc" + weight + at(5, 61)},
      {document(nodes + arc_from_place + "<type value='inhibitor'/></arc>"),
       "arc \"a\" has the type \"inhibitor\", but only normal arcs can be read " + at(5, 21)},
      {document(nodes + "<arc id='a' source='p' target='p'/>"),
       "arc \"a\" joins two places \"p\" and \"p\" " + at(5, 21)},
      {document(nodes + "<arc id='a' source='p' target='x'/>"),
       "arc \"a\" names \"x\", which is no node of the net " + at(5, 21)},
      {document(nodes + "<arc id='a' source='p'/>"),
       "arc \"a\" has no attribute \"target\" " + at(5, 21)},
      {document("<referencePlace id='r' ref='s'/>\n<referencePlace id='s' ref='r'/>"),
       "referencePlace \"r\" refers to itself " + at(3, 1)},
      {document(nodes + "<referencePlace id='r' ref='t'/>"),
       "referencePlace \"r\" names \"t\", which is a node of the other sort " + at(5, 21)},
      {document("<referencePlace id='r' ref='x'/>"),
       "referencePlace \"r\" names \"x\", which is no node of the net " + at(3, 1)},
      {document("<a>") + '\0',
       "syntax error " + at(4, 1) + ": zero byte at offset 83, found '\\x00'"},
  };
  expect_faults(rows, NetFormat::pnml);
}

TEST(PnmlNetReader, DeepPagesAreRefused) {
  const NetReading reading = read_pnml_net(document(repeated("<page id='g'>", 5000)));
  EXPECT_FALSE(reading.net);
  EXPECT_EQ(reading.messages.find("Error: syntax error " + at(3, 1 + 998 * 13) +
                                  ": elements are nested more than 1000 deep, found '<page"),
            0u)
      << reading.messages;
}

TEST(PnmlNetReader, ALongChainOfReferencesIsFollowedOnce) {
  std::string chain = nodes;
  for (int i = 0; i < 100'000; ++i) {
    chain += "<referencePlace id='r" + std::to_string(i) + "' ref='" +
             (i == 0 ? "p" : "r" + std::to_string(i - 1)) + "'/>";
  }
  chain += "<arc id='a' source='r99999' target='t'/>";
  EXPECT_EQ(read_pnml_net(document(chain)).description(), "marked p; t: p ->");
}

}  // namespace
}  // namespace vorel::formats
