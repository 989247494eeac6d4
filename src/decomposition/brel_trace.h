// decomposition/brel_trace.h - what a search inside a Boolean relation tells of itself.
// Here:      its texts, on the standard error stream. Variable i is called "v" and i.
// Not here:  the search (decomposition/brel_solver.h).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bdd/bdd.h"

namespace vorel::decomposition {

struct BrelOptions;
struct BrelRelation;
struct BrelResult;

class BrelTrace {
 public:
  BrelTrace(const BrelOptions& options, const BrelRelation& relation);

  // Under `trace`. A relation whose outputs cost so much each for itself.
  void tell_minimum(const std::string& label, double cost,
                    const std::vector<bdd::Bdd>& functions) const;
  void tell_solution(double cost, const std::vector<bdd::Bdd>& functions) const;
  void tell_next_depth() const;

  // Under `verbose`. Times in ticks.
  void tell_totals(const BrelOptions& options, const BrelResult& result, std::uint64_t time) const;

  // Always: a solution that leaves the relation is a mistake of the search.
  void tell_incorrect(const bdd::Bdd& relation, const std::vector<bdd::Bdd>& outputs,
                      const std::vector<bdd::Bdd>& functions) const;

 private:
  void tell_functions(const std::vector<bdd::Bdd>& functions) const;
  std::string text_of(const bdd::Bdd& function) const;

  bool trace_, verbose_;
  std::vector<std::string> names_;  // [variable]
};

}  // namespace vorel::decomposition
