// resolution/core_survival.h - which cores are still conflicts after a reduction.
// Here:      an estimate from the prefix before; the next step computes cores anew.
// Not here:  what a new signal does to cores (resolution/core_effects.h).
#pragma once

#include <optional>
#include <vector>

#include "configuration/state_structure.h"
#include "conflicts/core.h"
#include "resolution/occurrence_counts.h"
#include "resolution/transformation.h"

namespace vorel::resolution {

// Which cores are still conflicts after a reduction. The new net has a configuration of the old one
// as it is if the sources in it suffice for each of its targets in turn. A core is kept if the new
// net has its two configurations, or these with a source and its causes added to both, and they are
// in conflict there: for unique state coding they are. A signal is excited then if it was, and the
// target need not fire first without a token.
class CoreSurvival {
 public:
  // Both must outlive it. For many reductions.
  CoreSurvival(const net::StgPrefix& prefix, OccurrenceCounts& counts);

  enum class Kept { no, usc, csc };
  Kept after(const Reduction& reduction, const conflicts::Core& core);

 private:
  using EventSet = configuration::EventSet;
  struct Pair {
    EventSet first, second;
  };

  bool is_source(const Reduction& reduction, const net::StgPrefix::Event& event) const;
  bool is_executable(const Reduction& reduction, const EventSet& configuration);
  bool are_executable(const Reduction& reduction, const Pair& pair);
  // Adds the past of the event to both; nullopt if that is impossible or changes the core.
  std::optional<Pair> with_past(const Pair& pair, const net::StgPrefix::Event& event);
  bool is_free(const EventSet& configuration, const EventSet& more) const;
  const EventSet& past_of(const net::StgPrefix::Event& event);
  std::optional<Pair> executable_pair(const Reduction& reduction, const conflicts::Core& core);
  std::vector<net::SignalId> excited(const Reduction& reduction, const EventSet& configuration);

  const net::StgPrefix& prefix_;
  OccurrenceCounts& counts_;
  const configuration::StateStructure<net::StgPrefix> structure_;
  base::IndexedBy<net::StgPrefix::Event, EventSet> pasts_;  // empty until asked for
};

}  // namespace vorel::resolution
