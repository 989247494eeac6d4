// flow/stg_states.h - the reachable states of an STG as models of a formula.
// Here:      markings as literals, states that dummies alone lead from one to the other, shortest
//            traces.
// Not here:  what is asked (flow/stg_checks.h).
//
// Dummies are transitions like any other here. The states are those that configurations without
// cut-offs end in: all reachable ones, and with the unfolder's adequate order each of them by a
// shortest trace, too.
#pragma once

#include <functional>
#include <vector>

#include "configuration/search_instance.h"
#include "verify/edge_presets.h"

namespace vorel::flow {

class StgStates {
 public:
  using Event = net::StgPrefix::Event;
  using Events = std::vector<const Event*>;

  // The state that is asked about, and one before it with nothing but dummies between. Where no
  // dummy matters they are one.
  enum class When : std::uint8_t { now, before };

  // The structure must outlive it.
  StgStates(const configuration::StateStructure<net::StgPrefix>& structure,
            const sat::CnfParams& params, bool has_before);

  sat::Lit all_marked(const verify::PlaceSet& places, When when);
  sat::Lit any_marked(const std::vector<verify::PlaceSet>& sets, When when);
  // A transition without events never is.
  sat::Lit enabled(const net::StgTransition& transition);
  sat::Lit all_of(const sat::Lits& lits);
  sat::Lit any_of(const sat::Lits& lits);

  // Calls back in models in which the literal is true, in each with a shorter trace than in the one
  // before; the last trace is as short as any, unless to prove that takes too long. False if there
  // is none.
  bool find_shortest(sat::Lit question, const std::function<void()>& record);
  // Of the model.
  bool is_true(sat::Lit lit) const { return instance_.formula().is_true(lit); }
  // In an order in which they fire, those before the one state first.
  Events trace() const;
  std::size_t length_before() const;

 private:
  sat::CnfFormula& formula() { return instance_.formula(); }
  auto& state(When when) { return instance_.state(when == When::before && has_before_ ? 1 : 0); }
  void link_configurations();
  bool solve(const sat::Lits& assumptions) {
    return formula().solve_assuming(assumptions).value_or(false);
  }

  const configuration::StateStructure<net::StgPrefix>& structure_;
  const bool has_before_;
  configuration::SearchInstance<net::StgPrefix> instance_;
  sat::Lits length_;  // of the trace, as a binary number; empty until the first model
  base::IndexedBy<net::StgTransition, sat::Lit> enabled_;  // uninit until asked for
};

}  // namespace vorel::flow
