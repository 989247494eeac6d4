#include "resolution/candidates.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/sort_unique.h"
#include "net/event_relations.h"
#include "net/general_occurrences.h"
#include "net/instances.h"

namespace vorel::resolution {

using configuration::EventSet;
using Condition = net::StgPrefix::Condition;
using Event = net::StgPrefix::Event;

class Candidates::Maker {
 public:
  explicit Maker(Candidates& made) : made_{made}, instances_{made.prefix_} {}

  void make(const net::Insertion& insertion) {
    std::visit([this](const auto& kind) { make(kind); }, insertion);
  }

 private:
  void make(const net::SeqBefore& insertion) {
    for (const net::CoSet& conditions : net::co_sets(made_.prefix_, insertion.places)) {
      EdgeOccurrence occurrence;
      for (const Condition* condition : conditions) {
        if (!condition->is_initial())
          occurrence.causes.push_back(base::id_of(*condition->pre_event));
        occurrence.consumed.push_back(base::id_of(*condition));
      }
      for (const Event* event : conditions.front()->postset) {
        const bool takes_all = std::ranges::all_of(conditions, [event](const Condition* condition) {
          return std::ranges::find(event->preset, condition) != event->preset.end();
        });
        if (takes_all) occurrence.followers.push_back(base::id_of(*event));
      }
      add(std::move(occurrence));
    }
  }

  void make(const net::SeqAfter& insertion) {
    for (const Event* event : instances_.events_of(base::id_of(*insertion.source))) {
      if (event->is_cut_off()) continue;
      EdgeOccurrence occurrence;
      occurrence.causes.push_back(base::id_of(*event));
      for (const Condition* condition : event->postset) {
        if (std::ranges::find(insertion.places, condition->place) == insertion.places.end())
          continue;
        occurrence.moved.push_back(base::id_of(*condition));
        for (const Event* consumer : condition->postset)
          occurrence.followers.push_back(base::id_of(*consumer));
      }
      add(std::move(occurrence));
    }
  }

  void make(const net::Concurrent& insertion) {
    find_last_before(*insertion.source);
    const std::span<const Event* const> sources =
        instances_.events_of(base::id_of(*insertion.source));
    // By the position of the source event; the last is the initial token.
    std::vector<EventSet> followers(sources.size() + 1);
    for (const Event* event : instances_.events_of(base::id_of(*insertion.target))) {
      const Event* const last = last_before_[*event];
      const auto position = std::ranges::find(sources, last) - sources.begin();
      followers[static_cast<std::size_t>(position)].push_back(base::id_of(*event));
    }
    if (insertion.marked) add({.causes = {}, .followers = std::move(followers.back())});
    for (std::size_t i = 0; i < sources.size(); ++i) {
      if (sources[i]->is_cut_off()) continue;
      add({.causes = {base::id_of(*sources[i])}, .followers = std::move(followers[i])});
    }
  }

  void make(const net::General& insertion) {
    for (const net::GeneralOccurrence& made : net::general_occurrences(made_.prefix_, insertion)) {
      EdgeOccurrence occurrence;
      for (const Event* event : made.sources) {
        if (event != nullptr) occurrence.causes.push_back(base::id_of(*event));
      }
      for (const Event* event : made.followers) occurrence.followers.push_back(base::id_of(*event));
      add(std::move(occurrence));
    }
  }

  // In a safe net the events of one transition in a configuration are a chain: the last one comes
  // last in any causal order.
  void find_last_before(const net::StgTransition& source) {
    if (&source == source_) return;  // candidates come sorted by source
    source_ = &source;
    last_before_ = base::IndexedBy<Event, const Event*>(made_.prefix_.events.size());
    for (const auto& event : made_.prefix_.events) {
      const Event*& last = last_before_[*event];
      for (const Condition* condition : event->preset) {
        if (condition->is_initial()) continue;
        const Event& producer = *condition->pre_event;
        assert(producer.index < event->index && "events are numbered causally");
        const Event* const other =
            producer.transition == &source ? &producer : last_before_[producer];
        if (last == nullptr || (other != nullptr && other->index > last->index)) last = other;
      }
    }
  }

  void add(EdgeOccurrence occurrence) {
    base::sort_unique(occurrence.causes);
    base::sort_unique(occurrence.followers);
    made_.occurrences_.push_back(std::move(occurrence));
  }

  Candidates& made_;
  const net::Instances<net::StgPrefix> instances_;
  const net::StgTransition* source_ = nullptr;  // that the table is for
  base::IndexedBy<Event, const Event*> last_before_;
};

Candidates::Candidates(const net::StgPrefix& prefix, std::vector<net::Insertion> insertions)
    : prefix_{prefix}, insertions_{std::move(insertions)} {
  Maker maker(*this);
  begins_.push_back(0);
  for (const CandidateId candidate : all()) {
    maker.make(insertion(candidate));
    begins_.push_back(static_cast<std::uint32_t>(occurrences_.size()));
    candidate_of_.resize(occurrences_.size(), candidate);
  }
}

SignalInsertion insertions_of(const Candidates& candidates, const Choice& chosen) {
  SignalInsertion insertions;
  for (const CandidateId candidate : candidates.all())
    if (chosen[candidate]) insertions.push_back(candidates.insertion(candidate));
  return insertions;
}

}  // namespace vorel::resolution
