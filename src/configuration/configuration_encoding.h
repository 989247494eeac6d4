// configuration/configuration_encoding.h - clauses whose models are a process's configurations.
// Here:      causality, conflicts, maximal dummies; what merged processes need beyond them.
// Not here:  literals (configuration/configuration_vars.h), cycles of merged processes
//            (configuration/acyclicity.h), properties of the final state.
//
// A configuration is a set of events, cut-offs excluded, that contains the producers of what it
// consumes and consumes nothing twice. That is all in a prefix [McM-1993]. In a merged process the
// conditions must also be produced once, and the occurrences of a place be used without gaps: then
// the sets of mp-events are those into which the configurations of the unfolding merge [KKKV-2006],
// and their final markings are reachable. Some of them merge from configurations that go on behind
// a cut-off of the prefix.
#pragma once

#include "configuration/configuration_vars.h"

namespace vorel::configuration {

// Says the rules of one configuration, in the group of its literals; each rule is said once.
template <net::Process P>
class ConfigurationEncoding {
 public:
  explicit ConfigurationEncoding(ConfigurationVars<P>& vars)
      : vars_{vars}, process_{vars.process()}, formula_{vars.formula()}, group_{vars.group()} {}

  // An event needs the producers of its preset.
  void encode_causality();
  // A condition is consumed at most once.
  void encode_conflicts();
  // A dummy is not maximal: one of its direct successors is in the configuration too.
  void encode_no_max_dummies() requires P::NetType::has_signals;

  // At most one producer of a condition fires. Redundant in a merged process of a safe net.
  void encode_backward_conflicts() requires P::is_merged;
  // Nobody produces what is there from the start. Redundant in a merged process of a safe net,
  // where no event could.
  void encode_initial_conditions() requires P::is_merged;
  // An occurrence of a place is produced only if the one before it is, and has been consumed. Two
  // conditions of one place and depth are an error.
  void encode_no_gaps() requires P::is_merged;

 private:
  using Event = typename P::Event;

  // The literals of the events into the scratch list, which is emptied before.
  void collect(const base::PtrList<Event>& events);

  ConfigurationVars<P>& vars_;
  const P& process_;
  sat::CnfFormula& formula_;
  const sat::ClauseGroup group_;
  sat::Lits lits_;  // scratch
};

}  // namespace vorel::configuration
