#include "sat/literal.h"

namespace vorel::sat {

std::string to_string(Var variable) {
  if (variable == var_uninit) return "UNINIT";
  if (variable == var_constant) return "CONST";
  return std::to_string(static_cast<std::uint32_t>(variable));
}

std::string to_string(Lit literal) {
  if (literal == LitUninit) return "UNINIT";
  if (literal == LitTrue) return "TRUE";
  if (literal == LitFalse) return "FALSE";
  return to_string(literal.variable()) + (literal.negated() ? "'" : "");
}

}  // namespace vorel::sat
