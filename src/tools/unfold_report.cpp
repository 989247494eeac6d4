#include "tools/unfold_report.h"

#include <sys/resource.h>

#include "base/messages.h"

namespace vorel::tools {
namespace {

const char* fate_of_relation(const UnfoldFigures& figures, const unfolder::UnfoldOptions& options) {
  if (options.conc_rel_size <= figures.initial_conditions) return "not used";
  return figures.unfolding.relation_dropped ? "dropped" : "kept";
}

double peak_megabytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
}

}  // namespace

void print_figures(const UnfoldFigures& figures, const unfolder::UnfoldOptions& options,
                   std::ostream& stream) {
  stream << "\n conditions: " << figures.conditions << "\n events: " << figures.events
         << "\n cut-offs: " << figures.cut_offs << "\n batches: " << figures.unfolding.batches
         << "\n largest batch: " << figures.unfolding.largest_batch
         << "\n comparisons: " << figures.unfolding.comparisons
         << "\n concurrency relation: " << fate_of_relation(figures, options);
  base::print_formatted(stream, "\n seconds reading: %.4f\n seconds unfolding: %.4f",
                        figures.reading_seconds, figures.unfolding_seconds);
  base::print_formatted(stream, "\n seconds writing: %.4f\n peak megabytes: %.1f",
                        figures.writing_seconds, peak_megabytes());
}

}  // namespace vorel::tools
