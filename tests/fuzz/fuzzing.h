// fuzz/fuzzing.h - the fuzz targets, each with any bytes as the input of one reader.
// Here:      the targets, and what they share.
// Not here:  what calls them: a fuzzer (fuzz/main.cpp) or a test (fuzz/tests).
#pragma once

#include <sstream>
#include <stdexcept>
#include <string>

#include "net/sanity_checks.h"
#include "support/caught_messages.h"

namespace vorel::fuzzing {

void fuzz_genlib(const std::string& bytes);
void fuzz_mci(const std::string& bytes);
void fuzz_mp(const std::string& bytes);
void fuzz_nets(const std::string& bytes);
void fuzz_pnml(const std::string& bytes);
void fuzz_verilog(const std::string& bytes);

// Stays in force when assertions are off; a fuzzer has no handler for what is thrown.
inline void require(bool fact) {
  if (!fact) throw std::logic_error("a fuzz target was not content");
}

// What is refused is refused with one error, and nothing else is called one. Names that the input
// brings into messages must not look like errors themselves.
template <class Read>
auto read_or_refuse(const std::string& bytes, const Read& read) {
  const support::CaughtMessages messages;
  auto result = read(bytes);
  const std::string text = messages.text(), error = "\nError: ";
  if (bytes.find(error) != std::string::npos) return result;
  const std::size_t first = text.find(error);
  require((first == std::string::npos) == static_cast<bool>(result) && text.rfind(error) == first);
  return result;
}

// What was written is read back, and written once more gives the same bytes.
template <class Read, class Write>
void try_round_trip(const std::string& bytes, const Read& read, const Write& write) {
  const auto read_from = [&read](const std::string& text) {
    std::istringstream input(text);
    return read(input, "input");
  };
  const auto process = read_or_refuse(bytes, read_from);
  if (process == nullptr) return;
  net::passes_sanity_checks(*process);
  std::ostringstream first, second;
  require(write(*process, first));
  const auto again = read_from(first.str());
  require(again != nullptr && write(*again, second) && first.str() == second.str());
}

}  // namespace vorel::fuzzing
