#include "resolution/lock_formula.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <utility>

#include "net/instances.h"

// What being locked comes to. Let the events of the signal s be e, the occurrences chosen n. No two
// of the n are concurrent, as candidates that are chosen together do not exclude each other.
//
// (1) No e is concurrent with an n.
// (2) Below each e there is at most one last event of s, its predecessor; else that many n would
//     have to come between some e and one of its predecessors, and from one n to the next, too,
//     comes just one e. So the e form a forest, and between an e and its predecessor is exactly
//     one n.
// (3) Call the last e below n its place. Two n in one place that come one after the other have the
//     same e before them: that may not be. If some e follows both, (2) says so already, and the
//     same is said of the first e and those that precede them.
// (4) All first e have the same number of n before them, and all first n have the same number of e
//     before them. One of these holds:
//       early: one n is before each first e. Then no e is before a first n.
//       late:  an e is before each n. Then (2) leaves no more than one before a first n, provided
//              that no n has several last events of s before it.
//     and, if no e has a predecessor,
//       apart: no e is before an n, nor an n before an e; by (1) they are in conflict.
//       pairs: each n comes after exactly two e, which are concurrent, and before none.
// From (1) to (4) it follows, by induction along chains, that the differences are constant.

namespace vorel::resolution {
namespace {

using net::SignalId;
using sat::Lit;
using sat::Lits;
using Event = net::StgPrefix::Event;
using Row = std::vector<std::uint64_t>;  // a word for each 64 occurrences

// The last event of a signal at or before another: its number, or one of these.
constexpr std::uint32_t none = base::no_index;
constexpr std::uint32_t several = none - 1;

void add_row(Row& row, base::BitRow other) {
  for (std::size_t i = 0; i < row.size(); ++i) row[i] |= other[i];
}
bool intersects(base::BitRow a, base::BitRow b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    if ((a[i] & b[i]) != 0) return true;
  return false;
}
void set_bit(Row& row, std::uint32_t number) {
  row[number / 64] |= std::uint64_t{1} << number % 64;
}
void clear_bit(Row& row, std::uint32_t number) {
  row[number / 64] &= ~(std::uint64_t{1} << number % 64);
}

class SignalLock {
 public:
  SignalLock(const OccurrenceOrder& order, CandidateGates& gates)
      : candidates_{gates.candidates()},
        prefix_{candidates_.prefix()},
        order_{order},
        gates_{gates},
        instances_{prefix_},
        last_(prefix_.events.size()),
        predecessor_(prefix_.events.size()),
        place_(candidates_.all_occurrences().size()),
        is_excluded_(candidates_.size()),
        unlocked_by_(candidates_.size()) {}

  Lit literal_of(SignalId signal) {
    edges_ = instances_.events_of(signal);
    has_chains_ = false;
    if (!find_last_events(signal)) return sat::LitFalse;
    find_places();
    exclude_candidates();
    if (!find_separators()) return sat::LitFalse;
    const Lit locked(gates_.formula().new_var(false), false);
    for (const CandidateId candidate : candidates_.all())
      if (is_excluded_[candidate]) unlocked_by_[candidate].push_back(locked);
    for (const CandidateList& set : separators_) require_some(locked, set);
    forbid_chains_in_places(locked);
    require_a_start(locked);
    return locked;
  }

  // To be called after the last signal. Many candidates unlock the same signals: an edge in one
  // component does so with all signals of the others.
  void emit_exclusions() {
    std::map<Lits, CandidateList> groups;
    for (const CandidateId candidate : candidates_.all())
      groups[unlocked_by_[candidate]].push_back(candidate);
    for (const auto& [locked, group] : groups) {
      if (locked.empty()) continue;
      const Lit chosen = gates_.any_of(group);
      for (const Lit lit : locked) gates_.add_clause(std::array{~lit, ~chosen});
    }
  }

 private:
  using Excluded = base::IndexedBy<net::Insertion, std::uint8_t>;

  // ---- The events of the signal before others

  // Whether the edge is the other one or before it.
  bool leads_to(std::uint32_t edge, std::uint32_t other) const {
    while (other != none && other > edge) other = predecessor_.at(other);
    return other == edge;
  }

  std::uint32_t last_of(std::uint32_t a, std::uint32_t b) const {
    if (a == b || b == none) return a;
    if (a == none) return b;
    if (a == several || b == several) return several;
    return leads_to(std::min(a, b), std::max(a, b)) ? std::max(a, b) : several;
  }

