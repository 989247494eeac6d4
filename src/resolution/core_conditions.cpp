#include "resolution/core_conditions.h"

#include <string>

#include "base/messages.h"
#include "configuration/decoding.h"

namespace vorel::resolution {
namespace {

using configuration::EventSet;

// The two firing sequences.
std::string text_of(const net::StgPrefix& prefix, const conflicts::Core& core) {
  std::string text;
  for (const EventSet* side : {&core.first, &core.second}) {
    if (!text.empty()) text += "; ";
    std::string names;
    const auto events = configuration::events_of(prefix, *side);
    for (const results::TraceStep& step : configuration::trace_to<net::StgPrefix>(prefix, events))
      names += (names.empty() ? "" : ", ") + *step.transition;
    text += names.empty() ? "(no event)" : names;
  }
  return text;
}

class CoreEncoding {
 public:
  CoreEncoding(const CoreStore& store, const Candidates& candidates, const CandidateLits& literals,
               sat::CnfFormula& formula, sat::SumsTreeBuilder& sums)
      : store_{store},
        prefix_{candidates.prefix()},
        effects_{candidates},
        literals_{literals},
        formula_{formula},
        sums_{sums} {}

  CoreCounters run() && {
    for (std::size_t i = 0; i < store_.cores.size(); ++i) add(store_.cores[i], store_.is_csc[i]);
    formula_.add_clause(resolved_, sat::PermanentGroup);
    return std::move(counters_);
  }

 private:
  sat::Lits literals_of(const std::vector<CandidateId>& candidates) const {
    sat::Lits lits;
    for (const CandidateId candidate : candidates) lits.push_back(literals_[candidate]);
    return lits;
  }

  void add(const conflicts::Core& core, bool is_csc) {
    const CoreEffect effect = effects_.of(core);
    const sat::Lit broken = formula_.make_gate(sat::Gate(sat::GateOr, literals_of(effect.breakers)),
                                               sat::PermanentGroup);
    const sat::Lit parity = sums_.sums_literal(literals_of(effect.togglers));
    const sat::Lit resolved =
        formula_.make_gate(sat::Gate(sat::GateAnd, {parity, ~broken}), sat::PermanentGroup);
    if (resolved == sat::LitFalse) add_irreducible(core, is_csc, broken);
    resolved_.push_back(resolved);
    if (is_csc) {
      counters_.csc_counter_literals.push_back(~resolved);
      return;
    }
    counters_.csc_counter_literals.push_back(broken);
    counters_.usc_counter_literals.push_back(
        formula_.make_gate(sat::Gate(sat::GateAnd, {~resolved, ~broken}), sat::PermanentGroup));
  }

  void add_irreducible(const conflicts::Core& core, bool is_csc, sat::Lit broken) {
    if (!is_csc) {
      formula_.add_unit(~broken, sat::PermanentGroup);
      return;
    }
    base::print_warning("structurally irreducible CSC conflict: " + text_of(prefix_, core));
    formula_.add_clause({}, sat::PermanentGroup);
  }

  const CoreStore& store_;
  const net::StgPrefix& prefix_;
  const CoreEffects effects_;
  const CandidateLits& literals_;
  sat::CnfFormula& formula_;
  sat::SumsTreeBuilder& sums_;
  CoreCounters counters_;
  sat::Lits resolved_;
};

}  // namespace

CoreCounters require_progress(const CoreStore& store, const Candidates& candidates,
                              const CandidateLits& literals, sat::CnfFormula& formula,
                              sat::SumsTreeBuilder& sums) {
  assert(store.cores.size() == store.is_csc.size());
  return CoreEncoding(store, candidates, literals, formula, sums).run();
}

CoreCounts cores_left(const CoreStore& store, const Candidates& candidates, const Choice& chosen) {
  const CoreEffects effects(candidates);
  CoreCounts counts;
  for (std::size_t i = 0; i < store.cores.size(); ++i) {
    const CoreOutcome result = outcome(effects.of(store.cores[i]), chosen);
    if (result == CoreOutcome::resolved) continue;
    ++(store.is_csc[i] || result == CoreOutcome::broken ? counts.csc : counts.usc);
  }
  return counts;
}

}  // namespace vorel::resolution
