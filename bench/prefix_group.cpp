#include "bench/prefix_group.h"

#include <cassert>
#include <map>
#include <sstream>

namespace vorel::bench {
namespace {

using Numbers = Group::Numbers;

std::vector<std::string> words_of(std::string_view text) {
  std::istringstream stream{std::string(text)};
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

Numbers numbers_of(std::string_view text) {
  Numbers numbers;
  for (const std::string& word : words_of(text)) {
    numbers.push_back(static_cast<std::uint32_t>(std::stoul(word)));
  }
  return numbers;
}

class GroupMaker {
 public:
  explicit GroupMaker(const GroupShape& shape) : shape_{shape} {
    assert(shape.stages >= 2 && shape.stages % 2 == 0 && !shape.modules.empty());
  }

  Group run() {
    for (std::uint32_t value = 0; value < shape_.stages; ++value) {
      counter_places_.push_back(add_place("c" + std::to_string(value)));
    }
    for (std::uint32_t i = 0; i < shape_.modules.size(); ++i) {
      for (const bool falls : {false, true}) add_module(i, falls);
    }
    for (std::uint32_t value = 0; value < shape_.stages; ++value) add_step(value);
    add_initial_conditions();
    for (std::uint32_t value = 0; value < shape_.stages; ++value) unroll_stage(value);
    return std::move(group_);
  }

 private:
  // One module with the places and transitions of one direction.
  struct Half {
    const Module* module;
    Numbers entry, exit;  // places
    std::uint32_t first_transition;
    Numbers open;  // conditions of the entry places, in the stage that is being unrolled
  };

  std::uint32_t add_place(const std::string& name) {
    group_.places.push_back(name);
    return static_cast<std::uint32_t>(group_.places.size() - 1);
  }

  std::uint32_t signal(const std::string& name) {
    const auto next = static_cast<std::uint32_t>(group_.signals.size());
    const auto [known, is_new] = signals_.emplace(name, next);
    if (is_new) group_.signals.push_back(name);
    return known->second;
  }

  void add_transition(const std::string& signal_name, bool falls, Numbers preset, Numbers postset) {
    const std::string edge = signal_name + (falls ? "-" : "+");
    const std::string name = edge + "/" + std::to_string(++instances_[edge]);
    group_.transitions.push_back(
        {name, signal(signal_name), falls, std::move(preset), std::move(postset)});
  }

  void add_module(std::uint32_t number, bool falls) {
    const Module& module = module_of(shape_.modules[number]);
    const std::string name = "m" + std::to_string(number);
    std::map<std::string, std::uint32_t> places;
    const auto places_of = [&](std::string_view text) {
      Numbers result;
      for (const std::string& word : words_of(text)) {
        const auto known = places.find(word);
        result.push_back(known != places.end() ? known->second
                                               : add_place(name + (falls ? "f" : "r") + word));
        places.emplace(word, result.back());
      }
      return result;
    };
    Half half{&module, places_of(module.entry), {}, 0, {}};
    half.first_transition = static_cast<std::uint32_t>(group_.transitions.size());
    for (const ModuleTransition& t : module.transitions) {
      add_transition(name + t.signal, falls, places_of(t.preset), places_of(t.postset));
    }
    half.exit = exit_places(half);
    halves_[falls ? 1 : 0].push_back(std::move(half));
  }

  // The places of the module's exit conditions, found by counting conditions.
  Numbers exit_places(const Half& half) const {
    Numbers place_of_condition = half.entry;
    for (const ModuleEvent& event : half.module->events) {
      const Numbers& postset = group_.transitions[half.first_transition + event.transition].postset;
      place_of_condition.insert(place_of_condition.end(), postset.begin(), postset.end());
    }
    Numbers places;
    for (const std::uint32_t number : numbers_of(half.module->exit_conditions)) {
      places.push_back(place_of_condition[number]);
    }
    return places;
  }

  bool is_last(std::uint32_t value) const { return value + 1 == shape_.stages; }
  std::vector<Half>& halves_in(std::uint32_t value) { return halves_[value % 2]; }

  // A Gray code of the counter's values that is cyclic for every even number of them: the first
  // half counts up, the second half counts down with one more bit set.
  std::uint32_t code(std::uint32_t value) const {
    const std::uint32_t half = shape_.stages / 2;
    const std::uint32_t position = value < half ? value : shape_.stages - 1 - value;
    return (position ^ (position >> 1)) << 1 | (value < half ? 0u : 1u);
  }

  // The transition that counts on from this value.
  void add_step(std::uint32_t value) {
    if (is_last(value) && shape_.ending == GroupEnding::ends) return;
    const std::uint32_t next = (value + 1) % shape_.stages;
    Numbers preset{counter_places_[value]}, postset{counter_places_[next]};
    for (const Half& half : halves_in(value)) {
      preset.insert(preset.end(), half.exit.begin(), half.exit.end());
    }
    for (const Half& half : halves_in(next)) {
      postset.insert(postset.end(), half.entry.begin(), half.entry.end());
    }
    const std::uint32_t changed = code(value) ^ code(next);
    std::uint32_t bit = 0;
    while ((changed >> bit) != 1) ++bit;
    steps_.push_back(static_cast<std::uint32_t>(group_.transitions.size()));
    add_transition("k" + std::to_string(bit), (code(value) >> bit & 1u) == 1, std::move(preset),
                   std::move(postset));
  }

  std::uint32_t add_condition(std::uint32_t place, std::int64_t producer) {
    group_.conditions.push_back({place, producer, {}});
    return static_cast<std::uint32_t>(group_.conditions.size() - 1);
  }

  void add_initial_conditions() {
    counter_condition_ = add_condition(counter_places_[0], -1);
    for (Half& half : halves_in(0)) {
      for (const std::uint32_t place : half.entry) half.open.push_back(add_condition(place, -1));
    }
    for (const auto& condition : group_.conditions) group_.marked.push_back(condition.place);
  }

  // The postset has the order of the transition's.
  const Numbers& add_event(std::uint32_t transition, Numbers preset, std::int32_t cut_off) {
    const auto number = static_cast<std::uint32_t>(group_.events.size());
    for (const std::uint32_t condition : preset) {
      group_.conditions[condition].consumers.push_back(number);
    }
    Numbers postset;
    for (const std::uint32_t place : group_.transitions[transition].postset) {
      postset.push_back(add_condition(place, number));
    }
    group_.events.push_back({transition, cut_off, std::move(preset), std::move(postset)});
    return group_.events.back().postset;
  }

  void unroll_stage(std::uint32_t value) {
    Numbers done{counter_condition_};
    for (const Half& half : halves_in(value)) {
      const Numbers exit = unroll_module(half);
      done.insert(done.end(), exit.begin(), exit.end());
    }
    if (value >= steps_.size()) return;
    const std::int32_t cut_off = is_last(value) ? Group::initial_marking : Group::no_cut_off;
    const Numbers& started = add_event(steps_[value], std::move(done), cut_off);
    auto position = started.begin();
    counter_condition_ = *position++;
    for (Half& half : halves_in(value + 1)) {
      const auto end = position + static_cast<std::ptrdiff_t>(half.entry.size());
      half.open.assign(position, end);
      position = end;
    }
    assert(position == started.end());
  }

  // Gives the exit conditions.
  Numbers unroll_module(const Half& half) {
    const auto first_event = static_cast<std::int32_t>(group_.events.size());
    Numbers conditions = half.open;  // by their number in the module
    for (const ModuleEvent& event : half.module->events) {
      Numbers preset;
      for (const std::uint32_t number : numbers_of(event.preset)) {
        preset.push_back(conditions[number]);
      }
      const bool is_cut_off = event.correspondent >= 0;
      const Numbers& produced =
          add_event(half.first_transition + event.transition, std::move(preset),
                    is_cut_off ? first_event + event.correspondent : Group::no_cut_off);
      conditions.insert(conditions.end(), produced.begin(), produced.end());
    }
    Numbers exit;
    for (const std::uint32_t number : numbers_of(half.module->exit_conditions)) {
      exit.push_back(conditions[number]);
    }
    return exit;
  }

  const GroupShape& shape_;
  Group group_;
  std::map<std::string, std::uint32_t> signals_;
  std::map<std::string, std::uint32_t> instances_;  // by edge
  Numbers counter_places_, steps_;                  // by value
  std::vector<Half> halves_[2];                     // those that rise, those that fall
  std::uint32_t counter_condition_ = 0;
};

}  // namespace

Group make_group(const GroupShape& shape) { return GroupMaker(shape).run(); }

}  // namespace vorel::bench
