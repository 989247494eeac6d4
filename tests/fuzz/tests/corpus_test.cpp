// Every fuzz target with its seeds, and with seeds that are cut short or have bytes changed.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <vector>

#include "fuzz/fuzzing.h"
#include "support/run_program.h"

namespace vorel::fuzzing {
namespace {

TEST(Corpus, DamagedInputsAreReadOrRefused) {
  const std::pair<std::string, void (*)(const std::string&)> targets[] = {
      {"genlib", fuzz_genlib}, {"mci", fuzz_mci},   {"mp", fuzz_mp},
      {"nets", fuzz_nets},     {"pnml", fuzz_pnml}, {"verilog", fuzz_verilog}};
  for (const auto& [name, target] : targets) {
    std::vector<std::string> seeds;
    for (const auto& file : std::filesystem::directory_iterator(VOREL_CORPUS "/" + name)) {
      seeds.push_back(support::read_text(file.path()));
    }
    ASSERT_FALSE(seeds.empty()) << name;
    std::ranges::sort(seeds);
    std::mt19937 random(1);
    const support::CaughtMessages ignored;
    for (const std::string& seed : seeds) {
      EXPECT_NO_THROW(target(seed)) << name << ": " << testing::PrintToString(seed);
      for (std::size_t i = 0; i < 500 && !seed.empty(); ++i) {
        std::string bytes = seed;
        bytes[random() % bytes.size()] ^= static_cast<char>(1 + random() % 255);
        if (i % 4 == 0) bytes.resize(random() % bytes.size());
        EXPECT_NO_THROW(target(bytes)) << name << ": " << testing::PrintToString(bytes);
      }
    }
  }
}

}  // namespace
}  // namespace vorel::fuzzing
