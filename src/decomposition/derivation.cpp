#include "decomposition/derivation.h"

#include <algorithm>
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

const synthesis::SignalImplementation* Derivation::find(
    const std::string& solution, const std::vector<std::string>& context) const {
  const auto known = all_.find(solution);
  if (known == all_.end()) return nullptr;
  const auto found =
      std::ranges::find(known->second, context, &synthesis::SignalImplementation::context);
  return found == known->second.end() ? nullptr : &*found;
}

std::optional<Derivation> Derivation::of(const net::StgPrefix& prefix, const base::Params& params,
                                         configuration::Notes notes, const Before* before) {
  Derivation result;
  const auto derive = [&](synthesis::SynthesisStyle style, configuration::Notes told) {
    base::Params own = params;
    own.set("solver", 0);
    synthesis::EquationSearch search(prefix, configuration::SearchOptions::of(own), style, told);
    if (before != nullptr)
      search.use({before->inserted, [before](const std::string& name, const auto& context) {
                    return before->derivation.find(name, context);
                  }});
    search.run();
    std::ostringstream statistics;
    search.print_statistics(statistics);
    result.statistics_ = statistics.str();
    results::Report report = std::move(search).take();
    for (std::size_t i = 0; i < report.solutions.size(); ++i)
      result.all_.emplace(solution(report, i).name(), solution(report, i).alternatives);
    return report;
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
