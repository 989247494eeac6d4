#include "resolution/transformation_cost.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace vorel::resolution {
namespace {

std::string term(std::uint32_t coefficient, std::uint64_t number, std::string_view name) {
  return std::to_string(coefficient) + "*" + std::to_string(number) + "[" + std::string(name) + "]";
}

}  // namespace

bool is_sequential(const net::Insertion& insertion) {
  return std::holds_alternative<net::SeqBefore>(insertion) ||
         std::holds_alternative<net::SeqAfter>(insertion);
}

CostCoefficients CostCoefficients::of(const base::Params& params) {
  const auto coefficient = [&params](std::string_view key) {
    return static_cast<std::uint32_t>(params.get(key));
  };
  return {.csc_cores = coefficient("coeff_CSC_cores"),
          .usc_cores = coefficient("coeff_USC_cores"),
          .delay = coefficient("coeff_delay"),
          .logic = coefficient("coeff_logic"),
          .seq_insertions = coefficient("coeff_seq_insertions"),
          .conc_insertions = coefficient("coeff_conc_insertions"),
          .non_locked_signals = coefficient("coeff_non_locked_signals"),
          .pwr_of_2 = params.get("pwr_of_2") != 0,
          .use_concurrency_reduction = params.get("use_concurrency_reduction") != 0};
}

TransformationCost::TransformationCost(const CostCoefficients& weights, StgTransformation applied)
    : coefficients{weights}, transformation{std::move(applied)} {}

std::uint64_t TransformationCost::seq_count() const {
  if (const auto* reduction = std::get_if<Reduction>(&transformation))
    return reduction->sources.size();
  return static_cast<std::uint64_t>(
      std::ranges::count_if(std::get<SignalInsertion>(transformation), is_sequential));
}

std::uint64_t TransformationCost::conc_count() const {
  const auto* insertion = std::get_if<SignalInsertion>(&transformation);
  return insertion == nullptr ? 0 : insertion->size() - seq_count();
}

std::uint64_t TransformationCost::total() const {
  if (delay == unknown_cost || logic == unknown_cost || non_locked == unknown_cost)
    return unknown_cost;
  return coefficients.seq_insertions * seq_count() + coefficients.conc_insertions * conc_count() +
         coefficients.non_locked_signals * non_locked + coefficients.logic * logic +
         coefficients.delay * delay;
}

std::string TransformationCost::text() const {
  return term(coefficients.delay, delay, "delay") + " + " +
         term(coefficients.logic, logic, "log_compl") + " + " +
         term(coefficients.seq_insertions, seq_count(), "seq") + " + " +
         term(coefficients.conc_insertions, conc_count(), "par") + " + " +
         term(coefficients.non_locked_signals, non_locked, "unlck");
}

std::uint64_t ResolutionCost::total() const {
  const std::uint64_t base = TransformationCost::total();
  if (csc_cores == unknown_cost || usc_cores == unknown_cost || base == unknown_cost)
    return unknown_cost;
  return base + coefficients.csc_cores * csc_cores + coefficients.usc_cores * usc_cores;
}

std::string ResolutionCost::text() const {
  return term(coefficients.csc_cores, csc_cores, "csc") + " + " +
         term(coefficients.usc_cores, usc_cores, "usc") + " + " + TransformationCost::text();
}

}  // namespace vorel::resolution
