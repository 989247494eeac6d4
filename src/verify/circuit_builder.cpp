#include "verify/circuit_builder.h"

#include <algorithm>
#include <unordered_map>

#include "base/input_text.h"
#include "base/messages.h"
#include "base/source_text.h"
#include "verify/initial_values.h"
#include "verify/netlist_gates.h"
#include "verify/verilog_parser.h"
#include "verify/zero_delay.h"

namespace vorel::verify {
namespace {

std::vector<InitialValue> values_in(std::string_view list, std::string_view separators) {
  std::vector<InitialValue> values;
  for (std::size_t at = list.find_first_not_of(separators); at < list.size();
       at = list.find_first_not_of(separators, at)) {
    const std::string_view word = list.substr(at, list.find_first_of(separators, at) - at);
    const bool is_low = word.starts_with('!');
    values.push_back({std::string(word.substr(is_low ? 1 : 0)), !is_low});
    at += word.size();
  }
  return values;
}

// The numbers of wires are those of the module, but where a WireId stands.
class Builder {
 public:
  Builder(const base::SourceText& source, const VerilogModule& module, const net::Stg& stg,
          const CircuitOptions& options)
      : source_{source}, module_{module}, stg_{stg}, options_{options} {
    signal_of_.resize(module.wires.size(), nullptr);
    driver_.resize(module.wires.size(), nullptr);
    id_of_.resize(module.wires.size());
    is_constant_.resize(module.wires.size());
  }

  bool run(std::span<const toolkit::LibraryGate> library) {
    auto gates = netlist_gates(source_, module_, library);
    if (!gates) return false;
    gates_ = std::move(*gates);
    return set_constants() && find_drivers() && match_signals() && check_ports() &&
           check_reading() && find_delays() && add_wires() && add_gates() && set_initial_values() &&
           add_mutexes();
  }

  Circuit take_result() { return std::move(circuit_); }

 private:
  bool fail(Spot spot, const std::string& fault) const {
    return source_.report(spot.offset, fault);
  }
  bool is_input(std::uint32_t wire) const {
    return module_.wires[wire].direction == PortDirection::input;
  }
  std::string wire_name(std::uint32_t wire) const { return base::quoted(module_.wires[wire].name); }

  // Input ports that keep their value are no wires.
  bool set_constants() {
    for (const InitialValue& entry : options_.constants) {
      const auto wire = module_.wires.find(entry.wire);
      if (!wire || !is_input(*wire) || is_signal_name(entry.wire)) {
        base::print_error("--constant: " + base::quoted(entry.wire) +
                          (wire && is_input(*wire)
                               ? " is a signal of the STG"
                               : " is no input of the module " + base::quoted(module_.name)));
        return false;
      }
      if (is_constant_[*wire]) {
        base::print_error("--constant: " + base::quoted(entry.wire) + " is told twice");
        return false;
      }
      is_constant_[*wire] = true;
      for (NetlistGate& gate : gates_) {
        for (VerilogStep& step : gate.next) {
          if (step.op == VerilogOp::wire && step.wire == *wire)
            step = {entry.value ? VerilogOp::constant_1 : VerilogOp::constant_0};
        }
      }
    }
    return true;
  }

  bool find_drivers() {
    for (const NetlistGate& gate : gates_) {
      const NetlistGate*& driver = driver_[gate.output];
      if (is_input(gate.output))
        return fail(gate.spot, "the input " + wire_name(gate.output) + " is driven by the gate " +
                                   base::quoted(gate.name));
      if (driver != nullptr)
        return fail(gate.spot, "the wire " + wire_name(gate.output) +
                                   " has two drivers, this one and that of line " +
                                   std::to_string(driver->spot.line));
      driver = &gate;
    }
    return true;
  }

  bool match_signals() {
    for (const net::SignalId id : stg_.visible_signals()) {
      const net::Signal& signal = base::element(stg_.signals, id);
      if (signal.kind == net::SignalKind::internal && options_.hide_internal) continue;
      const auto wire = module_.wires.find(signal.name);
      if (!wire || !has_port_of(signal, module_.wires[*wire])) return report_unmatched(signal);
      signal_of_[*wire] = &signal;
    }
    return true;
  }

  static bool has_port_of(const net::Signal& signal, const VerilogWire& wire) {
    if (signal.kind == net::SignalKind::input) return wire.direction == PortDirection::input;
    if (signal.kind == net::SignalKind::output) return wire.direction == PortDirection::output;
    return wire.direction != PortDirection::input;
  }