  // False if the events of the signal are not a forest.
  bool find_last_events(SignalId signal) {
    for (const auto& event : prefix_.events) {
      std::uint32_t last = none;
      for (const auto* condition : event->preset)
        if (!condition->is_initial()) last = last_of(last, last_[*condition->pre_event]);
      if (base::id_of(*event->transition->signal) == signal) {
        if (last == several) return false;
        predecessor_[*event] = last;
        if (last != none) has_chains_ = true;
        last = event->index;
      }
      last_[*event] = last;
    }
    return true;
  }

  void find_places() {
    for (const OccurrenceId id : candidates_.all_occurrences()) {
      std::uint32_t last = none;
      for (const auto cause : candidates_.occurrence(id).causes) last = last_of(last, last_[cause]);
      place_[id.value] = last;
    }
  }

  // ---- Candidates that cannot be chosen, and sets of which one has to be

  // Those with concurrent occurrences, and, where each place has one last event, others.
  void exclude_candidates() {
    Row together(words(), 0);
    followed_.assign(words(), 0);
    for (const Event* edge : edges_) {
      const auto id = base::id_of(*edge);
      const base::BitRow before = order_.before(id), after = order_.after(id),
                         conflicting = order_.conflicting(id);
      for (std::size_t i = 0; i < together.size(); ++i)
        together[i] |= ~(before[i] | after[i] | conflicting[i]);
      add_row(followed_, before);
    }
    set_excluded(is_excluded_, [&](OccurrenceId id) {
      return base::has_bit(together, id.value) || (has_chains_ && place_[id.value] == several);
    });
    good_.assign(words(), 0);
    for (const OccurrenceId id : candidates_.all_occurrences())
      if (!is_excluded_[candidates_.candidate_of(id)]) set_bit(good_, id.value);
  }

  template <class IsBad>
  void set_excluded(Excluded& excluded, const IsBad& is_bad) const {
    for (const CandidateId candidate : candidates_.all()) {
      const auto occurrences = candidates_.occurrences_of(candidate);
      excluded[candidate] = std::ranges::any_of(occurrences.begin(), occurrences.end(), is_bad);
    }
  }

  // One occurrence of these comes between two events of the signal, for each pair of neighbours.
  // False if there are none.
  bool find_separators() {
    separators_.clear();
    for (const Event* edge : edges_) {
      const std::uint32_t predecessor = predecessor_[*edge];
      if (predecessor == none) continue;
      Row between = good_before(*edge);
      const base::BitRow earlier = order_.before(OccurrenceOrder::EventId{predecessor});
      for (std::size_t i = 0; i < between.size(); ++i) between[i] &= ~earlier[i];
      CandidateList set = gates_.candidates_in(between);
      if (set.empty()) return false;
      separators_.insert(std::move(set));
    }
    return true;
  }

  Row good_before(const Event& edge) const {
    const base::BitRow before = order_.before(base::id_of(edge));
    Row row = good_;
    for (std::size_t i = 0; i < row.size(); ++i) row[i] &= before[i];
    return row;
  }

  void require_some(Lit condition, const CandidateList& set) {
    Lits clause = gates_.literals_of(set);
    clause.push_back(~condition);
    gates_.add_clause(clause);
  }

  // ---- One after the other in one place

  void forbid_chains_in_places(Lit locked) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> by_place;
    base::for_each_bit(good_, [&](std::uint32_t id) { by_place.emplace_back(place_[id], id); });
    std::ranges::sort(by_place);
    std::vector<std::uint32_t> members;
    for (std::size_t i = 0; i < by_place.size(); ++i) {
      members.push_back(by_place[i].second);
      if (i + 1 < by_place.size() && by_place[i + 1].first == by_place[i].first) continue;
      if (members.size() > 1) forbid_chains(locked, members);
      members.clear();
    }
  }

