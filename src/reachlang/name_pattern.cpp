// A regular expression is run as the set of states that it can be in after each character of a name
// [Thompson-1968], so that time does not depend on how ambiguous it is; an extension of the library
// does this. How large the automaton becomes is estimated before it is made, for neither making nor
// destroying it is safe for all sizes.
#include "reachlang/name_pattern.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace vorel::reachlang {
namespace {

// Library functions recurse over the pattern and over the automaton that it becomes: both are kept
// so small that no stack overflows.
constexpr std::size_t max_size = 2000;

// A bound on the number of states that a pattern becomes: one for each character, as often as the
// counts behind it and behind the groups around it say.
class SizeBound {
 public:
  explicit SizeBound(const std::string& pattern) : pattern_{pattern} {}

  std::size_t run() {
    std::vector<std::size_t> outer;  // the sizes of what stands before each open group
    while (at_ < pattern_.size() && total_ <= max_size) {
      const char c = pattern_[at_];
      if (c == '(') {
        outer.push_back(std::exchange(total_, 0));
        ++at_;
      } else if (c == ')' && !outer.empty()) {
        item_ = std::exchange(total_, outer.back()) + 2;
        total_ += item_;
        outer.pop_back();
        ++at_;
      } else if (c == '{') {
        total_ += item_ * (repetitions() - 1);
      } else {
        skip_character();
        item_ = 1;
        ++total_;
      }
    }
    return std::accumulate(outer.begin(), outer.end(), total_);
  }

 private:
  // An escape or a class of characters counts as one.
  void skip_character() {
    const bool is_class = pattern_[at_] == '[';
    const std::size_t end = is_class ? pattern_.find(']', at_ + 1) : at_;
    if (pattern_[at_] == '\\') ++at_;
    at_ = is_class && end != std::string::npos ? end + 1 : at_ + 1;
  }

  // The largest number between braces, at least 1.
  std::size_t repetitions() {
    std::size_t most = 1;
    for (++at_; at_ < pattern_.size() && pattern_[at_] != '}';) {
      std::size_t count = 0;
      const char* const first = pattern_.data() + at_;
      const auto [next, error] = std::from_chars(first, pattern_.data() + pattern_.size(), count);
      if (error == std::errc::result_out_of_range) count = max_size + 1;
      most = std::max(most, std::min(count, max_size + 1));
      at_ += next == first ? 1 : static_cast<std::size_t>(next - first);
    }
    return most;
  }

  const std::string& pattern_;
  std::size_t at_ = 0, total_ = 0;
  std::size_t item_ = 1;  // the last character or group
};

}  // namespace

std::optional<NamePattern> NamePattern::compile(const std::string& pattern, std::string& fault) {
  if (SizeBound(pattern).run() > max_size || pattern.size() > max_size) {
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

}  // namespace vorel::reachlang
