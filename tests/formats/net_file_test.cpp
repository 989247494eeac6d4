#include "formats/net_file.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "formats/net_reading.h"
#include "support/run_program.h"

namespace vorel::formats {
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
  const support::TemporaryFolder folder;
  const std::string text = "PL\n\"p\"M1\nTR\n\"t\"\nPT\n1>1\n";
  const std::string plain = folder.write("x.ll_net", text), compressed = folder.path("x.ll_net.gz");
  const gzFile file = gzopen(compressed.c_str(), "wb");
  ASSERT_EQ(gzwrite(file, text.data(), static_cast<unsigned>(text.size())), int(text.size()));
  ASSERT_EQ(gzclose(file), Z_OK);
  const std::string bad = folder.write("bad.g", "x");
  const support::CaughtMessages messages;
  for (const std::string& name : {plain, compressed}) {
    const auto net = read_net_file(name, NetFormat::ll_net);
    ASSERT_TRUE(net) << name;
    EXPECT_EQ(describe_net(std::get<net::Net>(*net)), "marked p; t: p ->");
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

}  // namespace
}  // namespace vorel::formats
