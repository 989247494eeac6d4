#include "configuration/dummy_cutoffs.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/indexed_by.h"

namespace vorel::configuration {
namespace {

using Event = net::StgPrefix::Event;

// Walks through the pasts of cut-offs; a past is left at the first event that decides.
class PastCheck {
 public:
  explicit PastCheck(const net::StgPrefix& prefix)
      : seen_(prefix.events.size()), correspondents_(prefix.events.size()) {}

  bool is_harmless(const Event& cut_off) {
    if (cut_off.cut_off.is_unknown()) return false;
    const auto correspondents = cut_off.cut_off.correspondents();
    if (correspondents.size() == 1) return false;
    correspondents_.clear();
    for (const Event* event : correspondents) correspondents_.insert(*event);
    return count_correspondents_among_dummies(cut_off) == correspondents.size();
  }

 private:
  // How many of the correspondents are in the past; none if it holds another event of a signal.
  std::optional<std::size_t> count_correspondents_among_dummies(const Event& cut_off) {
    seen_.clear();
    seen_.insert(cut_off);
    past_.assign({&cut_off});
    std::size_t found = 0;
    for (std::size_t next = 0; next < past_.size(); ++next) {
      const Event& event = *past_[next];
      if (correspondents_.contains(event))
        ++found;
      else if (!net::is_dummy(event))
        return std::nullopt;
      for (const auto* condition : event.preset) {
        if (!condition->is_initial() && seen_.insert(*condition->pre_event))
          past_.push_back(condition->pre_event);
      }
    }
    return found;
  }

  base::MarkSet<Event> seen_, correspondents_;
  std::vector<const Event*> past_;
};

// Whether the configuration that a cut-off corresponds to ends in a dummy. Of one event, that event
// with its past; of several, just these.
bool corresponds_to_dummy_end(const Event& cut_off) {
  if (cut_off.cut_off.is_unknown()) return false;
  const auto events = cut_off.cut_off.correspondents();
  return std::ranges::any_of(events, [&events](const Event* event) {
    if (!net::is_dummy(*event)) return false;
    return std::ranges::none_of(event->postset, [&events](const auto* condition) {
      return std::ranges::any_of(condition->postset, [&events](const Event* consumer) {
        return std::ranges::find(events, consumer) != events.end();
      });
    });
  });
}

}  // namespace

bool has_edges_cut_at_dummies(const net::StgPrefix& prefix) {
  return std::ranges::any_of(prefix.events, [](const auto& event) {
    return event->is_cut_off() && !net::is_dummy(*event) && corresponds_to_dummy_end(*event);
  });
}

bool has_dummy_cutoffs(const net::StgPrefix& prefix) {
  PastCheck check(prefix);
  return std::ranges::any_of(prefix.events, [&check](const auto& event) {
    return event->is_cut_off() && net::is_dummy(*event) && !check.is_harmless(*event);
  });
}

bool has_dummy_cutoffs(const net::StgMergedProcess& process) {
  return std::ranges::any_of(process.events, [](const auto& event) {
    return event->is_cut_off() && net::is_dummy(*event);
  });
}

}  // namespace vorel::configuration
