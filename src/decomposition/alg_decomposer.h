// decomposition/alg_decomposer.h - the cheapest way to find sub-functions of a function.
// Here:      which decompositions follow from each division.
// Not here:  the divisions (decomposition/divisions.h), which gates serve, what a signal costs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "decomposition/alg_decomposition.h"

namespace vorel::decomposition {

class AlgDecomposer {
 public:
  // A function is divided by no more than so many others.
  static constexpr std::size_t limit = 500;

  // `variable` is the placeholder, which no function to be decomposed depends on. Names are by
  // variable, and outlive the object; without names variable v is called "x" and v.
  explicit AlgDecomposer(std::uint32_t variable, std::span<const std::string> names = {})
      : variable_{variable}, names_{names} {}

  // All are different, and each composes to f. Operands of a gate are not constant, and differ from
  // each other and from f. A collapsed function depends on the placeholder, and what that stands
  // for is neither constant nor a literal nor f. None of a constant or a literal. In a fixed order.
  // Each is told on the standard error stream at verbosity 4, the divisions at verbosity 6.
  std::vector<AlgDecomposition> decompose(const bdd::Bdd& f) const;

 private:
  std::uint32_t variable_;
  std::span<const std::string> names_;
};

}  // namespace vorel::decomposition
