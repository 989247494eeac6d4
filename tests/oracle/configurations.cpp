#include "oracle/configurations.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <utility>

namespace vorel::oracle {
namespace {

class Lister {
 public:
  Lister(const StgPrefix& prefix, const StateGraph<Stg>& graph, std::size_t max_configurations)
      : prefix_{prefix},
        left_{max_configurations},
        cut_(prefix.conditions.size()),
        inside_(prefix.events.size()) {
    for (std::uint32_t i = 0; i < graph.states.size(); ++i) {
      numbers_[{graph.states[i].marking, graph.states[i].parity}] = i;
    }
    for (const auto& condition : prefix.conditions)
      cut_[condition->index] = condition->is_initial();
  }

  std::optional<std::vector<Configuration>> run() {
    if (!list_from(0)) return std::nullopt;
    return std::move(found_);
  }

 private:
  using Event = StgPrefix::Event;

  bool list_from(std::size_t next) {
    if (next == inside_.size()) return ends_in_dummy() || enter();
    if (!list_from(next + 1)) return false;
    const Event& event = *prefix_.events[next];
    const auto is_marked = [this](const auto* condition) { return cut_[condition->index]; };
    if (event.is_cut_off() || !std::ranges::all_of(event.preset, is_marked)) return true;
    set(event, true);
    const bool listed = list_from(next + 1);
    set(event, false);
    return listed;
  }

  void set(const Event& event, bool fired) {
    inside_[event.index] = fired;
    for (const auto* condition : event.preset) cut_[condition->index] = !fired;
    for (const auto* condition : event.postset) cut_[condition->index] = fired;
  }

  bool ends_in_dummy() const {
    return std::ranges::any_of(prefix_.events, [this](const auto& event) {
      return inside_[event->index] && event->transition->signal->is_dummy() &&
             std::ranges::all_of(event->postset,
                                 [this](const auto* condition) { return cut_[condition->index]; });
    });
  }

  bool enter() {
    if (left_ == 0) return false;
    --left_;
    Marking marking(prefix_.places.size());
    for (const auto& condition : prefix_.conditions) {
      if (cut_[condition->index]) marking[condition->place->index] = true;
    }
    Parity parity(prefix_.signals.size());
    Configuration configuration;
    for (const auto& event : prefix_.events) {
      if (!inside_[event->index]) continue;
      configuration.events.push_back(event->index);
      count_edge(parity, *event->transition);
    }
    const auto state = numbers_.find({marking, parity});
    assert(state != numbers_.end() && "a prefix reaches nothing else than the net");
    configuration.state = state->second;
    found_.push_back(std::move(configuration));
    return true;
  }

  const StgPrefix& prefix_;
  std::size_t left_;
  std::map<std::pair<Marking, Parity>, std::uint32_t> numbers_;
  std::vector<bool> cut_, inside_;
  std::vector<Configuration> found_;
};

}  // namespace

std::optional<std::vector<Configuration>> configurations(const StgPrefix& prefix,
                                                         const StateGraph<Stg>& graph,
                                                         std::size_t max_configurations) {
  return Lister(prefix, graph, max_configurations).run();
}

}  // namespace vorel::oracle
