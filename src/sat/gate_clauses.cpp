#include "sat/gate_clauses.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace vorel::sat {
namespace {

using Pattern = ClausePattern;

constexpr Pattern xor2_forward[] = {{"abO"}, {"ABO"}};
constexpr Pattern xor2_backward[] = {{"Abo"}, {"aBo"}};
constexpr Pattern xor3_forward[] = {{"abcO"}, {"ABcO"}, {"aBCO"}, {"AbCO"}};
constexpr Pattern xor3_backward[] = {{"Abco"}, {"aBco"}, {"ABCo"}, {"abCo"}};
constexpr Pattern maj_forward[] = {{"bcO"}, {"acO"}, {"abO"}};
constexpr Pattern maj_backward[] = {{"BCo"}, {"ACo"}, {"ABo"}};
constexpr Pattern or_xor_forward[] = {{"BCO"}, {"ACO"}, {"abcO"}};
constexpr Pattern or_xor_backward[] = {{"abCo"}, {"Bco"}, {"Aco"}};
constexpr Pattern mux_forward[] = {{"AcO"}, {"abO"}, {"bcO", true}};
constexpr Pattern mux_backward[] = {{"ACo"}, {"aBo"}, {"BCo", true}};
constexpr Pattern less_forward[] = {{"BcO"}, {"acO"}, {"aBO"}};
constexpr Pattern less_backward[] = {{"bCo"}, {"ACo"}, {"Abo"}};
constexpr Pattern and_eq_forward[] = {{"bCO"}, {"BcO"}, {"aO"}};
constexpr Pattern and_eq_backward[] = {{"ABCo"}, {"Abco"}};
constexpr Pattern cmp_xor_forward[] = {{"AbCDO"}, {"BcDO"}, {"acDO"},
                                       {"BCdO"},  {"aCdO"}, {"AbcdO"}};
constexpr Pattern cmp_xor_backward[] = {{"BCDo"},  {"aCDo"}, {"AbcDo"},
                                        {"AbCdo"}, {"Bcdo"}, {"acdo"}};

struct CodedClauses {
  std::uint32_t code;
  GateClauses clauses;
};

constexpr CodedClauses clause_table[] = {
    {gate_code(GateXor, 2), {xor2_forward, xor2_backward}},
    {gate_code(GateXor, 3), {xor3_forward, xor3_backward}},
    {gate_code(GateMaj, 3), {maj_forward, maj_backward}},
    {gate_code(GateOrXor, 3), {or_xor_forward, or_xor_backward}},
    {gate_code(GateMux, 3), {mux_forward, mux_backward}},
    {gate_code(GateLess, 3), {less_forward, less_backward}},
    {gate_code(GateAndEq, 3), {and_eq_forward, and_eq_backward}},
    {gate_code(GateCmpXor, 4), {cmp_xor_forward, cmp_xor_backward}},
};

// Not by type: parities are branched on whatever their size, junctions only with 2 and 4 inputs
// (disjunctions with 2 and 3), all others never.
constexpr auto never_branching = [] {
  std::array<bool, 8 * gate_type_count> table{};
  for (const std::uint32_t code : {27, 31, 36, 39, 43, 44, 47, 51, 59, 67, 75, 83, 92})
    table[code] = true;
  return table;
}();

}  // namespace

GateClauses gate_clauses(std::uint32_t code) {
  const auto* const row = std::ranges::find(clause_table, code, &CodedClauses::code);
  assert(row != std::end(clause_table) && "a gate of a fixed number of inputs in normal form");
  return row->clauses;
}

bool never_branches(std::uint32_t code) {
  assert(code < never_branching.size());
  return never_branching[code];
}

}  // namespace vorel::sat
