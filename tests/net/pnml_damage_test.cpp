// Damaged PNML documents: each is read or refused, whatever is cut off or changed.
#include <gtest/gtest.h>

#include <random>

#include "support/pnml_text.h"

namespace vorel {
namespace {

void expect_read_or_refused(const std::string& text) {
  const auto result = read_text(text);
  if (result.input == nullptr) return;
  EXPECT_FALSE(
      std::visit([](const auto& process) { return statistics(process); }, *result.input).empty());
}

TEST(DamagedPnml, ADocumentCutShortIsRefusedWithAnError) {
  for (const std::string& text : {net_prefix_text, stg_prefix_text, net_merged_text}) {
    const std::size_t end = text.rfind('>');
    for (std::size_t size = 0; size <= end; ++size) {
      const auto result = read_text(text.substr(0, size));
      EXPECT_EQ(result.input, nullptr);
      EXPECT_TRUE(result.messages.starts_with("\nError: ")) << size;
    }
  }
}

TEST(DamagedPnml, ChangedBytesAreSurvived) {
  std::mt19937 random(1);
  for (const std::string& text : {net_prefix_text, stg_prefix_text, net_merged_text}) {
    for (int i = 0; i < 2000; ++i) {
      std::string changed = text;
      changed[random() % text.size()] ^= static_cast<char>(1 + random() % 255);
      expect_read_or_refused(changed);
    }
  }
}

// Pieces of valid documents put together anew reach further than changed bytes do.
TEST(DamagedPnml, ExchangedTagsAreSurvived) {
  std::mt19937 random(2);
  for (const std::string& text : {net_prefix_text, stg_prefix_text, net_merged_text}) {
    std::vector<std::string> tags;
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t next = std::min(text.find('<', at + 1), text.size());
      tags.push_back(text.substr(at, next - at));
      at = next;
    }
    for (int i = 0; i < 500; ++i) {
      auto changed = tags;
      std::swap(changed[random() % tags.size()], changed[random() % tags.size()]);
      changed[random() % tags.size()] = tags[random() % tags.size()];
      std::string whole;
      for (const std::string& tag : changed) whole += tag;
      expect_read_or_refused(whole);
    }
  }
}

}  // namespace
}  // namespace vorel
