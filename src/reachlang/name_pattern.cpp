#include "reachlang/name_pattern.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace vorel {
namespace {

// Library functions recurse over the pattern and over the automaton that it becomes: both are kept
// so small that no stack overflows.
constexpr std::size_t max_size = 2000;

// A bound on the number of states: the length of the pattern times all its counts of repetition.
std::size_t expanded_size(const std::string& pattern) {
  std::size_t size = pattern.size() + 1;
  for (std::size_t open = pattern.find('{'); open != std::string::npos && size <= max_size;
       open = pattern.find('{', open + 1)) {
    std::size_t most = 1;
    const char* at = pattern.data() + open + 1;
    const char* const end = pattern.data() + pattern.size();
    while (at != end && *at != '}') {
      std::size_t count = 0;
      const auto [next, error] = std::from_chars(at, end, count);
      if (error == std::errc::result_out_of_range) return max_size + 1;
      most = std::max(most, count);
      at = error == std::errc{} ? next : at + 1;
    }
    size = most > max_size ? max_size + 1 : size * most;
  }
  return size;
}

}  // namespace

std::optional<NamePattern> NamePattern::compile(const std::string& pattern, std::string& fault) {
  if (expanded_size(pattern) > max_size) {
    fault = "it is too large";
    return {};
  }
  // The extension of the library that matches breadth first, and so without backtracking.
  constexpr auto flags = std::regex::ECMAScript | std::regex_constants::__polynomial;
  try {
    return NamePattern(std::regex(pattern, flags));
  } catch (const std::regex_error& error) {
    fault = error.code() == std::regex_constants::error_complexity
                ? "back-references are not supported"
                : error.what();
  }
  return {};
}

}  // namespace vorel
