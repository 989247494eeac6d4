#include "formats/xml_depth.h"

#include <gtest/gtest.h>

#include "support/pnml_text.h"

namespace vorel::formats {
namespace {

std::string nested(std::uint32_t depth, const std::string& innermost) {
  std::string text;
  for (std::uint32_t i = 0; i < depth; ++i) text += "<b>";
  text += innermost;
  for (std::uint32_t i = 0; i < depth; ++i) text += "</b>";
  return text;
}

// What looks like tags and is none, and tags that a glance would overlook.
TEST(XmlDepth, TakesTagsApartAsTheParserDoes) {
  const std::pair<std::string, bool> table[] = {
      {"<a><!-- <b> --></a>", false},
      {"<a><![CDATA[<b>]]></a>", false},
      {"<a><?i <b> ?></a>", false},
      {"<a><!other <b></a>", false},
      {"<!DOCTYPE x [<!ENTITY y '<a><b>'>]><a/>", false},
      {"<a c='<b>' d=\"<b>\"/>", false},
      {"<a\"><b/></a\">", true},
      {"<a 'c'=\"'\"><b/></a>", true},
      {"<a><!--><b>--><b/></a>", true},
      {"\xEF\xBB\xBF<a><b/></a>", true},
      {"<a></a x><b><b>", false},
      {"<a>text</a>text<b><b>", false},
      {"<><b>", false},
  };
  for (const auto& [text, is_deep] : table) {
    EXPECT_EQ(element_below_depth(text, 1) != nullptr, is_deep) << text;
  }
}

TEST(XmlDepth, ADocumentMayNestAThousandLevelsAndNoMore) {
  const std::string other_root = "XML node \"ROOT\" must have a child \"pnml\"\n";
  EXPECT_EQ(support::read_document(nested(1000, "")).messages, "\nError: " + other_root);
  EXPECT_EQ(support::read_document(nested(1000, "<c/>")).messages,
            "\nError: syntax error in an XML file: elements are nested more than 1000 deep (<c/>" +
                nested(1000, "").substr(3000) + ")\n");
  EXPECT_EQ(support::read_document(nested(1000000, "")).input, nullptr);
}

}  // namespace
}  // namespace vorel::formats
