#include "decomposition/derivation.h"

#include <sstream>
#include <utility>

#include "base/messages.h"
#include "synthesis/equation_search.h"

namespace vorel::decomposition {
namespace {

synthesis::SignalSolution& solution(const results::Report& report, std::size_t number) {
  return static_cast<synthesis::SignalSolution&>(*report.solutions[number]);
}

}  // namespace

std::optional<Derivation> Derivation::of(const net::StgPrefix& prefix, const base::Params& params,
                                         configuration::Notes notes) {
  Derivation result;
  const auto derive = [&](synthesis::SynthesisStyle style, configuration::Notes told) {
    base::Params own = params;
    own.set("solver", 0);
    synthesis::EquationSearch search(prefix, configuration::SearchOptions::of(own), style, told);
    search.run();
    std::ostringstream statistics;
    search.print_statistics(statistics);
    result.statistics_ = statistics.str();
    return std::move(search).take();
  };
  result.whole_ = derive(synthesis::SynthesisStyle::four_sets, notes);
  if (base::run_failed() || result.whole_.solutions.empty()) return std::nullopt;
  for (std::size_t i = 0; i < result.whole_.solutions.size(); ++i) {
    solution(result.whole_, i).trim(4, 8);
    result.functions_.push_back({.solution = &solution(result.whole_, i)});
  }
  if (params.get("use_latches") == 0) return result;
  result.latches_ = derive(synthesis::SynthesisStyle::standard_c, configuration::Notes::left_out);
  if (base::run_failed()) return std::nullopt;
  for (std::size_t i = 0; i < result.functions_.size(); ++i) {
    SignalFunctions& functions = result.functions_[i];
    synthesis::SignalSolution& set = solution(result.latches_, 2 * i);
    synthesis::SignalSolution& reset = solution(result.latches_, 2 * i + 1);
    set.trim(2, 4);
    reset.trim(2, 4);
    functions.set = &set;
    functions.reset = &reset;
  }
  return result;
}

}  // namespace vorel::decomposition
