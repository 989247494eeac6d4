#include "reach/reach_check.h"

#include <cassert>
#include <span>
#include <string>

#include "base/messages.h"
#include "configuration/decoding.h"
#include "configuration/dummy_cutoffs.h"
#include "configuration/final_state.h"
#include "reachlang/parser.h"
#include "reachlang/predicate_check.h"
#include "reachlang/predicate_encoding.h"

namespace vorel::reach {
namespace {

configuration::SearchOptions adapted(configuration::SearchOptions options,
                                     configuration::Enabledness enabledness) {
  if (enabledness == configuration::Enabledness::direct)
    options.encoding = options.encoding.without_dummy_rules();
  return options;
}

// Stands for the property until one has been read.
std::unique_ptr<reachlang::ReachExpr> missing_property() {
  auto expr = std::make_unique<reachlang::ReachExpr>();
  const reachlang::ReachNodeId text =
      expr->add_constant(reachlang::ReachValue(std::string("predicate is not specified")),
                         {reachlang::BaseType::string, 0});
  expr->add({.op = reachlang::ReachOp::fail}, std::span(&text, 1));
  return expr;
}

std::unique_ptr<reachlang::ReachExpr> read_property(std::string_view text) {
  auto property = reachlang::parse_reach(text);
  if (property == nullptr) base::print_error("Failed to read the property");
  return property;
}

}  // namespace

template <net::Process P>
ReachCheck<P>::ReachCheck(const P& process, const configuration::SearchOptions& options,
                          std::string_view property, configuration::Enabledness enabledness)
    : configuration::SearchEngine<P>(process, adapted(options, enabledness),
                                     {"there is a reachable state satisfying the predicate",
                                      "no reachable state satisfies the predicate"}),
      property_{missing_property()} {
  if (auto parsed = read_property(property)) property_ = std::move(parsed);
  if constexpr (P::NetType::has_signals && !P::is_merged) {
    if (enabledness == configuration::Enabledness::direct) return;
    if (configuration::has_dummy_cutoffs(process)) {
      base::print_warning("there are dummy cut-offs; the result will not be reliable");
    } else if (configuration::has_edges_cut_at_dummies(process)) {
      base::print_warning(
          "there are cut-offs that correspond to dummies; the result may not be reliable");
    }
  }
}

template <net::Process P>
void ReachCheck<P>::encode(sat::ClauseGroup) {
  assert(property_ != nullptr && this->instance().size() == 0);
  this->instance().add_configuration();
  auto encoded = reachlang::encode_predicate(*property_, this->instance().state(0));
  if (!encoded) return;
  normal_form_ = std::move(encoded->normal);
  this->instance().set_alternatives(std::move(encoded->alternatives));
}

template <net::Process P>
std::optional<Witness> ReachCheck<P>::witness() const {
  if (this->found().solutions.empty()) return std::nullopt;
  const results::Solution& solution = *this->found().solutions.back();
  if (!validate(solution)) return std::nullopt;
  const auto events = configuration::events_of(this->process(), solution.traces.front());
  const configuration::FinalState<P> state(this->structure(), events,
                                           this->options().encoding.enabledness);
  return Witness{solution.traces.front(), reachlang::chosen_elements(*property_, state)};
}

template <net::Process P>
bool ReachCheck<P>::validate(const results::Solution& solution) const {
  assert(solution.traces.size() == 1 && normal_form_);
  if (!configuration::SearchEngine<P>::validate(solution)) return false;
  const auto events = configuration::events_of(this->process(), solution.traces.front());
  return reachlang::check_predicate(
      *normal_form_, configuration::FinalState<P>(this->structure(), events,
                                                  this->options().encoding.enabledness));
}

#define INSTANTIATE(P) template class ReachCheck<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reach
