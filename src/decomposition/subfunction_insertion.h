// decomposition/subfunction_insertion.h - a set of edges of a new signal that computes a function.
// Here:      the edges with what is known of them; which is the better set; the text.
// Not here:  finding them (decomposition/subfunction_inserter.h).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "decomposition/subfunction.h"
#include "resolution/candidates.h"

namespace vorel::decomposition {

// Refers to the STG that it is for, and is of no use after that has changed.
struct SubfunctionInsertion {
  // The new signal delays the edges of one other signal and nothing else.
  bool is_local() const { return ack_count == 1; }
  // Which of two is better: the one that computes the function, the one with fewer signals that
  // wait for it, the cheaper one.
  bool operator<(const SubfunctionInsertion& other) const;
  bool is_same_as(const SubfunctionInsertion& other) const;
  // "UNEXP_IMPL ACK(2) a|t, u|b": the edges as resolution::to_text() has them.
  std::string text() const;
  ChosenInsertion summary() const {
    return {.expected_implementation = expected_implementation,
            .cost = cost,
            .ack_count = ack_count,
            .text = text()};
  }

  resolution::SignalInsertion edges;  // in the order of candidates
  // Of the new signal: the value of the function at the start, or the other one if the signal is
  // excited there.
  std::uint8_t initial_value = 0;
  // The next value of the new signal is the function in all states. Otherwise it only rises where
  // the function does and falls where that falls, but not always: its equation is another one.
  bool expected_implementation = false;
  std::uint64_t ack_count = 0;  // outputs and internal signals that wait for it somewhere
  std::uint64_t cost = 0;       // as the coefficients weigh it, 0 if all of them are 0
  // What the cost is made of, as in resolution/transformation_cost.h; 0 where the coefficient is.
  std::uint64_t delay = 0, logic_complexity = 0, non_locked = 0;
  std::vector<std::string> triggers;  // names of the signals that would trigger it
};

}  // namespace vorel::decomposition
