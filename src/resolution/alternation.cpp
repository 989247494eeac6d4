#include "resolution/alternation.h"

#include <algorithm>
#include <bit>
#include <deque>
#include <unordered_map>
#include <utility>

#include "base/hashing.h"
#include "base/sort_unique.h"

namespace vorel::resolution {
namespace {

using configuration::EventSet;
using Event = net::StgPrefix::Event;
using sat::Lit;
using sat::Lits;
using Words = std::vector<std::uint64_t>;

std::uint32_t size_of(base::BitRow row) {
  int size = 0;
  for (const std::uint64_t word : row) size += std::popcount(word);
  return static_cast<std::uint32_t>(size);
}

// The value of the new signal behind sets of occurrences.
class SignalValues {
 public:
  SignalValues(const Candidates& candidates, const OccurrenceOrder& order,
               const CandidateLits& chosen, sat::SumsTreeBuilder& parities,
               sat::CnfFormula& formula, sat::ClauseGroup group)
      : candidates_{candidates},
        order_{order},
        chosen_{chosen},
        parities_{parities},
        formula_{formula},
        group_{group},
        sizes_(candidates.prefix().events.size()),
        after_(candidates.prefix().events.size()) {
    for (const auto& event : candidates.prefix().events) {
      const base::BitRow row = order.before(base::id_of(*event));
      sizes_[*event] = size_of(row);
      after_[*event] = value_after(row, causes_of(*event));
    }
  }

  Lit after(const Event& event) const { return after_[event]; }
  Lit before(OccurrenceId id) {
    return value_after(order_.before(id), candidates_.occurrence(id).causes);
  }
  // After all of the events, which are one configuration.
  Lit after_all(std::span<Event* const> events) {
    if (events.empty()) return sat::LitFalse;
    if (events.size() == 1) return after(*events.front());
    Words& row = unions_.emplace_back();
    EventSet causes;
    for (const Event* event : events) {
      const base::BitRow more = order_.before(base::id_of(*event));
      row.resize(more.size());
      for (std::size_t i = 0; i < row.size(); ++i) row[i] |= more[i];
      causes.push_back(base::id_of(*event));
    }
    return value_after(row, causes);
  }

 private:
  struct SameRow {
    bool operator()(base::BitRow a, base::BitRow b) const { return std::ranges::equal(a, b); }
  };

  static EventSet causes_of(const Event& event) {
    EventSet causes;
    for (const auto* condition : event.preset) {
      if (condition->is_initial()) continue;
      assert(condition->pre_event->index < event.index && "events are numbered causally");
      causes.push_back(base::id_of(*condition->pre_event));
    }
    return causes;
  }

  // The parity of the occurrences of the row: that at the cause which has most of them, and how
  // many more there are. The latter recurs wherever the same happens again.
  Lit value_after(base::BitRow row, const EventSet& causes) {
    const auto [entry, is_new] = known_.try_emplace(row);
    if (!is_new) return entry->second;
    const auto nearest =
        std::ranges::max_element(causes, {}, [this](auto id) { return sizes_[id]; });
    const bool has_cause = nearest != causes.end();
    const base::BitRow known = has_cause ? order_.before(*nearest) : base::BitRow{};
    between_.assign(row.begin(), row.end());
    for (std::size_t i = 0; i < known.size(); ++i) {
      assert((known[i] & ~row[i]) == 0 && "what comes before a cause comes before its effects");
      between_[i] ^= known[i];
    }
    set_.clear();
    base::for_each_bit(between_, [this](std::uint32_t number) {
      set_.push_back(chosen_[candidates_.candidate_of({number})]);
    });
    const Lit change = parities_.sums_literal(set_);
    const Lit start = has_cause ? after_[*nearest] : sat::LitFalse;
    return entry->second = formula_.make_gate(sat::Gate(sat::GateXor, {start, change}), group_);
  }

  const Candidates& candidates_;
  const OccurrenceOrder& order_;
  const CandidateLits& chosen_;
  sat::SumsTreeBuilder& parities_;
  sat::CnfFormula& formula_;
  const sat::ClauseGroup group_;
  base::IndexedBy<Event, std::uint32_t> sizes_;  // of the rows
  base::IndexedBy<Event, Lit> after_;
  std::deque<Words> unions_;  // rows of several events; entries stay where they are
  std::unordered_map<base::BitRow, Lit, base::SequenceHash, SameRow> known_;
  Lits set_;       // scratch
  Words between_;  // scratch
};

// Where the condition holds, the two are equal.
void add_equality(Lit condition, Lit a, Lit b, sat::CnfFormula& formula, sat::ClauseGroup group) {
  if (a == b) return;
  formula.add_clause(Lits{~condition, ~a, b}, group);
  formula.add_clause(Lits{~condition, a, ~b}, group);
}

}  // namespace

CandidateLits add_alternation(const Candidates& candidates, const OccurrenceOrder& order,
                              const CandidateLits& chosen, sat::SumsTreeBuilder& parities,
                              sat::CnfFormula& formula, sat::ClauseGroup group) {
  SignalValues values(candidates, order, chosen, parities, formula, group);
  CandidateLits values_before(candidates.size());
  for (const CandidateId candidate : candidates.all()) {
    Lits found;
    for (const OccurrenceId id : candidates.occurrences_of(candidate))
      found.push_back(values.before(id));
    assert(!found.empty() && "a valid candidate has an occurrence");
    values_before[candidate] = found.front();
    base::sort_unique(found);
    for (std::size_t i = 1; i < found.size(); ++i)
      add_equality(chosen[candidate], found[i - 1], found[i], formula, group);
  }
  std::vector<std::pair<Lit, Lit>> at_cut_offs;
  for (const auto& event : candidates.prefix().events)
    if (event->is_cut_off())
      at_cut_offs.emplace_back(values.after(*event),
                               values.after_all(event->cut_off.correspondents()));
  base::sort_unique(at_cut_offs);
  for (const auto& [here, there] : at_cut_offs)
    add_equality(sat::LitTrue, here, there, formula, group);
  return values_before;
}

std::vector<net::Sign> edge_signs(const Candidates& candidates, const OccurrenceOrder& order,
                                  std::span<const CandidateId> chosen, std::uint8_t initial_value) {
  assert(initial_value <= 1);
  Words is_chosen((candidates.all_occurrences().size() + 63) / 64);
  for (const CandidateId candidate : chosen)
    for (const OccurrenceId id : candidates.occurrences_of(candidate))
      is_chosen[id.value / 64] |= std::uint64_t{1} << id.value % 64;
  const auto sign_of = [&](OccurrenceId id) {
    const base::BitRow row = order.before(id);
    int edges = initial_value;
    for (std::size_t i = 0; i < row.size(); ++i) edges += std::popcount(row[i] & is_chosen[i]);
    return edges % 2 == 0 ? net::Sign::plus : net::Sign::minus;
  };
  std::vector<net::Sign> signs;
  for (const CandidateId candidate : chosen) {
    const auto occurrences = candidates.occurrences_of(candidate);
    assert(occurrences.size() > 0 && "a valid candidate has an occurrence");
    signs.push_back(sign_of(*occurrences.begin()));
    assert(std::all_of(occurrences.begin(), occurrences.end(),
                       [&](OccurrenceId id) { return sign_of(id) == signs.back(); }) &&
           "all occurrences of an edge have one sign");
  }
  return signs;
}

}  // namespace vorel::resolution
