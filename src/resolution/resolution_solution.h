// resolution/resolution_solution.h - a transformation as a solution of a run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "resolution/transformation_cost.h"
#include "results/solution.h"

namespace vorel::resolution {

// What a transformation does, in words that outlive the net it was made for.
struct TransformationText {
  explicit TransformationText(const ResolutionCost& of);

  bool is_insertion = true;        // else a reduction of concurrency
  std::vector<std::string> parts;  // the edges, or the one reduction
  std::uint64_t cost = 0;
  std::string cost_text;
};

// Keeps texts, as the net changes with the next step.
class ResolutionSolution : public results::Solution {
 public:
  explicit ResolutionSolution(const ResolutionCost& cost) : Solution(false), text_{cost} {}

  // The total.
  std::uint64_t cost() const override { return text_.cost; }
  void print(std::ostream& stream) const override;
  results::XmlNode* to_xml(results::XmlDocument& document) const override;

 private:
  const TransformationText text_;
};

}  // namespace vorel::resolution
