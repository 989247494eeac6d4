// verify/verilog_module.h - a module of structural Verilog as it is written.
// Here:      wires, ports, assignments, instances, where they stand in the text.
// Not here:  what gates the instances are of (verify/netlist_gates.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

namespace vorel::verify {

struct Spot {
  std::size_t offset = 0, line = 1;
};

enum class VerilogOp : std::uint8_t {
  constant_0,
  constant_1,
  wire,
  negation,
  conjunction,
  disjunction,
  exclusive_or,
  choice,  // the second operand where the first is true, else the third
};

struct VerilogStep {
  VerilogOp op;
  std::uint32_t wire = 0;  // of VerilogOp::wire, its number
};

// Operands before their operator; empty only where a port is not connected.
using VerilogExpression = std::vector<VerilogStep>;

enum class PortDirection : std::uint8_t { none, input, output };

struct VerilogWire {
  std::string name;  // without the signs of escaped identifiers
  Spot spot;         // of its first mention
  bool is_port = false;
  PortDirection direction = PortDirection::none;  // of a port there is one
};

// The wires by number and by name.
class VerilogWires {
 public:
  std::size_t size() const { return wires_.size(); }
  VerilogWire& operator[](std::uint32_t number) { return wires_[number]; }
  const VerilogWire& operator[](std::uint32_t number) const { return wires_[number]; }
  auto begin() const { return wires_.begin(); }
  auto end() const { return wires_.end(); }

  std::optional<std::uint32_t> find(const std::string& name) const {
    const auto found = number_of_.find(name);
    return found == number_of_.end() ? std::nullopt : std::optional{found->second};
  }
  // Wires need no declaration: the first mention makes one.
  std::uint32_t mention(const std::string& name, Spot spot) {
    const auto [found, is_new] =
        number_of_.emplace(name, static_cast<std::uint32_t>(wires_.size()));
    if (is_new) wires_.push_back({name, spot});
    return found->second;
  }

 private:
  std::vector<VerilogWire> wires_;
  std::unordered_map<std::string, std::uint32_t> number_of_;
};

struct VerilogConnection {
  std::string port;  // empty if the connection is positional
  Spot spot;
  VerilogExpression value;  // at most one step: a wire or a constant
};

// Of an assignment or of a gate that Verilog knows itself.
struct VerilogAssignment {
  std::uint32_t target;
  VerilogExpression value;
};

struct VerilogInstance {
  std::string gate;
  std::vector<VerilogConnection> connections;  // all by name or all by position
};

struct VerilogGate {
  std::string name;  // of the instance, empty if it has none
  Spot spot;
  bool zero_delay = false;  // it stands below the pragma
  std::variant<VerilogAssignment, VerilogInstance> what;
};

// What a comment lists as initial values.
struct VerilogValueList {
  std::string_view text;  // a part of that of the file
  Spot spot;
};

// What an initial block forces a wire to before it releases it.
struct VerilogForce {
  std::uint32_t wire;
  bool value;
  Spot spot;
};

struct VerilogModule {
  std::string name;
  Spot spot;
  VerilogWires wires;
  std::vector<VerilogGate> gates;
  std::vector<VerilogValueList> initial_values;
  std::vector<VerilogForce> forced;
  std::string initial_block;  // its name; empty where there is none
};

}  // namespace vorel::verify
