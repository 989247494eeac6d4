#include "formats/mci_reader.h"

#include <gtest/gtest.h>

#include "support/legacy_files.h"

namespace vorel::formats {
namespace {

const std::string syntax_error =
    support::deprecation("*.mci") + "\nError: incorrect syntax of FILE\n";
const std::string wrong_format =
    support::deprecation("*.mci") +
    "\nError: \"FILE\" is not in the *.mci format (or not little-endian)\n";

// Every table has entries, consumers come unsorted, the names are not in their order.
const std::string header_and_events = support::words({4, 3, /*transitions*/ 2, 1, 1});
const std::string conditions =
    support::words({1, 0, 3, 1, 0, /**/ 2, 1, 2, 0, /**/ 1, 2, 0, /**/ 2, 3, 0});
const std::string cut_offs = support::words({3, 0, 2, 1, 1, 0xFFFFFFFF, 0});
const std::string skipped = support::words({7, 8, 0, 9, 0, 0});
const std::string counts = support::words({2, 3, 4});
const std::string all_names = support::names({"p10", "p9", "", "back", "go", "idle", ""});
const std::string sound_file =
    header_and_events + conditions + cut_offs + skipped + counts + all_names;

TEST(MciReader, EveryTableOfTheFormatIsRead) {
  const auto [prefix, messages] = support::read_bytes(read_mci_net, sound_file);
  ASSERT_NE(prefix, nullptr);
  EXPECT_EQ(messages, support::deprecation("*.mci"));
  EXPECT_EQ(support::describe(*prefix),
            "place p9 marked 0 <- 0 -> 1\n"
            "place p10 marked 1 <- 1 -> 0\n"
            "transition go <- 1 -> 0\n"
            "transition back <- 0 -> 1\n"
            "transition idle <- ->\n"
            "condition p10 <- -> 0 2\n"
            "condition p9 <- 0 -> 1\n"
            "condition p10 <- 1 ->\n"
            "condition p9 <- 2 ->\n"
            "event go <- 0 -> 1 cut-off of ?\n"
            "event back <- 1 -> 2 cut-off of 0\n"
            "event back <- 0 -> 3 cut-off of\n");
}

TEST(MciReader, ANumberBeyondItsTableIsASyntaxError) {
  const std::uint32_t wrong[][2] = {
      // position in words, value
      {2, 0},  {2, 4},           {2, 0xFFFFFFFF},   // transition of an event
      {5, 0},  {5, 3},           {5, 0xFFFFFFFF},   // place of a condition
      {6, 4},  {6, 0xFFFFFFFF},                     // its producer
      {7, 4},  {7, 0xFFFFFFFF},                     // its consumer
      {20, 4}, {20, 0xFFFFFFFF}, {21, 4},           // cut-off and correspondent
      {33, 1}, {33, 3},          {33, 0xFFFFFFFF},  // number of places
      {34, 1}, {34, 9},          {34, 0xFFFFFFFF},  // number of transitions
      {35, 3},                                      // length of the longest name
  };
  for (const auto& [position, value] : wrong) {
    std::string bytes = sound_file;
    bytes.replace(4 * position, 4, support::words({value}));
    const auto [prefix, messages] = support::read_bytes(read_mci_net, bytes);
    EXPECT_EQ(prefix, nullptr) << position << ' ' << value;
    EXPECT_EQ(messages, syntax_error) << position << ' ' << value;
  }
}

TEST(MciReader, AFileTooShortForItsCountsIsNotOfTheFormat) {
  const std::string empty = support::words({0, 0, 0, 0, 0, 0, 0}) + support::names({"", ""});
  const std::string swapped_counts("\0\0\0\4\0\0\0\3", 8);
  EXPECT_NE(support::read_bytes(read_mci_net, empty).process, nullptr);
  for (const std::string& bytes : {empty.substr(0, 29), swapped_counts + sound_file.substr(8),
                                   support::words({0xFFFFFFFF, 0xFFFFFFFF}) + sound_file,
                                   support::words({0x15555556, 0}) + sound_file,
                                   support::words({0, 0x40000000}) + sound_file}) {
    EXPECT_EQ(support::read_bytes(read_mci_net, bytes).messages, wrong_format);
  }
}

TEST(MciReader, OnlyTheEndMarkerMayBeMissing) {
  const std::size_t least = sound_file.size() - 1;
  EXPECT_NE(support::read_bytes(read_mci_net, sound_file.substr(0, least)).process, nullptr);
  for (std::size_t size = 0; size < least; ++size) {
    const auto [prefix, messages] = support::read_bytes(read_mci_net, sound_file.substr(0, size));
    EXPECT_EQ(prefix, nullptr) << size;
    const bool is_counted_out = size >= 8 && size < 4 * 3 + 12 * 4 + 30;
    EXPECT_EQ(messages, is_counted_out ? wrong_format : syntax_error) << size;
  }
}

}  // namespace
}  // namespace vorel::formats
