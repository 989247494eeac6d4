// Damaged files of the legacy formats: each is read or refused with one error, in little memory.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <random>

#include "formats/mci_reader.h"
#include "formats/mp_reader.h"
#include "net/sanity_checks.h"
#include "support/legacy_files.h"

namespace vorel {
namespace {

// While it lives, the address space can grow by no more than a few MB: an allocation beyond that
// ends the test. Sanitizers need the address space for themselves.
class MemoryLimit {
 public:
  MemoryLimit() {
#ifndef VOREL_SANITIZED
    getrlimit(RLIMIT_AS, &before_);
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    rlimit limit = before_;
    limit.rlim_cur = pages * 4096 + (std::size_t{8} << 20);
    setrlimit(RLIMIT_AS, &limit);
#endif
  }
  ~MemoryLimit() {
#ifndef VOREL_SANITIZED
    setrlimit(RLIMIT_AS, &before_);
#endif
  }

 private:
  [[maybe_unused]] rlimit before_{};
};

std::size_t occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

template <class P>
void expect_read_or_refused(std::unique_ptr<P> (*reader)(std::istream&, const std::string&),
                            const std::string& bytes) {
  const auto [process, messages] = read_bytes(reader, bytes);
  ASSERT_EQ(occurrences(messages, "\nError: "), process == nullptr ? 1u : 0u) << messages;
  if (process == nullptr) return;
  const CaughtMessages of_checks;
  passes_sanity_checks(*process);
  EXPECT_FALSE(describe(*process).empty());
}

template <class P>
void expect_to_survive(std::unique_ptr<P> (*reader)(std::istream&, const std::string&),
                       const std::string& file, const std::vector<std::string>& replacements) {
  const MemoryLimit limit;
  std::mt19937 random(1);
  for (std::size_t size = 0; size < file.size(); ++size) {
    expect_read_or_refused(reader, file.substr(0, size));
  }
  for (int i = 0; i < 2000; ++i) {
    std::string flipped = file;
    flipped[random() % file.size()] ^= static_cast<char>(1 + random() % 255);
    expect_read_or_refused(reader, flipped);
    const std::string& value = replacements[random() % replacements.size()];
    const std::size_t at = random() % (file.size() / 4) * 4;
    std::string overwritten = file;
    overwritten.replace(at, std::min<std::size_t>(4, file.size() - at), value);
    expect_read_or_refused(reader, overwritten);
  }
}

const std::vector<std::string> huge_words = {
    words({0xFFFFFFFF}), words({0x7FFFFFFF}), words({0x80000000}), words({0x01000000}),
    words({0x00FFFFFF}), words({1000}),       words({0}),          words({13})};
const std::vector<std::string> huge_numbers = {
    " 4294967295 ", " 4294967296 ", " 2147483648 ", " 99999999 ", "1000", "0", "\n1000000 "};

TEST(DamagedLegacyFiles, AnMciFileOfANetIsReadOrRefused) {
  expect_to_survive(read_mci_net, example_bytes("philosophers4.mci"), huge_words);
}

TEST(DamagedLegacyFiles, AnMciFileOfAnStgIsReadOrRefused) {
  expect_to_survive(read_mci_stg, example_bytes("vme_read.mci"), huge_words);
}

TEST(DamagedLegacyFiles, AnMpFileIsReadOrRefused) {
  expect_to_survive(read_mp_net, example_bytes("philosophers4.mp"), huge_numbers);
  expect_to_survive(read_mp_stg, example_bytes("philosophers4.mp"), huge_numbers);
}

}  // namespace
}  // namespace vorel
