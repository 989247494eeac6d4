// resolution/resolution_solution.h - a transformation as a solution of a run.
#pragma once

#include <string>
#include <vector>

#include "resolution/transformation_cost.h"
#include "results/solution.h"

namespace vorel::resolution {

// Keeps texts, as the net changes with the next step.
class ResolutionSolution : public results::Solution {
 public:
  explicit ResolutionSolution(const ResolutionCost& cost);

  // The total.
  std::uint64_t cost() const override { return cost_; }
  void print(std::ostream& stream) const override;
  results::XmlNode* to_xml(results::XmlDocument& document) const override;

 private:
  const bool is_insertion_;
  const std::uint64_t cost_;
  const std::string cost_text_;
  std::vector<std::string> parts_;  // the edges, or the one reduction
};

}  // namespace vorel::resolution