  // Sets without conflicts that contain each chain. Members that are concurrent exclude each other
  // already, so at most one of each set is chosen.
  void forbid_chains(Lit locked, std::span<const std::uint32_t> members) {
    Row all(words(), 0), uncovered(words(), 0);
    for (const std::uint32_t id : members) set_bit(all, id);
    for (const std::uint32_t id : members)
      if (!intersects(all, order_.after(OccurrenceId{id}))) set_bit(uncovered, id);
    for (const std::uint32_t last : members) {
      if (!base::has_bit(uncovered, last)) continue;
      const base::BitRow before = order_.before(OccurrenceId{last});
      Row set = all;
      for (std::size_t i = 0; i < set.size(); ++i) set[i] &= before[i];
      set_bit(set, last);
      for (const std::uint32_t id : members)
        if (!intersects(set, order_.conflicting(OccurrenceId{id}))) set_bit(set, id);
      CandidateList list;
      base::for_each_bit(set, [&](std::uint32_t id) {
        clear_bit(uncovered, id);
        list.push_back(candidates_.candidate_of(OccurrenceId{id}));
      });
      gates_.add_clause(std::array{~locked, gates_.at_most_one(list)});
    }
  }

  // ---- How it begins

  void require_a_start(Lit locked) {
    if (edges_.empty()) return;
    Lits starts{~locked};
    add_early_start(starts);
    add_start(starts, [this](OccurrenceId id) {
      return place_[id.value] == none || place_[id.value] == several;
    });
    if (!has_chains_) {
      add_start(starts, [this](OccurrenceId id) {
        return place_[id.value] != none || base::has_bit(followed_, id.value);
      });
      add_start(starts, [this](OccurrenceId id) {
        return edges_before(id) != 2 || base::has_bit(followed_, id.value);
      });
    }
    gates_.add_clause(starts);
  }

  void add_early_start(Lits& starts) {
    std::set<CandidateList> sets;
    for (const Event* edge : edges_) {
      if (predecessor_[*edge] != none) continue;
      sets.insert(gates_.candidates_in(good_before(*edge)));
      if (sets.begin()->empty()) return;
    }
    const Lit start = new_start(starts);
    for (const CandidateList& set : sets) require_some(start, set);
    exclude_more(start, [this](OccurrenceId id) { return place_[id.value] == several; });
  }

  template <class IsBad>
  void add_start(Lits& starts, const IsBad& is_bad) {
    exclude_more(new_start(starts), is_bad);
  }

  Lit new_start(Lits& starts) {
    starts.emplace_back(gates_.formula().new_var(false), false);
    return starts.back();
  }

  // Besides those that are excluded in any case.
  template <class IsBad>
  void exclude_more(Lit start, const IsBad& is_bad) {
    Excluded excluded(candidates_.size());
    set_excluded(excluded, is_bad);
    for (const CandidateId candidate : candidates_.all())
      if (excluded[candidate] && !is_excluded_[candidate])
        gates_.add_clause(std::array{~start, ~gates_.literal(candidate)});
  }

  std::size_t edges_before(OccurrenceId id) const {
    return static_cast<std::size_t>(std::ranges::count_if(edges_, [&](const Event* edge) {
      return base::has_bit(order_.after(base::id_of(*edge)), id.value);
    }));
  }

  std::size_t words() const { return (candidates_.all_occurrences().size() + 63) / 64; }

  const Candidates& candidates_;
  const net::StgPrefix& prefix_;
  const OccurrenceOrder& order_;
  CandidateGates& gates_;
  const net::Instances<net::StgPrefix> instances_;

  // Of the signal that is looked at.
  std::span<const Event* const> edges_;
  bool has_chains_ = false;                            // some edge has a predecessor
  base::IndexedBy<Event, std::uint32_t> last_;         // edge at or before the event
  base::IndexedBy<Event, std::uint32_t> predecessor_;  // of the edges
  std::vector<std::uint32_t> place_;                   // by occurrence
  Excluded is_excluded_;
  Row good_;      // occurrences of candidates that are not excluded
  Row followed_;  // occurrences before some edge
  std::set<CandidateList> separators_;

  base::IndexedBy<net::Insertion, Lits> unlocked_by_;  // by candidate
};

}  // namespace

SignalLits locked_signals(const OccurrenceOrder& order, CandidateGates& gates) {
  const net::StgPrefix& prefix = gates.candidates().prefix();
  SignalLits literals(prefix.signals.size(), sat::LitUninit);
  SignalLock lock(order, gates);
  for (const SignalId signal : prefix.visible_signals()) literals[signal] = lock.literal_of(signal);
  lock.emit_exclusions();
  return literals;
}

}  // namespace vorel::resolution
