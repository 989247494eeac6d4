#include "synthesis/netlist_reset.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/messages.h"
#include "base/source_text.h"
#include "base/unique_names.h"
#include "toolkit/verilog_name.h"

namespace vorel::synthesis {
namespace {

using toolkit::LogicExpr;
using Values = std::unordered_map<std::string, bool>;

LogicExpr literal(const std::string& name, bool negated) {
  return {LogicExpr::Literal{name, negated}};
}

// The function where the wire is not to be the value.
LogicExpr held(const std::string& reset_input, bool value, LogicExpr function) {
  std::vector<LogicExpr> operands{literal(reset_input, !value), std::move(function)};
  if (value) return {LogicExpr::Or{std::move(operands)}};
  return {LogicExpr::And{std::move(operands)}};
}

bool mentions(const LogicExpr& function, const std::string& wire) {
  if (const auto* leaf = std::get_if<LogicExpr::Literal>(&function.node)) return leaf->name == wire;
  const auto in_one = [&wire](const auto& operands) {
    return std::ranges::any_of(operands, [&](const LogicExpr& e) { return mentions(e, wire); });
  };
  if (const auto* node = std::get_if<LogicExpr::And>(&function.node)) return in_one(node->operands);
  if (const auto* node = std::get_if<LogicExpr::Or>(&function.node)) return in_one(node->operands);
  return false;
}

// A transition may take from it what another one needs.
bool is_choice_for(const net::StgPlace& place, const net::Signal& signal) {
  return std::ranges::any_of(place.postset, [&signal](const net::StgTransition* transition) {
    return transition->signal != &signal;
  });
}

// By signal: whether it may be disabled, as far as the structure tells. An edge behind a dummy is
// disabled with it.
std::vector<bool> signals_in_choices(const net::Stg& stg) {
  std::vector<bool> result(stg.signals.size());
  bool has_dummy = false;
  for (const auto& transition : stg.transitions) {
    const net::Signal& signal = *transition->signal;
    const bool in_choice = std::ranges::any_of(
        transition->preset,
        [&signal](const net::StgPlace* place) { return is_choice_for(*place, signal); });
    if (in_choice) result[signal.index] = true;
    has_dummy = has_dummy || (in_choice && signal.is_dummy());
  }
  if (has_dummy) result.assign(result.size(), true);
  return result;
}

class ResetAdder {
 public:
  ResetAdder(Netlist& netlist, const net::Stg& stg, const std::string& reset_input)
      : netlist_{netlist}, stg_{stg}, reset_input_{reset_input} {
    for (const net::SignalId id : stg.visible_signals()) {
      const net::Signal& signal = base::element(stg.signals, id);
      signal_of_.emplace(signal.name, &signal);
      initial_.emplace(signal.name, signal.initial_value == 1);
    }
    for (const NetlistGate& gate : netlist.gates) initial_.emplace(gate.output, gate.initial_value);
  }

  bool run() {
    if (!take_names()) return false;
    choose();
    netlist_.reset_input = reset_input_;
    std::vector<NetlistGate> gates;
    for (std::size_t i = 0; i < netlist_.gates.size(); ++i) {
      NetlistGate& gate = netlist_.gates[i];
      if (!is_chosen_[i]) {
        gates.push_back(std::move(gate));
      } else if (must_be_one_gate(gate)) {
        become_assignment(gate);
        gates.push_back(std::move(gate));
      } else {
        add_with_gate_behind(gates, std::move(gate));
      }
    }
    netlist_.gates = std::move(gates);
    return true;
  }

 private:
  bool take_names() {
    if (!toolkit::can_stand_in_verilog(reset_input_))
      return toolkit::report_not_for_verilog("the reset input", reset_input_);
    const std::vector<std::string> names = names_of(stg_, netlist_);
    if (std::ranges::find(names, reset_input_) != names.end()) {
      base::print_error("the reset input cannot be called " + base::quoted(reset_input_) +
                        ": the circuit has this name already");
      return false;
    }
    for (const std::string& name : names) taken_.add(name);
    taken_.add(reset_input_);
    taken_.add("w");
    return true;
  }

