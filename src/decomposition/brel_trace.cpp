#include "decomposition/brel_trace.h"

#include <algorithm>
#include <iostream>

#include "base/clock.h"
#include "base/messages.h"
#include "bdd/cover_bdd.h"
#include "decomposition/brel_solver.h"

namespace vorel::decomposition {
namespace {

std::vector<std::string> names_of(const BrelRelation& relation) {
  std::uint32_t count = 0;
  for (const auto* const variables : {&relation.inputs, &relation.outputs})
    for (const bdd::Bdd& variable : *variables) count = std::max(count, variable.variable() + 1);
  std::vector<std::string> names(count);
  for (std::uint32_t i = 0; i < count; ++i) names[i] = "v" + std::to_string(i);
  return names;
}

}  // namespace

BrelTrace::BrelTrace(const BrelOptions& options, const BrelRelation& relation)
    : trace_{options.trace}, verbose_{options.verbose}, names_{names_of(relation)} {}

std::string BrelTrace::text_of(const bdd::Bdd& function) const {
  return toolkit::to_string(bdd::expression_of(function, names_));
}

void BrelTrace::tell_functions(const std::vector<bdd::Bdd>& functions) const {
  for (std::size_t i = 0; i < functions.size(); ++i)
    std::cerr << "\t output:" << i << " -> " << text_of(functions[i]) << '\n';
}

void BrelTrace::tell_minimum(const std::string& label, double cost,
                             const std::vector<bdd::Bdd>& functions) const {
  if (!trace_) return;
  std::cerr << label << '\n';
  base::print_formatted(std::cerr, "Imcomp Solution cost %f:\n", cost);
  tell_functions(functions);
}

void BrelTrace::tell_solution(double cost, const std::vector<bdd::Bdd>& functions) const {
  if (!trace_) return;
  base::print_formatted(std::cerr, "\nSolution cost %f:\n", cost);
  tell_functions(functions);
}

void BrelTrace::tell_next_depth() const {
  if (trace_) std::cerr << "---------------------\n";
}

void BrelTrace::tell_totals(const BrelOptions& options, const BrelResult& result,
                            std::uint64_t time) const {
  if (!verbose_) return;
  const std::uint64_t hundredths = time / 10'000'000;
  const std::string seconds = base::format_message(
      "%ld.%02ld sec", static_cast<long>(hundredths / 100), static_cast<long>(hundredths % 100));
  if (options.breadth_first) {
    base::print_formatted(std::cerr, " cached BRs: %d\n", static_cast<int>(result.cached));
    base::print_formatted(std::cerr, "maxdepth %f nsols: %f Final Time:%s\n",
                          static_cast<double>(result.max_depth), static_cast<double>(result.found),
                          seconds.c_str());
  }
  base::print_formatted(std::cerr, "Used options:\n\tMaximum number of explored BR: %d\n",
                        static_cast<int>(options.max_explored));
  base::print_formatted(std::cerr, "\tNumber of stored solutions: %d\n",
                        static_cast<int>(options.stored_solutions));
  if (options.cpu_limit_ms < 0)
    std::cerr << "\tMaximum cpu time allowed: no limit\n";
  else
    base::print_formatted(std::cerr, "\tMaximum allowed cpu time: %f ms\n", options.cpu_limit_ms);
  base::print_formatted(std::cerr, "\tNumber of explored BR: %d ms\n",
                        static_cast<int>(result.explored));
  base::print_formatted(std::cerr, "Used CPU time: %s\n", seconds.c_str());
}

void BrelTrace::tell_incorrect(const bdd::Bdd& relation, const std::vector<bdd::Bdd>& outputs,
                               const std::vector<bdd::Bdd>& functions) const {
  bdd::Bdd product(true);
  for (std::size_t i = 0; i < outputs.size(); ++i) product &= ~(outputs[i] ^ functions[i]);
  std::cerr << "\nBrelCheckSolution failed:\nCharacteristic function:\n"
            << text_of(relation) << "\nCharacteristic function of the solution:\n"
            << text_of(product) << "\nERROR: Solution isn't correct\n";
}

}  // namespace vorel::decomposition
