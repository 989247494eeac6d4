#include "verify/zero_delay.h"

#include "bdd/bdd_structure.h"

namespace vorel::verify {
namespace {

class ZeroDelayFinder {
 public:
  ZeroDelayFinder(const base::SourceText& source, const std::vector<NetlistGate>& gates,
                  const std::vector<bool>& is_signal, bool all_inverters)
      : source_{source}, gates_{gates}, is_signal_{is_signal}, all_inverters_{all_inverters} {
    result_.takes_none.resize(gates.size());
    for (std::uint32_t wire = 0; wire < is_signal.size(); ++wire)
      result_.stands_for.push_back({wire, false});
    driver_.resize(is_signal.size(), nullptr);
  }

  bool run() {
    const std::vector<WireLiteral> themselves = result_.stands_for;
    for (std::size_t i = 0; i < gates_.size(); ++i) {
      if (!gates_[i].zero_delay && !all_inverters_) continue;
      if (!consider(i, themselves)) return false;
    }
    for (const NetlistGate& gate : gates_) {
      if (driver_[gate.output] != nullptr && !resolve(gate.output)) return false;
    }
    return true;
  }

  ZeroDelay take_result() { return std::move(result_); }

 private:
  // False after an error.
  bool consider(std::size_t number, std::span<const WireLiteral> themselves) {
    const NetlistGate& gate = gates_[number];
    if (is_signal_[gate.output] && !gate.zero_delay) return true;
    const auto function = function_of(source_, gate, themselves);
    if (!function) return false;
    const bool has_one_input = function->inputs.size() == 1 && bdd::is_literal(function->function);
    if (!has_one_input) {
      return !gate.zero_delay ||
             source_.report(gate.spot.offset, "the gate " + base::quoted(gate.name) +
                                                  " below the pragma of zero delay is no inverter");
    }
    if (is_signal_[gate.output]) {
      source_.warn(gate.spot.offset, "the gate " + base::quoted(gate.name) +
                                         " drives a signal of the STG: it takes time");
      return true;
    }
    const bool is_inverted = function->function.is_complement();
    if (!gate.zero_delay && !is_inverted) return true;
    result_.takes_none[number] = true;
    result_.stands_for[gate.output] = {function->inputs.front(), is_inverted};
    driver_[gate.output] = &gate;
    return true;
  }

  // Follows the wire to one whose gate takes time, and lets all on the way stand for that one.
  bool resolve(std::uint32_t wire) {
    std::vector<std::uint32_t> path;
    while (driver_[wire] != nullptr) {
      if (path.size() > gates_.size())
        return source_.report(driver_[wire]->spot.offset,
                              "gates of zero delay drive each other in a cycle, " +
                                  base::quoted(driver_[wire]->name) + " among them");
      path.push_back(wire);
      wire = result_.stands_for[wire].wire;
    }
    WireLiteral root = result_.stands_for[wire];  // itself, or it is resolved
    for (; !path.empty(); path.pop_back()) {
      WireLiteral& literal = result_.stands_for[path.back()];
      root.is_inverted = root.is_inverted != literal.is_inverted;
      literal = root;
      driver_[path.back()] = nullptr;
    }
    return true;
  }

  const base::SourceText& source_;
  const std::vector<NetlistGate>& gates_;
  const std::vector<bool>& is_signal_;
  const bool all_inverters_;
  std::vector<const NetlistGate*> driver_;  // by wire, those of zero delay still to be resolved
  ZeroDelay result_;
};

}  // namespace

std::optional<ZeroDelay> find_zero_delay(const base::SourceText& source,
                                         const std::vector<NetlistGate>& gates,
                                         const std::vector<bool>& is_signal, bool all_inverters) {
  ZeroDelayFinder finder(source, gates, is_signal, all_inverters);
  if (!finder.run()) return std::nullopt;
  return finder.take_result();
}

}  // namespace vorel::verify