  bool report_unmatched(const net::Signal& signal) const {
    const auto wire = module_.wires.find(signal.name);
    const Spot spot = wire ? module_.wires[*wire].spot : module_.spot;
    const std::string module = " of the module " + base::quoted(module_.name);
    if (signal.kind == net::SignalKind::internal)
      return fail(spot, "the internal signal " + base::quoted(signal.name) +
                            " of the STG is no wire that is driven in the module " +
                            base::quoted(module_.name) +
                            "; --hide-internal leaves internal signals out");
    const char* const kind = signal.kind == net::SignalKind::input ? "input" : "output";
    return fail(spot, std::string("the ") + kind + " " + base::quoted(signal.name) +
                          " of the STG is no " + kind + " port" + module);
  }

  bool check_ports() const {
    for (std::uint32_t wire = 0; wire < module_.wires.size(); ++wire) {
      const Spot spot = module_.wires[wire].spot;
      if (is_input(wire)) {
        if (signal_of_[wire] == nullptr && !is_constant_[wire])
          return fail(spot, "the input port " + wire_name(wire) + " is no input of the STG");
      } else if (driver_[wire] == nullptr &&
                 (module_.wires[wire].is_port || signal_of_[wire] != nullptr)) {
        return report_undriven(wire, spot);
      }
    }
    return true;
  }

  bool report_undriven(std::uint32_t wire, Spot spot) const {
    return fail(spot, "the wire " + wire_name(wire) + " has no driver");
  }

  bool check_reading() const {
    for (const NetlistGate& gate : gates_) {
      for (const VerilogStep& step : gate.next) {
        if (step.op == VerilogOp::wire && driver_[step.wire] == nullptr && !is_input(step.wire))
          return report_undriven(step.wire, gate.spot);
      }
    }
    return true;
  }

  bool find_delays() {
    std::vector<bool> is_signal(module_.wires.size());
    for (std::size_t wire = 0; wire < is_signal.size(); ++wire)
      is_signal[wire] = signal_of_[wire] != nullptr;
    auto zero_delay = find_zero_delay(source_, gates_, is_signal, options_.zero_delay_inverters);
    if (!zero_delay) return false;
    zero_delay_ = std::move(*zero_delay);
    return true;
  }

  // Those that are driven by the STG or by a gate that takes time.
  bool add_wires() {
    for (std::uint32_t wire = 0; wire < module_.wires.size(); ++wire) {
      if (is_constant_[wire] || (!is_input(wire) && driver_[wire] == nullptr)) continue;
      if (zero_delay_.stands_for[wire].wire != wire) continue;
      id_of_[wire] = {static_cast<std::uint32_t>(circuit_.wires.size())};
      Wire& result = circuit_.wires.emplace_back();
      result.name = module_.wires[wire].name;
      if (signal_of_[wire] != nullptr) result.signal = base::id_of(*signal_of_[wire]);
      module_wire_.push_back(wire);
    }
    return true;
  }

  bool add_gates() {
    for (std::size_t i = 0; i < gates_.size(); ++i) {
      if (zero_delay_.takes_none[i]) continue;
      auto function = function_of(source_, gates_[i], zero_delay_.stands_for);
      if (!function) return false;
      Gate& gate = circuit_.gates.emplace_back();
      gate.name = gates_[i].name;
      gate.line = gates_[i].spot.line;
      gate.output = id_of_[gates_[i].output];
      for (const std::uint32_t input : function->inputs) gate.inputs.push_back(id_of_[input]);
      gate.function = std::move(function->function);
    }
    return true;
  }

  bool set_initial_values() {
    WireValues values(circuit_.wires.size(), net::unknown_value);
    if (!take_values_of_file(values) || !take_values_of_options(values)) return false;
    for (std::uint32_t i = 0; i < values.size(); ++i) {
      const net::Signal* const signal = signal_of_[module_wire_[i]];
      if (signal != nullptr && signal->initial_value != net::unknown_value)
        values.at(i) = signal->initial_value;
    }
    if (const auto unknown = propagate_values(circuit_, values)) {
      const std::uint32_t wire = module_wire_[unknown->value];
      const NetlistGate* const driver = driver_[wire];
      return fail(driver == nullptr ? module_.wires[wire].spot : driver->spot,
                  "nothing determines the initial value of the wire " + wire_name(wire) +
                      ": it must be told by --initial");
    }
    for (std::uint32_t i = 0; i < values.size(); ++i)
      circuit_.wires[i].initial_value = values.at(i) == 1;
    return true;
  }

  bool take_values_of_file(WireValues& values) const {
    WireValues listed(values.size(), net::unknown_value);
    for (const VerilogValueList& list : module_.initial_values) {
      for (const InitialValue& entry : values_in(list.text, " \t\v\f\r")) {
        const auto wire = driven_wire(entry.wire);
        if (!wire && !is_signal_name(entry.wire))
          source_.warn(list.spot.offset, "the initial value of " + base::quoted(entry.wire) +
                                             " is passed over: there is no such wire");
        const std::string fault = wire ? fault_of(*wire, entry.value, listed) : "";
        if (!fault.empty()) return fail(list.spot, fault);
      }
    }
    for (const VerilogForce& force : module_.forced) {
      const std::string name = wire_name(force.wire);
      if (driver_[force.wire] == nullptr)
        return fail(force.spot, "no gate drives the wire " + name + ", which is forced");
      const std::string fault = fault_of(force.wire, force.value, listed);
      if (!fault.empty()) return fail(force.spot, fault);
    }
    values = listed;
    return true;
  }

