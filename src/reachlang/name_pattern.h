// reachlang/name_pattern.h - regular expressions over the names of nodes.
// Here:      compiling a pattern of the standard library's default grammar, matching whole names.
// Not here:  which names are tried (reachlang/node_operators.h).
#pragma once

#include <optional>
#include <regex>
#include <string>

namespace vorel::reachlang {

class NamePattern {
 public:
  // Empty after a pattern that cannot be used; `fault` says why. Matching takes time linear in the
  // name: patterns with back-references, which cannot promise that, are refused, and so are those
  // that would expand to a very large automaton.
  static std::optional<NamePattern> compile(const std::string& pattern, std::string& fault);

  // True if the pattern matches the whole name.
  bool matches(const std::string& name) const { return std::regex_match(name, regex_); }

 private:
  explicit NamePattern(std::regex regex) : regex_{std::move(regex)} {}

  std::regex regex_;
};

}  // namespace vorel::reachlang
