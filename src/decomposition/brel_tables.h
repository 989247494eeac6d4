// decomposition/brel_tables.h - a Boolean relation of few variables as a table.
// Here:      the questions that a search for functions inside it asks.
// Not here:  the same for relations of any size (decomposition/brel_relation.h), the search
//            (decomposition/brel_search.h), tables of words with numbers
//            (decomposition/word_tables.h).
//
// Functions of a few inputs are a machine word or two, and a search asks for thousands of them:
// operations on diagrams would spend their time in looking up what they know already.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/hashing.h"
#include "bdd/bdd.h"
#include "decomposition/brel_relation.h"
#include "decomposition/word_tables.h"

namespace vorel::decomposition {

// Gives the same answers as BrelAlgebra. Point x of a function is bit x % 64 of word x / 64; the
// first input is the most significant digit of x.
class BrelTables {
 public:
  using Function = std::uint32_t;               // equal functions have equal numbers
  using Relation = std::vector<std::uint64_t>;  // [vector of output values]: the points, as words
  struct Conflict {
    std::uint32_t point;
    std::size_t output;
  };
  using FunctionsHash = base::SequenceHash;
  using RelationHash = base::SequenceHash;

  // Inputs and outputs are ascending, and their table fits into memory.
  explicit BrelTables(const BrelRelation& relation);

  const Relation& whole() const { return whole_; }
  bool is_total() const;
  void find_minimum(const Relation& relation, std::vector<Function>& functions);
  void find_greedy(const Relation& relation, std::vector<Function>& functions);
  std::vector<Function> alternatives(std::span<const Function> solution, std::size_t output);
  std::optional<Conflict> conflict(const Relation& relation, std::span<const Function> functions);
  Relation restricted(const Relation& relation, const Conflict& conflict, bool value) const;
  const bdd::Bdd& bdd_of(Function function);

 private:
  struct Bounds {
    const std::uint64_t *to_1, *to_0;
  };
  // Of an output of a relation of the outputs from `first` on. Valid until it is asked again.
  Bounds forced(const std::uint64_t* relation, std::size_t first, std::size_t output);
  Function function_between(Bounds bounds);
  Function number_of(const std::uint64_t* table);
  // Gives the first output of a relation of the outputs from `first` on this function.
  void settle(std::uint64_t* relation, std::size_t first, Function function) const;
  Function negation(Function function);
  bdd::Bdd diagram_of(const std::uint64_t* table, std::size_t first_point,
                      std::span<const bdd::Bdd> inputs) const;

  std::vector<bdd::Bdd> inputs_;
  std::size_t output_count_;
  std::size_t word_count_;    // of a function
  std::uint64_t all_points_;  // each word where all are in
  Relation whole_;
  std::vector<Function> literals_;  // each input, plain and negated
  Relation settled_;                // from here on scratch, but for what is remembered
  std::vector<std::uint64_t> bounds_, interval_, sum_, scratch_;
  WordTables functions_;
  std::vector<bdd::Bdd> diagrams_;  // [function]; null where nobody asked
  WordTables intervals_;
  std::vector<Function> between_;  // [interval]
};

}  // namespace vorel::decomposition
