#include "resolution/insertion_mutex.h"

#include <algorithm>
#include <iostream>
#include <vector>

#include "base/messages.h"
#include "base/run_state.h"
#include "resolution/transformation.h"

namespace vorel::resolution {
namespace {

constexpr int verbosity_of_graph = 4;

using Places = std::vector<const net::StgPlace*>;

bool have_common_place(const Places& a, const Places& b) {
  auto i = a.begin(), j = b.begin();
  while (i != a.end() && j != b.end()) {
    if (*i == *j) return true;
    (*i)->index < (*j)->index ? ++i : ++j;
  }
  return false;
}

// Whether they are before or after the same transition, and with what places.
struct Site {
  const net::StgTransition* transition = nullptr;  // null for a concurrent one
  const Places* places = nullptr;
};
Site site_of(const net::Insertion& insertion) {
  if (const auto* before = std::get_if<net::SeqBefore>(&insertion))
    return {before->target, &before->places};
  if (const auto* after = std::get_if<net::SeqAfter>(&insertion))
    return {after->source, &after->places};
  return {};
}

// Candidates at one site stand next to each other in the order.
void join_overlapping(const Candidates& candidates, toolkit::BitGraph& graph) {
  for (std::uint32_t a = 0; a < candidates.size(); ++a) {
    const net::Insertion& one = candidates.insertion({a});
    const Site site = site_of(one);
    if (site.transition == nullptr) return;
    for (std::uint32_t b = a + 1; b < candidates.size(); ++b) {
      const net::Insertion& other = candidates.insertion({b});
      const Site next = site_of(other);
      if (one.index() != other.index() || next.transition != site.transition) break;
      if (have_common_place(*site.places, *next.places)) graph.add_edge(a, b);
    }
  }
}

class ConcurrencySearch {
 public:
  ConcurrencySearch(const Candidates& candidates, const OccurrenceOrder& order)
      : candidates_{candidates},
        order_{order},
        concurrent_((candidates.all_occurrences().size() + 63) / 64) {}

  // The candidates with greater numbers.
  template <class Visit>
  void for_each_partner(CandidateId candidate, const Visit& visit) {
    std::ranges::fill(concurrent_, 0);
    for (const OccurrenceId id : candidates_.occurrences_of(candidate)) add_concurrent(id);
    const std::uint32_t end = candidates_.all_occurrences().size();
    const base::IdRange<EdgeOccurrence> own = candidates_.occurrences_of(candidate);
    std::uint32_t next = (*own.begin()).value + own.size();
    while ((next = first_from(next)) < end) {
      const CandidateId partner = candidates_.candidate_of({next});
      visit(partner);
      const base::IdRange<EdgeOccurrence> seen = candidates_.occurrences_of(partner);
      next = (*seen.begin()).value + seen.size();
    }
  }

 private:
  void add_concurrent(OccurrenceId id) {
    const base::BitRow before = order_.before(id), after = order_.after(id),
                       conflicting = order_.conflicting(id);
    for (std::size_t i = 0; i < concurrent_.size(); ++i)
      concurrent_[i] |= ~(before[i] | after[i] | conflicting[i]);
  }

  // The first concurrent occurrence of this number or a greater one; bits at the end that stand for
  // none may be set.
  std::uint32_t first_from(std::uint32_t number) const {
    std::size_t word = number / 64;
    if (word == concurrent_.size()) return number;
    std::uint64_t rest = concurrent_[word] >> number % 64 << number % 64;
    while (rest == 0) {
      if (++word == concurrent_.size()) return static_cast<std::uint32_t>(word * 64);
      rest = concurrent_[word];
    }
    return static_cast<std::uint32_t>(word * 64) +
           static_cast<std::uint32_t>(std::countr_zero(rest));
  }

  const Candidates& candidates_;
  const OccurrenceOrder& order_;
  std::vector<std::uint64_t> concurrent_;  // with some occurrence of the candidate under work
};

void print_graph(std::ostream& stream, const Candidates& candidates,
                 const toolkit::BitGraph& graph) {
  std::uint64_t degrees = 0;
  for (std::uint32_t a = 0; a < graph.size(); ++a) degrees += graph.degree(a);
  stream << "\nMutex relation: |V|=" << graph.size() << " |E|=" << degrees / 2;
  for (const CandidateId a : candidates.all()) {
    stream << '\n' << to_text(candidates.insertion(a)) << ':';
    base::for_each_bit(graph.neighbours(a.value), [&](std::uint32_t b) {
      stream << ' ' << to_text(candidates.insertion({b}));
    });
  }
  stream << std::flush;
}

}  // namespace

toolkit::BitGraph insertion_mutex(const Candidates& candidates, const OccurrenceOrder& order) {
  toolkit::BitGraph graph(candidates.size());
  join_overlapping(candidates, graph);
  ConcurrencySearch search(candidates, order);
  for (const CandidateId a : candidates.all())
    search.for_each_partner(a, [&](CandidateId b) { graph.add_edge(a.value, b.value); });
  if (base::verbosity() >= verbosity_of_graph) print_graph(std::cerr, candidates, graph);
  return graph;
}

}  // namespace vorel::resolution
