// tests/support/gate_text.h - functions of gates as a GENLIB library has them.
#pragma once

#include <string>
#include <vector>

#include "toolkit/gate_function.h"

namespace vorel::support {

struct GateTextAlgebra {
  const std::vector<std::string>& pins;  // the names to write

  std::string constant(bool value) const { return value ? "CONST1" : "CONST0"; }
  std::string pin(std::uint32_t p) const { return pins[p]; }
  std::string negation(const std::string& a) const { return "!" + a; }
  std::string conjunction(const std::string& a, const std::string& b) const {
    return "(" + a + "*" + b + ")";
  }
  std::string disjunction(const std::string& a, const std::string& b) const {
    return "(" + a + "+" + b + ")";
  }
  std::string exclusive_or(const std::string& a, const std::string& b) const {
    return "(" + a + "^" + b + ")";
  }
};

inline std::string text_of(const toolkit::GateFunction& function,
                           const std::vector<std::string>& pins) {
  return toolkit::value_of<std::string>(function, GateTextAlgebra{pins});
}

}  // namespace vorel::support
