// configuration/search_instance.h - a SAT instance over one or more configurations of a process.
// Here:      the formula, the configurations encoded in it, models that are configurations.
// Not here:  what is looked for, and in what order (configuration/search_engine.h).
// On a merged process a model may still have causal cycles (configuration/acyclicity.h): whoever
// needs a model asks solve(), not the formula.
#pragma once

#include <cassert>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "configuration/acyclicity.h"
#include "configuration/search_options.h"
#include "configuration/state_literals.h"
#include "sat/alternatives.h"
#include "sat/core_guided.h"

namespace vorel::configuration {

template <net::Process P>
class SearchInstance {
 public:
  using Event = typename P::Event;

  // The structure must outlive it.
  SearchInstance(const StateStructure<P>& structure, const EncodingOptions& options);

  const P& process() const { return structure_.process(); }
  const StateStructure<P>& structure() const { return structure_; }
  sat::CnfFormula& formula() { return formula_; }
  const sat::CnfFormula& formula() const { return formula_; }

  // Encodes one more configuration: causality, conflicts and, where the options ask for it, the
  // rule on maximal dummies; on merged processes also what only they need. Permanent.
  void add_configuration();
  std::size_t size() const { return configurations_.size(); }
  ConfigurationVars<P>& configuration(std::size_t i) {
    assert(i < size());
    return configurations_[i]->vars;
  }
  StateLiterals<P>& state(std::size_t i) {
    assert(i < size());
    return configurations_[i]->state;
  }

  // Solves until the model is one of configurations; tells the size of the instance of a merged
  // process whenever it has grown. False when there is none, and after a reported failure.
  bool solve();

  // To be tried first in the next solve(): one of them is true in each model.
  void set_alternatives(std::vector<sat::Alternative> alternatives);

  // Events that may be those of the i-th configuration in a model: to be tried first in the next
  // solve(). Nothing follows if they are not.
  void set_guess(std::size_t i, std::span<const Event* const> events);

  // A model of least cost, as sat/core_guided.h tells; nothing is to be added to the instance after
  // that.
  std::optional<std::uint64_t> find_least_cost(std::span<const sat::WeightedLit> cost,
                                               const std::function<void()>& record);

  // Of the current model, in the order of the list of events.
  std::vector<const Event*> events_of_model(std::size_t i) const;
  // The literals that tell one model from another: those of all events in all configurations.
  sat::Lits event_literals() const;

 private:
  struct Configuration {
    Configuration(const StateStructure<P>& structure, sat::CnfFormula& formula,
                  Enabledness enabledness)
        : vars{structure.process(), formula}, state{structure, vars, enabledness} {}

    ConfigurationVars<P> vars;
    StateLiterals<P> state;
    std::unique_ptr<Acyclicity<P>> acyclicity;  // merged processes only
  };

  void encode_merged_rules(Configuration& configuration);
  bool solve_formula();
  // True when the model had a cycle, and clauses were added.
  bool refine();
  void print_instance_size() const;  // of a merged process, for the next solve

  const StateStructure<P>& structure_;
  const EncodingOptions options_;
  sat::CnfFormula formula_;
  std::vector<std::unique_ptr<Configuration>> configurations_;
  sat::AlternativeSearch alternatives_;
  sat::Lits guess_;     // to be assumed in the next solve
  bool is_new_ = true;  // not solved yet
};

}  // namespace vorel::configuration
