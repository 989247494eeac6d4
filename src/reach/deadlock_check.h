// reach/deadlock_check.h - the engine of -D.
// Here:      the search for a configuration whose final state enables nothing.
// Not here:  how that is said in clauses (reach/deadlock_encoding.h).
#pragma once

#include "configuration/search_engine.h"
#include "reach/deadlock_encoding.h"

namespace vorel::reach {

// Every reachable marking of the net is the final marking of a configuration without cut-offs of a
// complete prefix, and what it enables is an event of the prefix, perhaps a cut-off [McM-1993]. So
// a deadlock of the net is a deadlock here, and the other way round. The same holds of the merged
// process of such a prefix [KKKV-2006].
template <net::Process P>
class DeadlockCheck : public configuration::SearchEngine<P> {
 public:
  // Dummies are transitions like any other here. Warns of a prefix without cut-offs, which may have
  // lost them, and of dummy cut-offs.
  DeadlockCheck(const P& process, const configuration::SearchOptions& options);

 protected:
  void encode(sat::ClauseGroup group) override;
  bool validate(const results::Solution& solution) const override;

 private:
  using Run = std::vector<const typename P::Event*>;

  Run run_into_deadlock() const requires P::is_merged;
  void shorten_search(DeadlockEncoding<P>& encoding) requires P::is_merged;
};

}  // namespace vorel::reach
