#include "oracle/random_net.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "oracle/net_builder.h"
#include "oracle/net_text.h"
#include "oracle/random.h"
#include "oracle/state_graph.h"

namespace vorel::oracle {
namespace {

// Two to six state machines of two to seven states each. They move alone or two or three together;
// some transitions only test a state of a machine, that is, consume and produce one place.
class MachinesGenerator {
 public:
  static constexpr std::size_t least_states = 8;

  explicit MachinesGenerator(Random& random) : random_{random} {}

  net::Net run() {
    const std::uint32_t count = random_.between(2, 6);
    for (std::uint32_t i = 0; i < count; ++i) state_counts_.push_back(random_.between(2, 7));
    for (std::uint32_t i = 0; i < count; ++i) {
      builder_.mark(place_name(i, 0));
      add_own_transitions(i);
    }
    const std::uint32_t joint = random_.between(count, 3 * count);
    for (std::uint32_t i = 0; i < joint; ++i) add_joint_transition();
    return builder_.finish();
  }

 private:
  static std::string place_name(std::uint32_t machine, std::uint32_t state) {
    return "m" + std::to_string(machine) + "s" + std::to_string(state);
  }

  void start_transition() { builder_.add_transition("t" + std::to_string(transitions_++)); }

  void move(std::uint32_t machine, std::uint32_t from, std::uint32_t to) {
    builder_.consume(place_name(machine, from)).produce(place_name(machine, to));
  }

  void add_own_transitions(std::uint32_t machine) {
    const std::uint32_t states = state_counts_[machine];
    for (std::uint32_t from = 0; from < states; ++from) {
      if (random_.chance(45)) {
        start_transition();
        move(machine, from, (from + 1) % states);
      }
      const std::uint32_t to = random_.below(states);
      if (random_.chance(20) && (to != from || random_.chance(20))) {
        start_transition();
        move(machine, from, to);
      }
    }
  }

  void add_joint_transition() {
    std::vector<std::uint32_t> machines(state_counts_.size());
    std::iota(machines.begin(), machines.end(), 0u);
    random_.shuffle(machines);
    machines.resize(std::min<std::size_t>(machines.size(), random_.between(2, 3)));
    start_transition();
    for (const std::uint32_t machine : machines) {
      const std::uint32_t from = random_.below(state_counts_[machine]);
      const bool tests_only = random_.chance(20);
      move(machine, from, tests_only ? from : random_.below(state_counts_[machine]));
    }
  }

  Random& random_;
  NetBuilder<net::Net> builder_;
  std::vector<std::uint32_t> state_counts_;  // by machine
  std::uint32_t transitions_ = 0;
};

// Nested sequences, choices, forks and joins; starts again at the end, or stops there. A block
// leads from one place to another.
class ForkJoinGenerator {
 public:
  static constexpr std::size_t least_states = 3;

  explicit ForkJoinGenerator(Random& random) : random_{random} {}

  net::Net run() {
    builder_.mark("start");
    add_block("start", "end", random_.between(2, 4));
    if (random_.chance(50)) add_step("end", "start");
    return builder_.finish();
  }

 private:
  std::string new_place() { return "p" + std::to_string(places_++); }

  void start_transition() { builder_.add_transition("t" + std::to_string(transitions_++)); }

  void add_step(const std::string& from, const std::string& to) {
    start_transition();
    builder_.consume(from).produce(to);
  }

  void add_block(const std::string& from, const std::string& to, std::uint32_t size) {
    if (size == 0) return add_step(from, to);
    switch (random_.below(3)) {
      case 0:
        return add_sequence(from, to, size - 1);
      case 1:
        return add_choice(from, to, size - 1);
      default:
        return add_fork_and_join(from, to, size - 1);
    }
  }

  void add_sequence(const std::string& from, const std::string& to, std::uint32_t size) {
    const std::string middle = new_place();
    add_block(from, middle, size);
    add_block(middle, to, size);
  }

  void add_choice(const std::string& from, const std::string& to, std::uint32_t size) {
    add_block(from, to, size);
    add_block(from, to, random_.below(size + 1));
  }

  void add_fork_and_join(const std::string& from, const std::string& to, std::uint32_t size) {
    const std::uint32_t branches = random_.between(2, 3);
    std::vector<std::string> starts, ends;
    for (std::uint32_t i = 0; i < branches; ++i) {
      starts.push_back(new_place());
      ends.push_back(new_place());
      add_block(starts.back(), ends.back(), random_.below(size + 1));
    }
    start_transition();
    builder_.consume(from);
    for (const std::string& name : starts) builder_.produce(name);
    start_transition();
    for (const std::string& name : ends) builder_.consume(name);
    builder_.produce(to);
  }

  Random& random_;
  NetBuilder<net::Net> builder_;
  std::uint32_t places_ = 0, transitions_ = 0;
};

template <class Generator>
net::Net first_small_net(std::uint64_t seed, const RandomNetParams& params) {
  Random random(seed);
  while (true) {
    net::Net net = Generator(random).run();
    const StateGraph<net::Net> graph = explore(net, params.max_states);
    const bool is_interesting = graph.states.size() >= Generator::least_states;
    if (graph.outcome == Exploration::complete && is_interesting) return net;
  }
}

}  // namespace

net::Net random_net(std::uint64_t seed, const RandomNetParams& params) {
  Random random(seed);
  switch (random.below(8)) {
    case 0: {
      const std::uint32_t length = random.between(2, 6);
      return token_ring(length, random.between(0, length));
    }
    case 1:
      return first_small_net<ForkJoinGenerator>(seed, params);
    default:
      return first_small_net<MachinesGenerator>(seed, params);
  }
}

}  // namespace vorel::oracle
