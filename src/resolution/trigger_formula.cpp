#include "resolution/trigger_formula.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

#include "configuration/triggers.h"
#include "net/instances.h"
#include "sat/integer_circuit.h"

namespace vorel::resolution {
namespace {

using net::Signal;
using net::SignalId;
using sat::Lit;
using sat::Lits;
using Event = net::StgPrefix::Event;
using Events = std::vector<const Event*>;

// A word for each 64 occurrences.
using Row = std::vector<std::uint64_t>;

// The signals that trigger one signal: some do in any case, others under a condition each.
struct TriggerCount {
  std::uint64_t certain = 0;
  Lits possible;
};

class TriggerFormula {
 public:
  TriggerFormula(const OccurrenceOrder& order, CandidateGates& gates)
      : candidates_{gates.candidates()},
        prefix_{candidates_.prefix()},
        order_{order},
        gates_{gates},
        finder_{prefix_},
        instances_{prefix_} {}

  std::vector<TriggerCount> run() {
    std::vector<TriggerCount> counts;
    for (const SignalId signal : prefix_.driven_signals()) counts.push_back(count_of(signal));
    counts.push_back(count_of_new_signal());
    return counts;
  }

  // Whether some event of the signal comes right after an edge that is chosen.
  Lit is_triggered_by_new_signal(SignalId signal) {
    Row followed(words(), 0);
    for (const Event* event : instances_.events_of(signal)) {
      const Row direct = direct_before(base::id_of(*event), finder_.triggers_of(*event));
      for (std::size_t i = 0; i < followed.size(); ++i) followed[i] |= direct[i];
    }
    return gates_.any_of(gates_.candidates_in(followed));
  }

 private:
  // One way in which a signal can trigger another: a candidate is chosen, or nothing has to be,
  // and none of the others is.
  struct Way {
    CandidateId chosen;  // no_index: nothing has to be
    CandidateList others;
    auto operator<=>(const Way&) const = default;
  };
  using Ways = std::map<SignalId, std::set<Way>>;

  // The occurrences before the node (an event or an occurrence) that are before none of its
  // triggers.
  template <class Node>
  Row direct_before(Node node, const Events& triggers) const {
    const base::BitRow before = order_.before(node);
    Row row(before.begin(), before.end());
    for (const Event* trigger : triggers) {
      const base::BitRow hidden = order_.before(base::id_of(*trigger));
      for (std::size_t i = 0; i < row.size(); ++i) row[i] &= ~hidden[i];
    }
    return row;
  }

  void add_ways(const Events& triggers, const Row& direct, CandidateId chosen, Ways& ways) const {
    for (const Event* trigger : triggers) {
      Row between = direct;
      const base::BitRow after = order_.after(base::id_of(*trigger));
      for (std::size_t i = 0; i < between.size(); ++i) between[i] &= after[i];
      CandidateList others = gates_.candidates_in(between);
      if (std::ranges::binary_search(others, chosen)) continue;
      ways[base::id_of(*trigger->transition->signal)].insert({chosen, std::move(others)});
    }
  }

  TriggerCount count_of(SignalId signal) {
    Ways ways;
    for (const Event* event : instances_.events_of(signal)) {
      const Events triggers = finder_.triggers_of(*event);
      const Row direct = direct_before(base::id_of(*event), triggers);
      add_ways(triggers, direct, {}, ways);
    }
    TriggerCount count = count_of(ways);
    count.possible.push_back(is_triggered_by_new_signal(signal));
    return count;
  }

  TriggerCount count_of_new_signal() {
    Ways ways;
    Lits itself;
    for (const CandidateId candidate : candidates_.all()) {
      Row followed(words(), 0);
      for (const OccurrenceId id : candidates_.occurrences_of(candidate)) {
        const Events triggers = finder_.triggers_after(
            configuration::events_of(prefix_, candidates_.occurrence(id).causes));
        const Row direct = direct_before(id, triggers);
        add_ways(triggers, direct, candidate, ways);
        for (std::size_t i = 0; i < followed.size(); ++i) followed[i] |= direct[i];
      }
      const CandidateList before = gates_.candidates_in(followed);
      if (before.empty()) continue;
      itself.push_back(both(gates_.literal(candidate), gates_.any_of(before)));
    }
    TriggerCount count = count_of(ways);
    count.possible.push_back(gates_.make_gate(sat::GateOr, itself));
    return count;
  }

  TriggerCount count_of(const Ways& ways) {
    TriggerCount count;
    for (const auto& entry : ways) {
      const Lit triggers = literal_of(entry.second);
      if (triggers == sat::LitTrue)
        ++count.certain;
      else
        count.possible.push_back(triggers);
    }
    return count;
  }

  // Ways are sorted: one that excludes nothing comes first of those that need the same.
  Lit literal_of(const std::set<Way>& ways) {
    Lits lits;
    const Way* unconditional = nullptr;
    for (const Way& way : ways) {
      if (unconditional != nullptr && unconditional->chosen == way.chosen) continue;
      if (way.others.empty()) unconditional = &way;
      const bool is_free = way.chosen == CandidateId{};
      const Lit needed = is_free ? sat::LitTrue : gates_.literal(way.chosen);
      lits.push_back(both(needed, ~gates_.any_of(way.others)));
      if (lits.back() == sat::LitTrue) return sat::LitTrue;
    }
    return gates_.make_gate(sat::GateOr, lits);
  }

  Lit both(Lit a, Lit b) { return gates_.make_gate(sat::GateAnd, std::array{a, b}); }
  std::size_t words() const { return (candidates_.all_occurrences().size() + 63) / 64; }

  const Candidates& candidates_;
  const net::StgPrefix& prefix_;
  const OccurrenceOrder& order_;
  CandidateGates& gates_;
  configuration::TriggerFinder finder_;
  const net::Instances<net::StgPrefix> instances_;
};

// 2 to the power of a count has one bit set, that of the count. As in the evaluation, what goes
// beyond 64 bits is lost.
void add_power(const TriggerCount& count, sat::CnfFormula& formula, sat::ClauseGroup group,
               std::vector<sat::WeightedLit>& literals) {
  constexpr std::uint64_t bits = 64;
  sat::IntegerCircuit circuit(formula);
  const Lits number = circuit.count_ones(count.possible, group);
  const Lits values = circuit.decode(number, count.possible.size(), group);
  for (std::size_t i = 0; i < values.size() && count.certain + i < bits; ++i)
    literals.push_back({values[i], std::uint64_t{1} << (count.certain + i)});
}

}  // namespace

Lits acknowledgements(const OccurrenceOrder& order, CandidateGates& gates) {
  TriggerFormula formula(order, gates);
  Lits lits;
  for (const SignalId signal : gates.candidates().prefix().driven_signals())
    lits.push_back(formula.is_triggered_by_new_signal(signal));
  return lits;
}

std::vector<sat::WeightedLit> logic_literals(const OccurrenceOrder& order, bool pwr_of_2,
                                             CandidateGates& gates, sat::ClauseGroup group) {
  std::vector<sat::WeightedLit> literals;
  for (const TriggerCount& count : TriggerFormula(order, gates).run()) {
    if (pwr_of_2) {
      add_power(count, gates.formula(), group, literals);
    } else {
      literals.push_back({sat::LitTrue, count.certain});
      for (const Lit lit : count.possible) literals.push_back({lit, 1});
    }
  }
  return literals;
}

}  // namespace vorel::resolution
