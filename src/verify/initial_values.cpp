#include "verify/initial_values.h"

#include <algorithm>
#include <vector>

#include "bdd/bdd_structure.h"

namespace vorel::verify {
namespace {

class Propagation {
 public:
  Propagation(const Circuit& circuit, WireValues& values)
      : circuit_{circuit}, values_{values}, readers_(circuit.wires.size()) {
    for (const Gate& gate : circuit.gates)
      for (const WireId input : gate.inputs) readers_[input].push_back(&gate);
  }

  std::optional<WireId> run() {
    for (const Gate& gate : circuit_.gates) open_.push_back(&gate);
    go_forward();
    while (go_back()) {
    }
    for (const Gate& gate : circuit_.gates) {
      const auto known = [this](WireId wire) { return is_known(wire); };
      if (!is_known(gate.output) && std::ranges::all_of(gate.inputs, known)) return gate.output;
    }
    const auto unknown = std::ranges::find(values_, net::unknown_value);
    if (unknown == values_.end()) return std::nullopt;
    return WireId{static_cast<std::uint32_t>(unknown - values_.begin())};
  }

 private:
  bool is_known(WireId wire) const { return values_[wire] != net::unknown_value; }

  // The gate's function of its unknown inputs.
  bdd::Bdd rest_of(const Gate& gate) const {
    std::vector<bdd::Bdd> value;
    const auto add = [&](WireId wire) {
      value.push_back(is_known(wire) ? bdd::Bdd(values_[wire] == 1)
                                     : bdd::bdd_variable(static_cast<std::uint32_t>(value.size())));
    };
    for (const WireId input : gate.inputs) add(input);
    add(gate.output);
    return bdd::compose(gate.function, value);
  }

  void set(WireId wire, bool value) {
    values_[wire] = value ? 1 : 0;
    for (const Gate* const reader : readers_[wire]) open_.push_back(reader);
  }

  void go_forward() {
    while (!open_.empty()) {
      const Gate& gate = *open_.back();
      open_.pop_back();
      if (is_known(gate.output)) continue;
      const bdd::Bdd rest = rest_of(gate);
      if (rest.is_constant()) set(gate.output, rest.is_true());
    }
  }

  // One look at each unknown wire; true if some have become known.
  bool go_back() {
    bool is_new = false;
    for (const Gate& gate : circuit_.gates) {
      if (is_known(gate.output)) continue;
      if (const auto value = value_for_readers(gate.output)) {
        set(gate.output, *value);
        go_forward();
        is_new = true;
      }
    }
    return is_new;
  }

  // Where all gates rest of which the wire alone decides whether they do.
  std::optional<bool> value_for_readers(WireId wire) const {
    std::optional<bool> result;
    for (const Gate* const reader : readers_[wire]) {
      if (!is_known(reader->output)) continue;
      const bdd::Bdd rest = rest_of(*reader);
      if (!bdd::is_literal(rest) || reader->inputs[rest.variable()] != wire) continue;
      const bool value = (values_[reader->output] == 1) != rest.is_complement();
      if (result && *result != value) return std::nullopt;
      result = value;
    }
    return result;
  }

  const Circuit& circuit_;
  WireValues& values_;
  base::IndexedBy<Wire, std::vector<const Gate*>> readers_;
  std::vector<const Gate*> open_;  // to be looked at: what they read has become known
};

}  // namespace

std::optional<WireId> propagate_values(const Circuit& circuit, WireValues& values) {
  return Propagation(circuit, values).run();
}

}  // namespace vorel::verify