  // These hold where the file says something else.
  bool take_values_of_options(WireValues& values) const {
    WireValues listed(values.size(), net::unknown_value);
    for (const InitialValue& entry : options_.initial_values) {
      const auto wire = driven_wire(entry.wire);
      const std::string fault = wire ? fault_of(*wire, entry.value, listed)
                                     : "there is no wire " + base::quoted(entry.wire) +
                                           " in the module " + base::quoted(module_.name);
      if (fault.empty()) continue;
      base::print_error("--initial: " + fault);
      return false;
    }
    for (std::uint32_t i = 0; i < values.size(); ++i)
      if (listed.at(i) != net::unknown_value) values.at(i) = listed.at(i);
    return true;
  }

  std::optional<std::uint32_t> driven_wire(const std::string& name) const {
    const auto wire = module_.wires.find(name);
    if (!wire || is_constant_[*wire]) return std::nullopt;
    return is_input(*wire) || driver_[*wire] != nullptr ? wire : std::nullopt;
  }

  bool is_signal_name(const std::string& name) const {
    return std::ranges::any_of(stg_.signals,
                               [&name](const auto& signal) { return signal->name == name; });
  }

  // Enters the value of the wire, or of that for which it stands; else tells what contradicts it.
  std::string fault_of(std::uint32_t wire, bool value, WireValues& listed) const {
    const WireLiteral literal = zero_delay_.stands_for[wire];
    const std::uint8_t entered = value != literal.is_inverted ? 1 : 0;
    const net::Signal* const signal = signal_of_[literal.wire];
    if (signal != nullptr && signal->initial_value != net::unknown_value &&
        signal->initial_value != entered)
      return "the initial value " + std::to_string(value) + " of " + wire_name(wire) +
             " contradicts the STG, where " + base::quoted(signal->name) + " is " +
             std::to_string(signal->initial_value);
    std::uint8_t& known = listed[id_of_[literal.wire]];
    if (known != net::unknown_value && known != entered)
      return "the initial value of " + wire_name(wire) + " is told twice, and differently";
    known = entered;
    return "";
  }

  bool add_mutexes() {
    for (const auto& [first, second] : options_.mutexes) {
      const auto a = gate_output(first), b = gate_output(second);
      if (!a || !b) return false;
      if (*a == *b) {
        base::print_error("--mutex: " + base::quoted(first) + " cannot exclude itself");
        return false;
      }
      circuit_.mutexes.emplace_back(*a, *b);
    }
    return true;
  }

  std::optional<WireId> gate_output(const std::string& name) const {
    const auto wire = module_.wires.find(name);
    if (wire && driver_[*wire] != nullptr && zero_delay_.stands_for[*wire].wire == *wire)
      return id_of_[*wire];
    base::print_error("--mutex: no gate that takes time drives a wire " + base::quoted(name) +
                      " in the module " + base::quoted(module_.name));
    return std::nullopt;
  }

  const base::SourceText& source_;
  const VerilogModule& module_;
  const net::Stg& stg_;
  const CircuitOptions& options_;
  std::vector<NetlistGate> gates_;
  // By wire: the signal that it is, the gate that drives it, its number in the circuit, and whether
  // it is an input that keeps its value.
  std::vector<const net::Signal*> signal_of_;
  std::vector<const NetlistGate*> driver_;
  std::vector<WireId> id_of_;
  std::vector<bool> is_constant_;
  std::vector<std::uint32_t> module_wire_;  // by WireId
  ZeroDelay zero_delay_;
  Circuit circuit_;
};

}  // namespace

std::optional<Circuit> read_circuit_text(std::string_view text, const std::string& shown_name,
                                         const net::Stg& stg,
                                         std::span<const toolkit::LibraryGate> library,
                                         const CircuitOptions& options) {
  const base::SourceText source(text, shown_name);
  const auto module = parse_verilog(source, options.top, [library](std::string_view name) {
    return std::ranges::find(library, name, &toolkit::LibraryGate::name) != library.end();
  });
  if (!module) return std::nullopt;
  Builder builder(source, *module, stg, options);
  if (!builder.run(library)) return std::nullopt;
  return builder.take_result();
}

std::optional<Circuit> read_circuit(const std::string& file_name, const net::Stg& stg,
                                    std::span<const toolkit::LibraryGate> library,
                                    const CircuitOptions& options) {
  std::string text;
  if (!base::read_whole_file(file_name, text)) return std::nullopt;
  return read_circuit_text(text, file_name, stg, library, options);
}

}  // namespace vorel::verify
