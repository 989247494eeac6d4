// tools/unfold_report.h - what vorel-unfold tells about a run that succeeded.
#pragma once

#include <cstdint>
#include <ostream>

#include "tools/unfold_request.h"

namespace vorel::tools {

struct UnfoldFigures {
  std::uint64_t conditions = 0, events = 0, cut_offs = 0;  // of the prefix
  std::uint64_t initial_conditions = 0;
  unfolder::UnfoldStats unfolding;
  double reading_seconds = 0, unfolding_seconds = 0, writing_seconds = 0;
};

// A line for each figure, "\n NAME: VALUE", with the peak memory of the process so far.
void print_figures(const UnfoldFigures& figures, const unfolder::UnfoldOptions& options,
                   std::ostream& stream);

}  // namespace vorel::tools
