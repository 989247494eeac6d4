#include "formats/net_file.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

#include "support/run_program.h"
#include "tools/net_reading.h"

namespace vorel {
namespace {

TEST(NetFile, TheFormatIsToldByTheEnding) {
  EXPECT_EQ(net_format_of("a.b/x.g"), NetFormat::g);
  EXPECT_EQ(net_format_of("x.ll_net.gz"), NetFormat::ll_net);
  EXPECT_EQ(net_format_of("x.pnml"), NetFormat::pnml);
  EXPECT_EQ(net_format_of("x.G"), std::nullopt);
  EXPECT_EQ(net_format_of("x.gz"), std::nullopt);
  EXPECT_EQ(net_format_of("g"), std::nullopt);
}

TEST(NetFile, AFileIsReadWithItsNameInMessagesCompressedOrNot) {
  const TemporaryFolder folder;
  const std::string text = "PL\n\"p\"M1\nTR\n\"t\"\nPT\n1>1\n";
  const std::string plain = folder.write("x.ll_net", text), compressed = folder.path("x.ll_net.gz");
  const gzFile file = gzopen(compressed.c_str(), "wb");
  ASSERT_EQ(gzwrite(file, text.data(), static_cast<unsigned>(text.size())), int(text.size()));
  ASSERT_EQ(gzclose(file), Z_OK);
  const std::string bad = folder.write("bad.g", "x");
  const CaughtMessages messages;
  for (const std::string& name : {plain, compressed}) {
    const auto net = read_net_file(name, NetFormat::ll_net);
    ASSERT_TRUE(net) << name;
    EXPECT_EQ(describe_net(std::get<Net>(*net)), "marked p; t: p ->");
  }
  EXPECT_EQ(messages.text(), "");
  EXPECT_FALSE(read_net_file(bad, NetFormat::g));
  EXPECT_FALSE(read_net_file(folder.path("none"), NetFormat::g));
  EXPECT_EQ(messages.text(), "\nError: syntax error (file " + bad +
                                 ", line 1, column 1): expected a line that starts with '.', found "
                                 "'x'\n\nError: cannot open \"" +
                                 folder.path("none") + "\" for input\n");
}

TEST(NetFile, NamesMayBeLongButMessagesAreNot) {
  const std::string name(10'000, 'n');
  const std::string declared =
      read_text(".inputs " + name + "\n.graph\np " + name + "+\n.marking {p}\n.end\n", NetFormat::g)
          .description();
  EXPECT_EQ(declared.size(), 3 * name.size() + std::string("i.=? marked p; + = +: p ->").size());
  EXPECT_EQ(read_text(".graph\n" + name + "+\n", NetFormat::g).messages,
            "Error: the signal of '" + name.substr(0, 60) + "...' is not declared " + at(2, 1));
}

const std::string pnml_net = R"(<pnml><net id="n" type="ptnet"><page id="g">
<place id="p&#49;"><name><text>x</text></name><initialMarking><text>1</text></initialMarking></place>
<referencePlace id="r" ref="p1"/><transition id="t"/>
<arc id="a" source="r" target="t"><inscription><text>1</text></inscription></arc>
</page></net></pnml>)";

// Whatever the bytes are, there is a net or one error, and the net is sound: each arc is known at
// both of its ends.
void expect_net_or_error(const std::string& text, NetFormat format) {
  const NetReading reading = read_text(text, format);
  const bool has_error = reading.messages.find("Error: ") != std::string::npos;
  ASSERT_EQ(has_error, !reading.net) << text << reading.messages;
  if (!reading.net) return;
  std::visit(
      [](const auto& net) {
        std::size_t outputs = 0, inputs = 0;
        for (const auto& place : net.places) {
          EXPECT_LE(place->initial_marking, 1u);
          outputs += place->preset.size();
          inputs += place->postset.size();
        }
        for (const auto& transition : net.transitions) {
          outputs -= transition->postset.size();
          inputs -= transition->preset.size();
        }
        EXPECT_TRUE(outputs == 0 && inputs == 0);
      },
      *reading.net);
}

TEST(NetFile, DamagedTextsAreReadOrRefused) {
  const std::pair<NetFormat, std::string> texts[] = {
      {NetFormat::g,
       ".inputs a\n.outputs b\n.initial.state !a b\n.graph\na+ <a+,b-> b-/1 \\\n p\n"
       "p b-/1 # x\n<a+,b-> b-/1\nb-/1 a+\n.marking { <b-/1,a+> p=1 }\n.end\n"},
      {NetFormat::ll_net, example_bytes("key_3.ll_net").substr(0, 400) +
                              "\nTR\n\"t\"5@5b\"x\"\nTP\n1<2w1\nPT\n1>1v4\nTX\n"},
      {NetFormat::pnml, pnml_net},
  };
  std::mt19937 random(1);
  for (const auto& [format, text] : texts) {
    ASSERT_TRUE(read_text(text, format).net) << read_text(text, format).messages;
    for (std::size_t size = 0; size < text.size(); ++size) {
      expect_net_or_error(text.substr(0, size), format);
    }
    for (int i = 0; i < 3000; ++i) {
      std::string flipped = text;
      for (std::size_t n = 1 + random() % 3; n > 0; --n) {
        flipped[random() % text.size()] =
            random() % 2 == 0 ? text[random() % text.size()] : static_cast<char>(random());
      }
      expect_net_or_error(flipped, format);
    }
  }
}

}  // namespace
}  // namespace vorel
