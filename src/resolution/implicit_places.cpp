#include "resolution/implicit_places.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <vector>

#include "base/messages.h"
#include "base/run_state.h"
#include "configuration/search_instance.h"
#include "net/causality.h"
#include "net/edit.h"

namespace vorel::resolution {
namespace {

using net::StgPlace;
using net::StgPrefix;
using net::StgTransition;
using Event = StgPrefix::Event;
using Condition = StgPrefix::Condition;

constexpr int verbosity_of_places = 4;

configuration::EncodingOptions plain_encoding(const sat::CnfParams& params) {
  configuration::EncodingOptions options{.formula = params};
  options.formula.store_cnf_formula = false;
  return options.without_dummy_rules();
}

class ImplicitPlaces {
 public:
  ImplicitPlaces(StgPrefix& prefix, const sat::CnfParams& params)
      : prefix_{prefix},
        structure_{prefix},
        instance_{structure_, plain_encoding(params)},
        is_removed_(prefix.places.size()) {
    instance_.add_configuration();
  }

  // In the order of the net.
  std::vector<StgPlace*> find() {
    std::vector<StgPlace*> found;
    for (const auto& place : prefix_.places) {
      is_removed_[*place] = true;
      if (leaves_presets(*place) && !can_stop_consumer(*place) && leaves_order(*place))
        found.push_back(place.get());
      else
        is_removed_[*place] = false;
      if (base::run_failed()) return {};
    }
    return found;
  }

 private:
  bool leaves_presets(const StgPlace& place) const {
    return std::ranges::all_of(place.postset, [this](const StgTransition* consumer) {
      return std::ranges::any_of(consumer->preset,
                                 [this](const StgPlace* other) { return !is_removed_[*other]; });
    });
  }

  bool leaves_order(const StgPlace& place) const {
    const auto conditions = structure_.instances().conditions_of(base::id_of(place));
    return std::ranges::all_of(conditions, [this](const Condition* condition) {
      return condition->is_initial() ||
             std::ranges::all_of(condition->postset, [&](const Event* consumer) {
               return follows_by_others(*consumer, *condition->pre_event);
             });
    });
  }
  // The event comes after the producer even without the places removed so far, which have left the
  // order as it was.
  bool follows_by_others(const Event& event, const Event& producer) const {
    std::vector<Event*> causes;
    for (const Condition* condition : event.preset) {
      if (!is_removed_[*condition->place] && !condition->is_initial())
        causes.push_back(condition->pre_event);
    }
    return std::ranges::binary_search(net::causal_past(prefix_, causes), producer.index, {},
                                      &Event::index);
  }

  // Some consumer finds all of its other places marked after a configuration, and not this one.
  bool can_stop_consumer(const StgPlace& place) {
    auto& state = instance_.state(0);
    sat::CnfFormula& formula = instance_.formula();
    const sat::ClauseGroup group = formula.new_group();
    formula.add_unit(~state.marked(place), group);
    sat::Lits waiting;
    for (const StgTransition* consumer : place.postset) {
      sat::Lits others;
      for (const StgPlace* other : consumer->preset) {
        if (!is_removed_[*other]) others.push_back(state.marked(*other));
      }
      waiting.push_back(formula.make_gate(sat::Gate(sat::GateAnd, others), group));
    }
    formula.add_clause(waiting, group);
    const bool can_stop = instance_.solve();
    formula.remove_group(group);
    return can_stop;
  }

  StgPrefix& prefix_;
  const configuration::StateStructure<StgPrefix> structure_;
  configuration::SearchInstance<StgPrefix> instance_;
  base::IndexedBy<StgPlace, bool> is_removed_;
};

void tell(const std::vector<StgPlace*>& places) {
  if (base::verbosity() < verbosity_of_places) return;
  if (places.empty()) {
    base::print_formatted(std::cout, "\n No implicit places found");
    return;
  }
  std::string names;
  for (const StgPlace* place : places) names += (names.empty() ? "" : ", ") + place->name;
  base::print_formatted(std::cout, "\n %zu implicit places removed: %s", places.size(),
                        names.c_str());
}

}  // namespace

bool remove_implicit_places(StgPrefix& prefix, const sat::CnfParams& params) {
  const std::vector<StgPlace*> places = ImplicitPlaces(prefix, params).find();
  if (base::run_failed()) return false;
  tell(places);
  net::remove_places(prefix, places);
  net::finish_edit(prefix);
  return true;
}

}  // namespace vorel::resolution
