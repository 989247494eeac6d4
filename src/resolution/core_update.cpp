#include "resolution/core_update.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

#include "base/hashing.h"
#include "net/causality.h"

namespace vorel::resolution {
namespace {

using configuration::EventSet;
using configuration::StgEventId;
using conflicts::Core;
using Event = net::StgPrefix::Event;

class CoreUpdate {
 public:
  CoreUpdate(const net::StgPrefix& prefix, net::SignalId newest,
             const conflicts::KeepCore& is_conflict)
      : prefix_{prefix}, is_conflict_{is_conflict}, inside_{prefix.events.size()} {
    for (const auto& event : prefix.events) {
      if (base::id_of(*event->transition->signal) == newest && !event->is_cut_off())
        edges_.push_back(event.get());
    }
  }

  std::vector<Core> run(std::span<const Core> cores) && {
    for (const Core& core : cores) update(core);
    return std::move(updated_);
  }

 private:
  void update(const Core& core) {
    const auto one = completed(core.first), other = completed(core.second);
    if (!one || !other || keep(*one, *other)) return;
    const std::vector<EventSet> others = variants_of(*other);
    for (const EventSet& variant : variants_of(*one)) {
      for (const EventSet& other_variant : others) keep(variant, other_variant);
    }
  }

  bool keep(const EventSet& one, const EventSet& other) {
    if (one == other) return false;
    Core core(one, other);
    if (!is_conflict_(core)) return false;
    if (sums_.insert(core.sum).second) updated_.push_back(std::move(core));
    return true;
  }

  // With the causal predecessors that it lacks; nullopt if that is no configuration that a check
  // looks at.
  std::optional<EventSet> completed(const EventSet& set) {
    std::vector<Event*> events;
    for (const StgEventId id : set) events.push_back(&base::element(prefix_.events, id));
    const auto past = net::causal_past<net::Stg>(prefix_, events);
    EventSet whole = configuration::event_set({past.begin(), past.end()});
    if (std::ranges::any_of(past, &Event::is_cut_off)) return std::nullopt;
    if (!configuration::is_configuration(prefix_, whole)) return std::nullopt;
    return whole;
  }

  void mark(std::span<const Event* const> events) {
    inside_.clear();
    for (const Event* event : events) inside_.insert(*event);
  }

  bool has_rival_inside(const Event& event) const {
    return std::ranges::any_of(event.preset, [&](const auto* condition) {
      return std::ranges::any_of(condition->postset, [&](const Event* other) {
        return other != &event && inside_.contains(*other);
      });
    });
  }

  bool is_enabled(const Event& event) const {
    return !inside_.contains(event) && !has_rival_inside(event) &&
           std::ranges::all_of(event.preset, [this](const auto* condition) {
             return condition->is_initial() || inside_.contains(*condition->pre_event);
           });
  }

  // The configuration itself comes first.
  std::vector<EventSet> variants_of(const EventSet& set) {
    std::vector<EventSet> variants{set};
    mark(configuration::events_of(prefix_, set));
    for (const Event* edge : edges_) {
      if (!is_enabled(*edge)) continue;
      variants.push_back(set);
      EventSet& variant = variants.back();
      variant.insert(std::ranges::lower_bound(variant, base::id_of(*edge)), base::id_of(*edge));
    }
    const auto last = std::find_if(edges_.rbegin(), edges_.rend(),
                                   [this](const Event* edge) { return inside_.contains(*edge); });
    if (last != edges_.rend()) variants.push_back(without_future_of(**last, set));
    return variants;
  }

  EventSet without_future_of(const Event& event, const EventSet& set) {
    std::vector<const Event*> open{&event};
    inside_.erase(event);
    while (!open.empty()) {
      const Event& removed = *open.back();
      open.pop_back();
      for (const auto* condition : removed.postset) {
        for (const Event* next : condition->postset) {
          if (!inside_.contains(*next)) continue;
          inside_.erase(*next);
          open.push_back(next);
        }
      }
    }
    EventSet rest;
    std::ranges::copy_if(set, std::back_inserter(rest),
                         [this](StgEventId id) { return inside_.contains(id); });
    return configuration::without_maximal_dummies(prefix_, rest);
  }

  const net::StgPrefix& prefix_;
  const conflicts::KeepCore& is_conflict_;
  base::MarkSet<Event> inside_;  // scratch: the configuration at hand
  std::vector<const Event*> edges_;
  std::vector<Core> updated_;
  std::unordered_set<EventSet, base::SequenceHash> sums_;
};

}  // namespace

std::vector<Core> updated_cores(const net::StgPrefix& prefix, std::span<const Core> cores,
                                net::SignalId newest, const conflicts::KeepCore& is_conflict) {
  return CoreUpdate(prefix, newest, is_conflict).run(cores);
}

}  // namespace vorel::resolution
