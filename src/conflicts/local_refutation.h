// conflicts/local_refutation.h - proofs out of a small part of a prefix that no pair of
// configurations differs in a candidate.
// Here:      which part is looked at, its formula.
// Not here:  the search for a pair (conflicts/pair_search.h).
//
// The next value of a signal is a function of the few signals that its gate would read. That the
// codes of these determine it follows, as a rule, from how their own edges and those of the signal
// cause each other, whatever else goes on; in the formula of the whole prefix each decision
// propagates through all of it, and a model assigns all of it. So a candidate is first asked about
// in a formula that has of all clauses only those on the events near to it: without a model the
// whole formula has none, and with one nothing is known.
#pragma once

#include <memory>
#include <vector>

#include "configuration/search_options.h"
#include "conflicts/bottlenecks.h"
#include "conflicts/pair_question.h"

namespace vorel::conflicts {

class LocalRefutation {
 public:
  // Both must outlive it. `adds_inclusion`: one of the two configurations contains the other.
  LocalRefutation(const configuration::StateStructure<net::StgPrefix>& structure,
                  const PairQuestion& question, const configuration::EncodingOptions& options,
                  std::size_t max_events, bool adds_inclusion);

  // True if no pair differs in the candidate; false says nothing. Takes time linear in the part
  // that is looked at, as a rule, which has at most `max_events` events; where proofs fail most of
  // the time, they are not tried any more.
  bool refutes(std::uint32_t candidate);

 private:
  using Event = net::StgPrefix::Event;
  using EventId = base::Id<Event>;

  bool try_to_refute(std::uint32_t candidate);
  void start();
  // What is known of the events mentioned so far, and of those that this mentions.
  void add_codes();
  void add_causality();
  void add_conflicts();
  void add_inclusion();
  void mention_neighbours();
  // Orders the event with the mentioned ones among its causes or effects, but for those behind
  // others. A walk that has become long ends.
  void walk_from(const Event& start, Direction direction);
  void add_order(const Event& start, const Event& end, Direction direction);
  bool is_too_large() const;
  std::size_t mentioned_count() const { return vars_[0].mentioned_events().size(); }
  const Event& mentioned(std::size_t i) const;

  const net::StgPrefix& prefix_;
  const PairQuestion& question_;
  const std::size_t max_events_;
  const bool adds_inclusion_;
  sat::CnfFormula formula_;
  std::array<configuration::ConfigurationVars<net::StgPrefix>, 2> vars_;
  std::array<PairState, 2> states_;
  const std::array<Bottlenecks, 2> bottlenecks_;  // by direction
  const EncodedPair pair_;
  std::size_t in_vain_ = 0, of_use_ = 0;  // events looked at
  // Scratch.
  base::MarkSet<net::Signal> signals_;
  base::MarkSet<net::StgPrefix::Condition> conditions_;
  base::MarkSet<Event> visited_;
  std::vector<const Event*> pending_;
  std::size_t coded_ = 0;
  sat::Lits lits_;
};

}  // namespace vorel::conflicts
