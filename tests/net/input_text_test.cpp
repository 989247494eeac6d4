#include "base/input_text.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/pnml_text.h"

namespace vorel {
namespace {

// A folder that goes with the test.
class InputText : public testing::Test {
 protected:
  InputText() { std::filesystem::create_directory(folder_); }
  ~InputText() override { std::filesystem::remove_all(folder_); }

  std::string write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name), std::ios::binary) << bytes;
    return path(name);
  }
  std::string path(const std::string& name) const { return (folder_ / name).string(); }

  const std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() / ("vorel_input_text_" + std::to_string(getpid()));
};

std::string compressed(const std::string& text, const std::string& file_name) {
  gzFile file = gzopen(file_name.c_str(), "wb");
  gzwrite(file, text.data(), static_cast<unsigned>(text.size()));
  gzclose(file);
  std::ifstream stream(file_name, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string messages_of_reading(const std::string& file_name, std::string* text) {
  const CaughtMessages messages;
  const bool read = read_whole_file(file_name, *text);
  EXPECT_EQ(read, messages.text().empty());
  return messages.text();
}

TEST_F(InputText, FilesOfAllSizesAreReadWhole) {
  std::string text;
  for (const std::size_t size : {0, 1, 16383, 16384, 16385, 100000}) {
    std::string bytes(size, 'a');
    if (size > 0) bytes.back() = '\0';
    EXPECT_EQ(messages_of_reading(write("plain", bytes), &text), "");
    EXPECT_EQ(text, bytes);
    compressed(bytes, path("x.gz"));
    EXPECT_EQ(messages_of_reading(path("x.gz"), &text), "");
    EXPECT_EQ(text, bytes);
    std::istringstream stream("ab" + bytes);
    stream.ignore(2);
    EXPECT_EQ(read_whole_stream(stream), bytes);
  }
}

TEST_F(InputText, WhatCannotBeOpenedIsAnError) {
  std::string text;
  for (const std::string name : {"missing", "missing.pnml.gz", "folder", "folder.gz"}) {
    if (name.starts_with("folder")) std::filesystem::create_directory(path(name));
    EXPECT_EQ(messages_of_reading(path(name), &text),
              "\nError: cannot open \"" + path(name) + "\" for input\n");
  }
}

TEST_F(InputText, ACompressedFileCutShortIsNotTakenForAShorterText) {
  const std::string bytes = compressed(net_prefix_text, path("x.gz"));
  std::string text;
  for (const std::size_t size : {bytes.size() - 1, bytes.size() - 8, bytes.size() / 2}) {
    EXPECT_EQ(messages_of_reading(write("cut.gz", bytes.substr(0, size)), &text),
              "\nError: cannot read \"" + path("cut.gz") + "\": unexpected end of file\n");
  }
}

TEST_F(InputText, ADamagedCompressedFileIsAnError) {
  const std::string bytes = compressed(net_prefix_text, path("x.gz"));
  std::string text;
  for (std::size_t at = 10; at < bytes.size(); at += 5) {  // behind the header
    std::string damaged = bytes;
    damaged[at] ^= 0x10;
    EXPECT_TRUE(messages_of_reading(write("damaged.gz", damaged), &text)
                    .starts_with("\nError: cannot read \"" + path("damaged.gz") + "\": "))
        << at;
  }
}

TEST_F(InputText, ACompressedDocumentIsReadAsThePlainOneIs) {
  compressed(net_prefix_text, path("x.pnml.gz"));
  for (const std::string& name : {path("x.pnml.gz"), write("x.pnml", net_prefix_text)}) {
    const auto result = read_file(name);
    ASSERT_NE(result.input, nullptr) << result.messages;
    EXPECT_EQ(describe(std::get<NetPrefix>(*result.input)),
              describe(read_as<NetPrefix>(net_prefix_text)));
  }
}

}  // namespace
}  // namespace vorel
