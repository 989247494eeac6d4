#include "resolution/general_insertions.h"

#include <algorithm>
#include <iterator>

#include "resolution/persistency.h"

namespace vorel::resolution {
namespace {

using Transitions = std::vector<const net::StgTransition*>;

constexpr std::size_t most_sources = 3, most_insertions = 1000;

class Enumeration {
 public:
  Enumeration(const TransitionRelation& locks, std::span<const net::SignalId> signals)
      : locks_{locks} {
    for (const auto& vertex : locks)
      if (std::ranges::count(signals, base::id_of(*vertex.item->signal)) != 0)
        possible_.push_back(vertex.item);
  }

  std::vector<net::Insertion> run() {
    extend(0);
    std::ranges::sort(found_, insertion_less);
    return std::move(found_);
  }

 private:
  // By sources from this position on.
  void extend(std::size_t position) {
    for (; position < possible_.size() && found_.size() < most_insertions; ++position) {
      const net::StgTransition& next = *possible_[position];
      if (std::ranges::any_of(sources_,
                              [&](const auto* other) { return are_locked(*other, next); }))
        continue;
      sources_.push_back(&next);
      std::ranges::move(max_destination_cliques(sources_, locks_), std::back_inserter(found_));
      if (sources_.size() < most_sources) extend(position + 1);
      sources_.pop_back();
    }
  }

  bool are_locked(const net::StgTransition& a, const net::StgTransition& b) const {
    return has_edge(locks_, a.index, b.index) || has_edge(locks_, b.index, a.index);
  }

  const TransitionRelation& locks_;
  Transitions possible_;  // of the signals, by index
  Transitions sources_;
  std::vector<net::Insertion> found_;
};

}  // namespace

std::vector<net::Insertion> general_insertions(const net::StgPrefix& prefix,
                                               const TransitionRelation& locks,
                                               std::span<const net::SignalId> signals) {
  std::vector<net::Insertion> found = Enumeration(locks, signals).run();
  remove_hazards(prefix, found);
  return found;
}

}  // namespace vorel::resolution
