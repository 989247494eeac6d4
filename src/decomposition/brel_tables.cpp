#include "decomposition/brel_tables.h"

#include <algorithm>
#include <bit>
#include <cassert>

namespace vorel::decomposition {
namespace {

using bdd::Bdd;

constexpr std::size_t word_points = 64;

// Sets the points from the first one on where f, of the variables from the first one on, is true.
// The last variable is the least significant digit.
void add_points(const Bdd& f, std::span<const Bdd> variables, std::size_t first_point,
                std::uint64_t* table) {
  const std::size_t half = (std::size_t{1} << variables.size()) / 2;
  if (f.is_false()) return;
  if (variables.empty()) {
    assert(f.is_true());
    table[first_point / word_points] |= std::uint64_t{1} << first_point % word_points;
    return;
  }
  const std::span<const Bdd> others = variables.subspan(1);
  const bool is_used = !f.is_true();
  add_points(is_used ? cofactor(f, ~variables[0]) : f, others, first_point, table);
  add_points(is_used ? cofactor(f, variables[0]) : f, others, first_point + half, table);
}

// The same for each vector of values of outputs, which has words of its own.
void add_values(const Bdd& f, std::span<const Bdd> outputs, std::span<const Bdd> inputs,
                std::size_t words, std::uint64_t* table) {
  if (outputs.empty()) return add_points(f, inputs, 0, table);
  const std::span<const Bdd> others = outputs.subspan(1);
  const std::size_t half = words << others.size();
  add_values(cofactor(f, ~outputs[0]), others, inputs, words, table);
  add_values(cofactor(f, outputs[0]), others, inputs, words, table + half);
}

}  // namespace

BrelTables::BrelTables(const BrelRelation& relation)
    : inputs_{relation.inputs},
      output_count_{relation.outputs.size()},
      word_count_{std::max<std::size_t>((std::size_t{1} << inputs_.size()) / word_points, 1)},
      all_points_{~std::uint64_t{0} >>
                  (word_points - std::min(word_points, std::size_t{1} << inputs_.size()))},
      whole_(word_count_ << output_count_),
      settled_(whole_.size()),
      bounds_(2 * word_count_),
      interval_(2 * word_count_),
      sum_(word_count_),
      scratch_(3 * word_count_),
      functions_{word_count_},
      intervals_{2 * word_count_} {
  add_values(relation.relation, relation.outputs, inputs_, word_count_, whole_.data());
  for (const Bdd& input : inputs_) {
    std::ranges::fill(sum_, 0);
    add_points(input, inputs_, 0, sum_.data());
    literals_.push_back(number_of(sum_.data()));
    literals_.push_back(negation(literals_.back()));
  }
}

bool BrelTables::is_total() const {
  for (std::size_t i = 0; i < word_count_; ++i) {
    std::uint64_t allowed = 0;
    for (std::size_t at = i; at < whole_.size(); at += word_count_) allowed |= whole_[at];
    if (allowed != all_points_) return false;
  }
  return true;
}

BrelTables::Bounds BrelTables::forced(const std::uint64_t* relation, std::size_t first,
                                      std::size_t output) {
  std::uint64_t *const allows_0 = bounds_.data(), *const allows_1 = allows_0 + word_count_;
  std::ranges::fill(bounds_, 0);
  const std::size_t digit = output_count_ - 1 - output,
                    count = std::size_t{1} << (output_count_ - first);
  for (std::size_t values = 0; values < count; ++values) {
    std::uint64_t* const allows = (values >> digit) % 2 == 1 ? allows_1 : allows_0;
    for (std::size_t i = 0; i < word_count_; ++i) allows[i] |= relation[values * word_count_ + i];
  }
  for (std::size_t i = 0; i < word_count_; ++i) {
    const std::uint64_t both = allows_0[i] & allows_1[i];
    allows_0[i] &= ~both;
    allows_1[i] &= ~both;
  }
  return {allows_1, allows_0};
}

BrelTables::Function BrelTables::number_of(const std::uint64_t* table) {
  const Function number = functions_.number_of(table);
  if (number == diagrams_.size()) diagrams_.emplace_back();
  return number;
}

BrelTables::Function BrelTables::function_between(Bounds bounds) {
  std::uint64_t *const lower = interval_.data(), *const upper = lower + word_count_;
  for (std::size_t i = 0; i < word_count_; ++i) {
    lower[i] = bounds.to_1[i];
    upper[i] = all_points_ & ~bounds.to_0[i];
  }
  const std::uint32_t number = intervals_.number_of(lower);
  if (number == between_.size()) {
    const auto points = static_cast<std::size_t>(std::popcount(all_points_));
    find_between(lower, upper, word_count_, points, sum_.data(), scratch_.data());
    between_.push_back(number_of(sum_.data()));
  }
  return between_[number];
}

void BrelTables::find_minimum(const Relation& relation, std::vector<Function>& functions) {
  functions.clear();
  for (std::size_t i = 0; i < output_count_; ++i)
    functions.push_back(function_between(forced(relation.data(), 0, i)));
}

void BrelTables::settle(std::uint64_t* relation, std::size_t first, Function function) const {
  const std::uint64_t* const table = functions_[function];
  const std::size_t half = word_count_ << (output_count_ - first - 1);
  for (std::size_t at = 0; at < half; ++at) {
    const std::uint64_t value = table[at % word_count_];
    relation[at] = (value & relation[half + at]) | (~value & relation[at]);
  }
}

void BrelTables::find_greedy(const Relation& relation, std::vector<Function>& functions) {
  settled_ = relation;
  functions.clear();
  for (std::size_t i = 0; i < output_count_; ++i) {
    functions.push_back(function_between(forced(settled_.data(), i, i)));
    settle(settled_.data(), i, functions.back());
  }
}

std::optional<BrelTables::Conflict> BrelTables::conflict(const Relation& relation,
                                                         std::span<const Function> functions) {
  settled_ = relation;
  for (std::size_t i = 0; i < output_count_; ++i) settle(settled_.data(), i, functions[i]);
  std::size_t word = 0;
  while (word < word_count_ && settled_[word] == all_points_) ++word;
  if (word == word_count_) return std::nullopt;
  const int bit = std::countr_one(settled_[word]);
  std::uint64_t values_0 = 0, values_1 = 0;  // [output]: allowed with some values of the others
  const std::uint64_t all_outputs = (std::uint64_t{1} << output_count_) - 1;
  for (std::uint64_t values = 0; values <= all_outputs; ++values) {
    if ((relation[values * word_count_ + word] >> bit) % 2 == 0) continue;
    values_1 |= values;
    values_0 |= ~values & all_outputs;
  }
  // Were each value forced, there would be one vector of values, and the minimum would have it.
  assert((values_0 & values_1) != 0);
  const auto highest = static_cast<std::size_t>(std::bit_width(values_0 & values_1));
  return Conflict{static_cast<std::uint32_t>(word * word_points) + static_cast<std::uint32_t>(bit),
                  output_count_ - highest};
}

BrelTables::Relation BrelTables::restricted(const Relation& relation, const Conflict& conflict,
                                            bool value) const {
  Relation part = relation;
  const std::size_t word = conflict.point / word_points,
                    digit = output_count_ - 1 - conflict.output;
  const std::uint64_t bit = std::uint64_t{1} << conflict.point % word_points;
  for (std::size_t values = 0; values < std::size_t{1} << output_count_; ++values)
    if (((values >> digit) % 2 == 1) != value) part[values * word_count_ + word] &= ~bit;
  return part;
}

std::vector<BrelTables::Function> BrelTables::alternatives(std::span<const Function> solution,
                                                           std::size_t output) {
  // Not settled: allowed with the other functions, for the value 0 and behind it for 1.
  std::ranges::fill(settled_, 0);
  const std::size_t digit = output_count_ - 1 - output;
  for (std::size_t values = 0; values < std::size_t{1} << output_count_; ++values) {
    for (std::size_t i = 0; i < word_count_; ++i) {
      std::uint64_t points = whole_[values * word_count_ + i];
      for (std::size_t j = 0; j < output_count_; ++j) {
        const bool is_1 = (values >> (output_count_ - 1 - j)) % 2 == 1;
        const std::uint64_t function = functions_[solution[j]][i];
        if (j != output) points &= is_1 ? function : ~function;
      }
      settled_[(values >> digit) % 2 * word_count_ + i] |= points;
    }
  }
  const Bounds bounds = forced(settled_.data(), output_count_ - 1, output_count_ - 1);
  std::vector<Function> functions = {function_between(bounds),
                                     negation(function_between({bounds.to_0, bounds.to_1}))};
  const auto is_inside = [&](Function literal) {
    for (std::size_t i = 0; i < word_count_; ++i) {
      const std::uint64_t value = functions_[literal][i];
      if ((bounds.to_1[i] & ~value) != 0 || (bounds.to_0[i] & value) != 0) return false;
    }
    return true;
  };
  const auto literal = std::ranges::find_if(literals_, is_inside);
  if (literal != literals_.end()) functions.push_back(*literal);
  return functions;
}

BrelTables::Function BrelTables::negation(Function function) {
  for (std::size_t i = 0; i < word_count_; ++i) sum_[i] = all_points_ & ~functions_[function][i];
  return number_of(sum_.data());
}

Bdd BrelTables::diagram_of(const std::uint64_t* table, std::size_t first_point,
                           std::span<const Bdd> inputs) const {
  if (inputs.empty())
    return Bdd((table[first_point / word_points] >> first_point % word_points) % 2 == 1);
  const std::span<const Bdd> others = inputs.subspan(1);
  const std::size_t half = std::size_t{1} << others.size();
  return ite(inputs[0], diagram_of(table, first_point + half, others),
             diagram_of(table, first_point, others));
}

const Bdd& BrelTables::bdd_of(Function function) {
  Bdd& diagram = diagrams_[function];
  if (diagram.is_null()) diagram = diagram_of(functions_[function], 0, inputs_);
  return diagram;
}

}  // namespace vorel::decomposition
