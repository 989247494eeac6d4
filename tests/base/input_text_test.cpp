#include "base/input_text.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <filesystem>
#include <sstream>

#include "support/pnml_text.h"
#include "support/run_program.h"

namespace vorel::base {
namespace {

struct InputText : testing::Test {
  support::TemporaryFolder folder;
};

std::string compressed(const std::string& text, const std::string& file_name) {
  gzFile file = gzopen(file_name.c_str(), "wb");
  gzwrite(file, text.data(), static_cast<unsigned>(text.size()));
  gzclose(file);
  return support::read_text(file_name);
}

std::string messages_of_reading(const std::string& file_name, std::string* text) {
  const support::CaughtMessages messages;
  const bool read = read_whole_file(file_name, *text);
  EXPECT_EQ(read, messages.text().empty());
  return messages.text();
}

TEST_F(InputText, FilesOfAllSizesAreReadWhole) {
  std::string text;
  for (const std::size_t size : {0, 1, 16383, 16384, 16385, 100000}) {
    std::string bytes(size, 'a');
    if (size > 0) bytes.back() = '\0';
    EXPECT_EQ(messages_of_reading(folder.write("plain", bytes), &text), "");
    EXPECT_EQ(text, bytes);
    compressed(bytes, folder.path("x.gz"));
    EXPECT_EQ(messages_of_reading(folder.path("x.gz"), &text), "");
    EXPECT_EQ(text, bytes);
    std::istringstream stream("ab" + bytes);
    stream.ignore(2);
    EXPECT_EQ(read_whole_stream(stream), bytes);
  }
}

TEST_F(InputText, ACompressedFileCutShortIsNotTakenForAShorterText) {
  const std::string bytes = compressed(support::net_prefix_text, folder.path("x.gz"));
  std::string text;
  for (const std::size_t size : {bytes.size() - 1, bytes.size() - 8, bytes.size() / 2}) {
    EXPECT_EQ(messages_of_reading(folder.write("cut.gz", bytes.substr(0, size)), &text),
              "\nError: cannot read \"" + folder.path("cut.gz") + "\": unexpected end of file\n");
  }
}

TEST_F(InputText, ADamagedCompressedFileIsAnError) {
  const std::string bytes = compressed(support::net_prefix_text, folder.path("x.gz"));
  std::string text;
  for (std::size_t at = 10; at < bytes.size(); at += 5) {  // behind the header
    std::string damaged = bytes;
    damaged[at] ^= 0x10;
    EXPECT_TRUE(messages_of_reading(folder.write("damaged.gz", damaged), &text)
                    .starts_with("\nError: cannot read \"" + folder.path("damaged.gz") + "\": "))
        << at;
  }
}

}  // namespace
}  // namespace vorel::base
