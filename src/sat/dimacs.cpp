#include "sat/dimacs.h"

#include <charconv>
#include <string>

namespace vorel::sat {
namespace {

constexpr std::size_t flush_size = 1 << 16;

void append_number(std::string& text, std::int64_t value) {
  char digits[24];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
  text.append(digits, static_cast<std::size_t>(end - digits));
}

void append_clause(std::string& text, std::span<const Lit> clause) {
  const char* separator = "";
  for (const Lit lit : clause) {
    const std::int64_t number = std::int64_t{static_cast<std::uint32_t>(lit.variable())} + 1;
    text += separator;
    append_number(text, lit.negated() ? -number : number);
    separator = " ";
  }
  text += " 0\n";
}

}  // namespace

void write_dimacs(std::ostream& stream, const SatSolver& solver, std::span<const Lit> units) {
  std::uint64_t clause_count = units.size();
  solver.visit_clauses([&](std::span<const Lit>) { ++clause_count; });
  stream << "p cnf " << solver.num_vars() << ' ' << clause_count << '\n';
  std::string text;
  for (const Lit& unit : units) append_clause(text, {&unit, 1});
  solver.visit_clauses([&](std::span<const Lit> clause) {
    append_clause(text, clause);
    if (text.size() < flush_size) return;
    stream << text;
    text.clear();
  });
  stream << text;
}

}  // namespace vorel::sat