  void choose() {
    std::vector<bool> is_excited;
    for (const NetlistGate& gate : netlist_.gates)
      is_excited.push_back(value_of(gate.function, initial_) != gate.initial_value);
    is_chosen_ = is_excited;
    for (auto next = most_urgent(); next; next = most_urgent()) is_chosen_[*next] = true;
    for (std::size_t i = 0; i < is_chosen_.size(); ++i) {
      if (!is_chosen_[i] || is_excited[i]) continue;
      is_chosen_[i] = false;
      is_chosen_[i] = most_urgent().has_value();
    }
  }

  // Of those that the inputs and the gates chosen so far leave open: first come gates that see
  // their own outputs, then those that drive signals. nullopt if there are none.
  std::optional<std::size_t> most_urgent() const {
    const Values values = decided_values();
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < is_chosen_.size(); ++i) {
      if (values.contains(netlist_.gates[i].output)) continue;
      if (!best || urgency(i) > urgency(*best)) best = i;
    }
    return best;
  }

  int urgency(std::size_t gate) const {
    const NetlistGate& what = netlist_.gates[gate];
    if (mentions(what.function, what.output)) return 2;
    return signal_of(what) == nullptr ? 0 : 1;
  }

  const net::Signal* signal_of(const NetlistGate& gate) const {
    const auto found = signal_of_.find(gate.output);
    return found == signal_of_.end() ? nullptr : found->second;
  }

  Values decided_values() const {
    Values values;
    for (std::uint32_t input = 0; input < stg_.inputs_end; ++input)
      values.emplace(stg_.signals[input]->name, stg_.signals[input]->initial_value == 1);
    for (std::size_t i = 0; i < is_chosen_.size(); ++i) {
      if (is_chosen_[i]) values.emplace(netlist_.gates[i].output, netlist_.gates[i].initial_value);
    }
    for (bool is_new = true; is_new;) {
      is_new = false;
      for (const NetlistGate& gate : netlist_.gates) {
        if (values.contains(gate.output)) continue;
        const auto value = value_of(gate.function, values);
        if (!value) continue;
        assert(*value == gate.initial_value && "gates that are not chosen rest in that state");
        values.emplace(gate.output, *value);
        is_new = true;
      }
    }
    return values;
  }

  bool must_be_one_gate(const NetlistGate& gate) const {
    if (!gate.is_instance() || gate.has_memory || gate.function.is_literal()) return true;
    const net::Signal* const signal = signal_of(gate);
    return signal != nullptr && is_in_choice_[signal->index];
  }

  void become_assignment(NetlistGate& gate) const {
    if (gate.is_instance()) {
      gate.comment =
          gate.cell.name + " with a reset" + (gate.comment.empty() ? "" : ": " + gate.comment);
      gate.instance.clear();
      gate.inputs.clear();
      gate.cell = {};
      gate.has_memory = false;
    }
    gate.function = held(reset_input_, gate.initial_value, std::move(gate.function));
  }

  void add_with_gate_behind(std::vector<NetlistGate>& gates, NetlistGate gate) {
    NetlistGate behind;
    behind.output = gate.output;
    behind.initial_value = gate.initial_value;
    gate.output = taken_.take("w");
    behind.function = held(reset_input_, behind.initial_value, literal(gate.output, false));
    behind.comment = "the reset of " + behind.output;
    gate.initial_value = value_of(gate.function, initial_).value();
    gates.push_back(std::move(gate));
    gates.push_back(std::move(behind));
  }

  Netlist& netlist_;
  const net::Stg& stg_;
  const std::string& reset_input_;
  base::UniqueNames taken_{0};
  std::unordered_map<std::string, const net::Signal*> signal_of_;    // without dummies
  Values initial_;                                                   // of signals and wires
  std::vector<bool> is_chosen_;                                      // by gate
  const std::vector<bool> is_in_choice_ = signals_in_choices(stg_);  // by signal
};

}  // namespace

bool add_reset(Netlist& netlist, const net::Stg& stg, const std::string& reset_input) {
  assert(netlist.reset_input.empty());
  return ResetAdder(netlist, stg, reset_input).run();
}

}  // namespace vorel::synthesis
