// resolution/insertion_engine.h - an STG and its prefix into which signals are inserted.
// Here:      the formula of a step, whose models are the valid sets of edges; making the prefix
//            with the edges chosen. A step inserts one signal.
// Not here:  what an insertion is wanted for: cores (resolution/resolution_engine.h).
//
// A step: start_step(), more clauses on the candidates' literals, sums().sums_emit(), solving the
// formula, choice() of the model, after_insertion(), adopt(). The formula says which edges can be
// inserted together as a signal: no two exclude each other, and rising and falling edges alternate
// in every run. What rises in a signal that begins at 0 falls in one that begins at 1.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "net/edit.h"
#include "resolution/occurrence_order.h"
#include "resolution/transformation.h"
#include "sat/sums_tree_builder.h"

namespace vorel::resolution {

// A prefix with one more signal, made of another one.
struct InsertedSignal {
  net::StgPrefix prefix;
  net::SignalId signal;
  net::Renumbering numbers;  // from the elements of the old prefix to those of this one
};

class InsertionEngine {
 public:
  // The prefix must be numbered causally, and its cut-offs have known correspondents. New signals
  // get the base name, with a number where that is taken.
  InsertionEngine(net::StgPrefix& prefix, std::string base_name, const sat::CnfParams& params,
                  std::int32_t concurrent_insertions);
  ~InsertionEngine();

  const net::StgPrefix& prefix() const { return prefix_; }
  const std::string& base_name() const { return base_name_; }

  // Forgets the last step. The candidates stay until the next one starts or the prefix changes.
  void start_step();
  // The same with these candidates, which must be valid, and sorted.
  void start_step(std::vector<net::Insertion> insertions);
  sat::CnfFormula& formula() { return formula_; }
  const sat::CnfFormula& formula() const { return formula_; }
  sat::SumsTreeBuilder& sums();
  const Candidates& candidates() const;
  const OccurrenceOrder& order() const;
  const CandidateLits& literals() const;
  // By candidate: whether an odd number of chosen edges comes before it, where it is chosen. Then
  // it falls if the signal begins at 0.
  const CandidateLits& parities() const;

  // Of the current model.
  Choice choice() const;

  // A copy of the prefix with the edges, chosen among the candidates or among those of another
  // step for the same prefix.
  InsertedSignal after_insertion(const SignalInsertion& edges,
                                 std::uint8_t initial_value = 0) const;
  InsertedSignal after_insertion(const Choice& choice, std::uint8_t initial_value = 0) const;
  // Puts the prefix in place of the current one, which ends the step.
  void adopt(net::StgPrefix prefix);

 private:
  struct Step;

  net::StgPrefix& prefix_;
  const std::string base_name_;
  const std::int32_t concurrent_insertions_;
  sat::CnfFormula formula_;
  std::unique_ptr<Step> step_;
};

}  // namespace vorel::resolution
