// tests/tools/command_testing.h - for the tests of programs that answer about STGs.
// Here:      a folder to run them in, JSON documents against their schema, STGs by hand.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "support/json_schema.h"
#include "support/run_program.h"

namespace vorel::tools {

using Arguments = std::vector<std::string>;

inline const std::string follower =
    ".inputs a\n.outputs z\n.graph\na+ z+\nz+ a-\na- z-\nz- a+\n.marking { <z-,a+> }\n.end\n";

inline const std::string unsafe =
    ".inputs a b\n.outputs z\n.graph\na+ q\nb+ q\nq z+\nz+ z-\nz- s\np a+\nr b+\n"
    ".marking {p r}\n.end\n";

class CommandTest : public testing::Test {
 protected:
  CommandTest(std::string program, const char* schema)
      : program_{std::move(program)}, schema_(support::Json::parse(support::read_text(schema))) {}

  // The program itself, in the folder.
  support::ProgramRun call(Arguments arguments, const std::string& input = "") const {
    arguments.insert(arguments.begin(), program_);
    return support::run_program(arguments, {.input = input, .directory = folder_.path()});
  }

  void write(const std::string& name, const std::string& text) const { folder_.write(name, text); }
  std::string file(const std::string& name) const { return support::read_text(folder_.path(name)); }
  bool exists(const std::string& name) const { return std::filesystem::exists(folder_.path(name)); }

  support::Json checked_document(const std::string& text) const {
    const auto document = support::Json::parse(text);
    EXPECT_EQ(support::schema_fault(document, schema_), "");
    return document;
  }

  const support::TemporaryFolder folder_;

 private:
  const std::string program_;
  const support::Json schema_;
};

}  // namespace vorel::tools
