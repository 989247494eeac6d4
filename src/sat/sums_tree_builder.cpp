#include "sat/sums_tree_builder.h"

#include <algorithm>
#include <cassert>
#include <iostream>

#include "base/messages.h"
#include "base/run_state.h"

namespace vorel::sat {
namespace {

constexpr int verbosity_of_statistics = 5;

void print_statistics(const SumsTree& tree) {
  if (base::verbosity() < verbosity_of_statistics) return;
  if (tree.children.empty()) {
    base::print_formatted(std::cerr, "\n SUMS set tree is empty");
    return;
  }
  const SumsTreeWeight weight = weight_of(tree);
  base::print_formatted(std::cerr,
                        "\n SUMS set tree: nodes=%u, optimised/non-optimised weight=%u/%u=%.2f\n",
                        weight.nodes, weight.optimised, weight.non_optimised,
                        static_cast<double>(weight.optimised) / std::max(weight.non_optimised, 1u));
}

}  // namespace

SumsTreeBuilder::~SumsTreeBuilder() {
  assert((sets_.empty() || base::run_failed()) && "recorded parities were never defined");
}

Lit SumsTreeBuilder::sums_literal(std::span<const Lit> set) {
  Gate parity(GateXor, set);
  const bool inverted = normalise(parity);
  if (parity.arity() == 0) return LitFalse ^ inverted;
  if (parity.arity() == 1) return parity.inputs()[0] ^ inverted;
  Lits literals(parity.inputs().begin(), parity.inputs().end());
  const auto [entry, is_new] = outputs_.try_emplace(literals);
  if (is_new) {
    entry->second = formula_.promise_output(parity.code());
    sets_.push_back({std::move(literals), entry->second});
  }
  return entry->second ^ inverted;
}

void SumsTreeBuilder::emit(const SumsTree& node, Lit parent, ClauseGroup group) {
  Lits inputs = node.literals;
  if (!parent.is_constant()) inputs.push_back(parent);
  Lit sum;
  if (node.outputs.empty()) {
    sum = formula_.make_gate(Gate(GateXor, inputs), group);
  } else {
    sum = node.outputs.front();
    formula_.define_output(sum, Gate(GateXor, inputs), group);
  }
  for (std::size_t i = 1; i < node.outputs.size(); ++i)
    formula_.define_output(node.outputs[i], Gate(GateBuf, {sum}), group);
  for (const SumsTree& child : node.children) emit(child, sum, group);
}

void SumsTreeBuilder::sums_emit(ClauseGroup group) {
  const SumsTree tree = build_sums_tree(std::move(sets_));
  sets_.clear();
  outputs_.clear();
  print_statistics(tree);
  emit(tree, LitFalse, group);
}

}  // namespace vorel::sat
