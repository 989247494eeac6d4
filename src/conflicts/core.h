// conflicts/core.h - conflict cores: what two configurations with one code differ in.
// Here:      the record, how a core falls apart into smaller ones, a list of minimal cores.
// Not here:  keeping a solver from finding a core again (conflicts/core_blocking.h).
//
// A new signal tells the two configurations apart exactly if it changes an odd number of times
// within the core; so two pairs with one core need one cure, and a core that is made of two others
// needs none of its own.
#pragma once

#include <functional>
#include <list>
#include <unordered_set>

#include "base/hashing.h"
#include "configuration/event_set.h"

namespace vorel::conflicts {

struct Core {
  // The smaller configuration becomes the first; of two of one size, the one given first.
  Core(configuration::EventSet one, configuration::EventSet other);

  configuration::EventSet first, second;
  configuration::EventSet sum;  // their symmetric difference; cores with one sum are one core
  bool nested = false;          // the first is a subset of the second
  bool seeded = false;          // known from the start, and kept whatever else is found
};

// Whether two configurations are a conflict of the kind that is looked for.
using KeepCore = std::function<bool(const Core&)>;

// The smaller cores that are left of the candidate once the known core is taken out of it; none
// when that does not leave configurations, or only dummies, or nothing that `keep` accepts.
std::vector<Core> is_composite_due_to(const net::StgPrefix& prefix, const Core& candidate,
                                      const Core& known, const KeepCore& keep);

// Cores none of which is composite due to another, in the order of insertion.
class MinimalCores {
 public:
  MinimalCores(const net::StgPrefix& prefix, KeepCore keep)
      : prefix_{prefix}, keep_{std::move(keep)} {}

  // Takes a core as it stands, for good; false if it was there.
  bool seed(Core core);
  // Enters the core, or the smaller ones that it falls into, and takes out known ones that turn out
  // to be composite. Gives all the cores that were not met before, be they kept or not.
  std::vector<Core> add(Core core);

  const std::list<Core>& cores() const { return cores_; }

 private:
  // The parts that the core falls into due to some known one.
  std::vector<Core> split_by_known(const Core& core) const;
  void take_out_composites_of(const Core& core, std::vector<Core>& pending);

  const net::StgPrefix& prefix_;
  const KeepCore keep_;
  std::list<Core> cores_;
  std::unordered_set<configuration::EventSet, base::SequenceHash>
      met_;  // the sums of all cores ever entered
};

}  // namespace vorel::conflicts
