#include "configuration/implied_conflicts.h"

#include <algorithm>
#include <functional>
#include <span>
#include <vector>

#include "configuration/sorted_links.h"

namespace vorel::configuration {
namespace {

// One direction of conflicts: a condition has rivals, a rival has resources.
template <net::Process P>
struct Forward {
  using Condition = typename P::Condition;
  using Event = typename P::Event;
  static std::span<Event* const> rivals(const Condition& condition) { return condition.postset; }
  static constexpr auto resources = &Event::preset;
};
template <net::Process P>
struct Backward {
  using Condition = typename P::Condition;
  using Event = typename P::Event;
  static std::span<Event* const> rivals(const Condition& condition) { return condition.preset; }
  static constexpr auto resources = &Event::postset;
};

template <net::Process P, class Direction>
class ConflictCover {
 public:
  explicit ConflictCover(const P& process)
      : process_{process},
        resources_{process.events, Direction::resources},
        skip_(process.conditions.size()),
        rival_count_(process.conditions.size()) {
    for (const auto& condition : process.conditions) {
      rival_count_[*condition] = static_cast<std::uint32_t>(
          std::ranges::count_if(Direction::rivals(*condition), std::not_fn(&Event::is_cut_off)));
    }
  }

  base::IndexedBy<typename P::Condition, bool> run() && {
    for (const auto& condition : process_.conditions) {
      if (!skip_[*condition])
        skip_[*condition] = rival_count_[*condition] < 2 || is_covered(*condition);
    }
    return std::move(skip_);
  }

 private:
  using Condition = typename P::Condition;
  using Event = typename P::Event;

  // Whatever all rivals for the condition compete for is a resource of each: it is enough to look
  // at the one with the fewest. Of those with the same rivals only the condition itself stays.
  bool is_covered(const Condition& condition) {
    const auto rivals = Direction::rivals(condition);
    // A damaged file may name a rival twice; then the constraint says that it never fires.
    if (std::ranges::adjacent_find(rivals) != rivals.end()) return false;
    covers_.clear();
    for (const Condition* other : fewest_resources(rivals)) {
      const bool has_as_many = rival_count_[*other] >= rival_count_[condition];
      if (other != &condition && has_as_many && !skip_[*other]) covers_.push_back(other);
    }
    for (const Event* event : rivals) {
      if (covers_.empty()) return false;
      if (event->is_cut_off()) continue;
      std::erase_if(covers_, [this, event](const Condition* other) {
        return !resources_.contains(*event, other->index);
      });
    }
    for (const Condition* other : covers_) {
      if (rival_count_[*other] > rival_count_[condition]) return true;
      skip_[*other] = true;
    }
    return false;
  }

  static std::span<Condition* const> fewest_resources(std::span<Event* const> rivals) {
    std::span<Condition* const> fewest;
    for (const Event* event : rivals) {
      if (event->is_cut_off()) continue;
      const std::span<Condition* const> resources = event->*Direction::resources;
      if (fewest.empty() || resources.size() < fewest.size()) fewest = resources;
    }
    return fewest;
  }

  const P& process_;
  const SortedLinks<Event, Condition> resources_;
  base::IndexedBy<Condition, bool> skip_;
  base::IndexedBy<Condition, std::uint32_t> rival_count_;  // cut-offs left out
  std::vector<const Condition*> covers_;                   // scratch
};

}  // namespace

template <net::Process P>
base::IndexedBy<typename P::Condition, bool> skippable_conditions(const P& process) {
  return ConflictCover<P, Forward<P>>(process).run();
}

template <net::Process P>
base::IndexedBy<typename P::Condition, bool> implied_backward_conflicts(const P& process) {
  return ConflictCover<P, Backward<P>>(process).run();
}

#define INSTANTIATE(P) \
  template base::IndexedBy<P::Condition, bool> skippable_conditions<P>(const P&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE
#define INSTANTIATE(P) \
  template base::IndexedBy<P::Condition, bool> implied_backward_conflicts<P>(const P&);
VOREL_FOR_EACH_MERGED_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
