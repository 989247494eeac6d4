#include "verify/verilog_parser.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <span>
#include <utility>

#include "base/messages.h"
#include "toolkit/verilog_name.h"
#include "verify/verilog_expression.h"
#include "verify/verilog_scanner.h"

namespace vorel::verify {
namespace {

struct PrimitiveRow {
  std::string_view name;
  VerilogOp op;  // VerilogOp::wire: of one input, which is the last terminal
  bool is_negated;
};
constexpr PrimitiveRow primitives[] = {
    {"and", VerilogOp::conjunction, false},  {"nand", VerilogOp::conjunction, true},
    {"or", VerilogOp::disjunction, false},   {"nor", VerilogOp::disjunction, true},
    {"xor", VerilogOp::exclusive_or, false}, {"xnor", VerilogOp::exclusive_or, true},
    {"buf", VerilogOp::wire, false},         {"not", VerilogOp::wire, true},
};

// Where a module stands among the tokens.
struct ModuleText {
  std::string name;
  std::size_t first, end;  // from "module" to behind "endmodule"
};

class ModuleParser {
 public:
  ModuleParser(VerilogCursor cursor, VerilogModule& module)
      : cursor_{std::move(cursor)}, module_{module} {}

  // module = "module" name [ "(" [ ports ] ")" ] ";" { statement } "endmodule" .
  bool run() {
    module_.spot = cursor_.token().spot;
    cursor_.skip();
    if (!cursor_.take_name(module_.name, "the name of the module")) return false;
    if (cursor_.at_sign("#"))
      return cursor_.fail_expected("'(' or ';': parameters are not supported");
    if (cursor_.accept("(") && !cursor_.accept(")") && !ports()) return false;
    if (!cursor_.expect(";")) return false;
    while (!cursor_.accept_word("endmodule")) {
      if (!statement()) return false;
    }
    return check_ports();
  }

 private:
  // ports = name { "," name } | port { "," port } .
  bool ports() {
    PortDirection direction = PortDirection::none;
    do {
      if (!take_direction(direction)) return false;
      std::uint32_t port = 0;
      if (!declared_name(port)) return false;
      VerilogWire& wire = module_.wires[port];
      if (wire.is_port)
        return cursor_.fail_at(wire.spot, "the port " + base::quoted(wire.name) + " stands twice");
      wire.is_port = true;
      wire.direction = direction;
    } while (cursor_.accept(","));
    return cursor_.expect(")");
  }

  // [ ( "input" | "output" ) [ "wire" ] ]; without the words the direction stays.
  bool take_direction(PortDirection& direction) {
    if (cursor_.at_word("inout"))
      return cursor_.fail_expected("'input' or 'output': a gate drives its wire in one direction");
    if (cursor_.accept_word("input")) {
      direction = PortDirection::input;
    } else if (cursor_.accept_word("output")) {
      direction = PortDirection::output;
    } else {
      return true;
    }
    cursor_.accept_word("wire");
    return true;
  }

  // A name that is declared. A keyword before it is more than this reads: "output reg q".
  bool declared_name(std::uint32_t& wire) {
    if (cursor_.at_sign("["))
      return cursor_.fail_expected(
          "a name: vectors are not supported, each bit must be a wire, with an escaped name such "
          "as '\\req[0] '");
    const bool is_keyword = cursor_.token().kind == TokenKind::word &&
                            toolkit::is_verilog_keyword(cursor_.token().text);
    const TokenKind next = cursor_.next_token().kind;
    if (is_keyword && (next == TokenKind::word || next == TokenKind::escaped_name))
      return cursor_.fail_expected("the name of a wire");
    const Spot spot = cursor_.token().spot;
    std::string name;
    if (!cursor_.take_name(name, "the name of a wire")) return false;
    wire = module_.wires.mention(name, spot);
    return true;
  }

  bool statement() {
    const VerilogToken& first = cursor_.token();
    zero_delay_ = first.below_pragma;
    const bool is_gate = cursor_.at_word("assign") || is_primitive() || cursor_.at_name();
    if (zero_delay_ && !is_gate)
      return cursor_.fail_at(first.spot, "no gate stands below the pragma of zero delay");
    if (cursor_.at_word("input") || cursor_.at_word("output") || cursor_.at_word("inout"))
      return direction_declaration();
    if (cursor_.accept_word("wire")) return wire_declaration();
    if (cursor_.accept_word("assign")) return assignments();
    if (is_primitive()) return primitive_gates();
    if (cursor_.accept_word("initial")) return initial_block();
    if (first.kind == TokenKind::word && toolkit::is_verilog_keyword(first.text))
      return cursor_.fail_expected("a declaration, an assignment, a gate or 'endmodule'");
    return library_gates();
  }

  // ( "input" | "output" ) [ "wire" ] name { "," name } ";" .
  bool direction_declaration() {
    PortDirection direction = PortDirection::none;
    if (!take_direction(direction)) return false;
    do {
      const Spot spot = cursor_.token().spot;
      std::uint32_t port = 0;
      if (!declared_name(port)) return false;
      VerilogWire& wire = module_.wires[port];
      if (!wire.is_port)
        return cursor_.fail_at(spot, base::quoted(wire.name) + " is no port of the module");
      if (wire.direction != PortDirection::none)
        return cursor_.fail_at(spot, "the port " + base::quoted(wire.name) + " has two directions");
      wire.direction = direction;
    } while (cursor_.accept(","));
    return cursor_.expect(";");
  }

  // "wire" name [ "=" expression ] { "," name [ "=" expression ] } ";" .
  bool wire_declaration() {
    do {
      const Spot spot = cursor_.token().spot;
      std::uint32_t wire = 0;
      if (!declared_name(wire)) return false;
      if (cursor_.at_sign("=") && !value_of(wire, spot)) return false;
    } while (cursor_.accept(","));
    return cursor_.expect(";");
  }

  // "assign" [ delay ] name "=" expression { "," name "=" expression } ";" .
  bool assignments() {
    if (!skip_delay()) return false;
    do {
      const Spot spot = cursor_.token().spot;
      std::uint32_t wire = 0;
      if (!declared_name(wire)) return false;
      if (!cursor_.at_sign("=")) return cursor_.fail_expected("'='");
      if (!value_of(wire, spot)) return false;
    } while (cursor_.accept(","));
    return cursor_.expect(";");
  }

  // "=" expression.
  bool value_of(std::uint32_t wire, Spot spot) {
    cursor_.skip();
    VerilogAssignment assignment{wire, {}};
    if (!parse_expression(cursor_, module_.wires, assignment.value)) return false;
    module_.gates.push_back({{}, spot, zero_delay_, std::move(assignment)});
    return true;
  }

  // delay = "#" ( number | name | "(" ... ")" ) .
  bool skip_delay() {
    if (!cursor_.accept("#")) return true;
    const TokenKind kind = cursor_.token().kind;
    if (kind == TokenKind::number || kind == TokenKind::word) {
      cursor_.skip();
      return true;
    }
    if (!cursor_.at_sign("(")) return cursor_.fail_expected("a delay");
    return skip_brackets();
  }

  // "(" ... ")".
  bool skip_brackets() {
    if (!cursor_.at_sign("(")) return cursor_.fail_expected("'('");
    std::size_t depth = 0;
    do {
      if (cursor_.at_end() || cursor_.at_sign(";") || cursor_.at_word("endmodule"))
        return cursor_.fail_expected("')'");
      if (cursor_.at_sign("(")) ++depth;
      if (cursor_.at_sign(")")) --depth;
      cursor_.skip();
    } while (depth > 0);
    return true;
  }

  bool is_primitive() const {
    return cursor_.token().kind == TokenKind::word &&
           std::ranges::find(primitives, cursor_.token().text, &PrimitiveRow::name) !=
               std::end(primitives);
  }

  bool primitive_gates() {
    const PrimitiveRow& row =
        *std::ranges::find(primitives, cursor_.token().text, &PrimitiveRow::name);
    cursor_.skip();
    if (!skip_delay()) return false;
    do {
      const Spot spot = cursor_.token().spot;
      std::string name;
      std::vector<VerilogConnection> terminals;
      if (!instance(name, terminals) || !primitive_gate(row, name, spot, terminals)) return false;
    } while (cursor_.accept(","));
    return cursor_.expect(";");
  }

  // Outputs come first: one, but of gates with one input all but the last terminal.
  bool primitive_gate(const PrimitiveRow& row, const std::string& name, Spot spot,
                      const std::vector<VerilogConnection>& terminals) {
    const std::size_t outputs =
        row.op == VerilogOp::wire && terminals.size() > 1 ? terminals.size() - 1 : 1;
    if (terminals.size() < 2)
      return cursor_.fail_at(spot, "'" + std::string(row.name) + "' needs an output and an input");
    VerilogExpression value;
    for (std::size_t i = outputs; i < terminals.size(); ++i) {
      if (!is_connected(terminals[i])) return false;
      value.push_back(terminals[i].value.front());
      if (i > outputs) value.push_back({row.op});
    }
    if (row.is_negated) value.push_back({VerilogOp::negation});
    for (std::size_t i = 0; i < outputs; ++i) {
      if (!is_connected(terminals[i])) return false;
      const VerilogStep output = terminals[i].value.front();
      if (output.op != VerilogOp::wire)
        return cursor_.fail_at(terminals[i].spot, "a constant cannot be driven");
      const std::string shown =
          name.empty() ? std::string(row.name) + ' ' + module_.wires[output.wire].name : name;
      module_.gates.push_back(
          {shown, terminals[i].spot, zero_delay_, VerilogAssignment{output.wire, value}});
    }
    return true;
  }

  bool is_connected(const VerilogConnection& terminal) const {
    if (!terminal.port.empty())
      return cursor_.fail_at(terminal.spot, "the ports of this gate have no names");
    return !terminal.value.empty() || cursor_.fail_at(terminal.spot, "a port is not connected");
  }

  bool library_gates() {
    std::string gate;
    if (!cursor_.take_name(gate, "a declaration, an assignment, a gate or 'endmodule'"))
      return false;
    if (!skip_delay()) return false;
    do {
      const Spot spot = cursor_.token().spot;
      std::string name;
      VerilogInstance what{gate, {}};
      if (!instance(name, what.connections)) return false;
      module_.gates.push_back({name, spot, zero_delay_, std::move(what)});
    } while (cursor_.accept(","));
    return cursor_.expect(";");
  }

  // instance = [ name ] "(" [ connection { "," connection } ] ")" .
  bool instance(std::string& name, std::vector<VerilogConnection>& connections) {
    const Spot spot = cursor_.token().spot;
    if (!cursor_.at_sign("(")) {
      if (!cursor_.take_name(name, "the name of an instance, or '('")) return false;
      if (!instances_.insert(name).second)
        return cursor_.fail_at(spot, "the instance " + base::quoted(name) + " stands twice");
    }
    if (!cursor_.expect("(")) return false;
    if (cursor_.accept(")")) return true;
    do {
      VerilogConnection next;
      if (!connection(next)) return false;
      if (!connections.empty() && connections.front().port.empty() != next.port.empty())
        return cursor_.fail_at(next.spot, "connections by name and by position cannot be mixed");
      connections.push_back(std::move(next));
    } while (cursor_.accept(","));
    return cursor_.expect(")");
  }

  // connection = [ operand ] | "." name "(" [ operand ] ")" .
  bool connection(VerilogConnection& result) {
    result.spot = cursor_.token().spot;
    if (!cursor_.accept(".")) return optional_operand(result.value);
    return cursor_.take_name(result.port, "the name of a port") && cursor_.expect("(") &&
           optional_operand(result.value) && cursor_.expect(")");
  }

  bool optional_operand(VerilogExpression& value) {
    if (cursor_.at_sign(",") || cursor_.at_sign(")")) return true;
    return parse_operand(cursor_, module_.wires, value);
  }

  // "initial" "begin" [ ":" name ] { initial } "end" .
  bool initial_block() {
    const Spot start = cursor_.last_token().spot;
    if (std::exchange(has_initial_block_, true))
      return cursor_.fail_at(start, "there are two initial blocks");
    if (!cursor_.accept_word("begin")) return cursor_.fail_expected("'begin'");
    if (cursor_.accept(":") &&
        !cursor_.take_name(module_.initial_block, "the name of the initial block")) {
      return false;
    }
    std::vector<bool> is_released;  // by position in `forced`
    while (!cursor_.accept_word("end")) {
      if (!initial_step(is_released)) return false;
      is_released.resize(module_.forced.size());
    }
    const auto held = std::ranges::find(is_released, false);
    if (held == is_released.end()) return true;
    const VerilogForce& force =
        module_.forced[static_cast<std::size_t>(held - is_released.begin())];
    return cursor_.fail_at(force.spot, "the wire " + base::quoted(module_.wires[force.wire].name) +
                                           " is forced and never released");
  }

  // initial = "force" name "=" constant ";" | "release" name ";" | "wait" "(" ... ")" ";"
  //         | delay ";" .
  bool initial_step(std::vector<bool>& is_released) {
    const Spot spot = cursor_.token().spot;
    if (cursor_.accept_word("wait")) return skip_brackets() && cursor_.expect(";");
    if (cursor_.at_sign("#")) return skip_delay() && cursor_.expect(";");
    const bool is_force = cursor_.at_word("force");
    if (!is_force && !cursor_.at_word("release"))
      return cursor_.fail_expected("'force', 'release', 'wait', a delay or 'end'");
    cursor_.skip();
    std::uint32_t wire = 0;
    if (!declared_name(wire)) return false;
    const auto force = std::ranges::find(module_.forced, wire, &VerilogForce::wire);
    const auto number = static_cast<std::size_t>(force - module_.forced.begin());
    const std::string name = base::quoted(module_.wires[wire].name);
    if (!is_force) {
      if (number == module_.forced.size() || is_released[number])
        return cursor_.fail_at(spot, "the wire " + name + " is released and is not forced");
      is_released[number] = true;
      return cursor_.expect(";");
    }
    if (number < module_.forced.size())
      return cursor_.fail_at(spot, "the wire " + name + " is forced twice");
    if (!cursor_.expect("=")) return false;
    const Spot value_spot = cursor_.token().spot;
    VerilogExpression value;
    if (!parse_operand(cursor_, module_.wires, value)) return false;
    if (value.front().op == VerilogOp::wire)
      return cursor_.fail_at(value_spot, "an initial value is 1'b0 or 1'b1");
    module_.forced.push_back({wire, value.front().op == VerilogOp::constant_1, spot});
    return cursor_.expect(";");
  }

  bool check_ports() const {
    const auto bare = std::ranges::find_if(module_.wires, [](const VerilogWire& wire) {
      return wire.is_port && wire.direction == PortDirection::none;
    });
    return bare == module_.wires.end() ||
           cursor_.fail_at(bare->spot, "the port " + base::quoted(bare->name) +
                                           " is neither an input nor an output");
  }

  VerilogCursor cursor_;
  VerilogModule& module_;
  bool zero_delay_ = false;  // the statement stands below the pragma
  bool has_initial_block_ = false;
  std::set<std::string> instances_;
};

class FileParser {
 public:
  FileParser(const base::SourceText& source, const VerilogTokens& tokens)
      : source_{source}, tokens_{tokens} {}

  bool find_modules() {
    VerilogCursor cursor(source_, tokens_.tokens, 0);
    while (!cursor.at_end()) {
      const std::size_t first = cursor.position();
      std::string name;
      if (!cursor.accept_word("module")) return cursor.fail_expected("'module'");
      if (!cursor.take_name(name, "the name of a module")) return false;
      const auto has_name = [&name](const ModuleText& module) { return module.name == name; };
      if (std::ranges::any_of(modules_, has_name))
        return source_.report(tokens_.tokens[first].spot.offset,
                              "the module " + base::quoted(name) + " stands twice");
      while (!cursor.accept_word("endmodule")) {
        if (cursor.at_end() || cursor.at_word("module")) return cursor.fail_expected("'endmodule'");
        cursor.skip();
      }
      modules_.push_back({name, first, cursor.position()});
    }
    return !modules_.empty() || cursor.fail_expected("'module'");
  }

  // Null after an error.
  const ModuleText* choose(const std::string& top,
                           const std::function<bool(std::string_view)>& is_gate) const {
    std::vector<const ModuleText*> candidates;
    for (const ModuleText& module : modules_) {
      const bool fits =
          top.empty() ? modules_.size() == 1 || !is_gate(module.name) : module.name == top;
      if (fits) candidates.push_back(&module);
    }
    if (candidates.size() == 1) return candidates.front();
    if (!top.empty()) {
      source_.report(0, "there is no module " + base::quoted(top));
    } else if (candidates.empty()) {
      source_.report(0, "all modules are called as gates of the library are: choose by --top");
    } else {
      source_.report(tokens_.tokens[candidates[1]->first].spot.offset,
                     "there are several modules, " + base::quoted(candidates[0]->name) + " and " +
                         base::quoted(candidates[1]->name) + " among them: choose by --top");
    }
    return nullptr;
  }

  bool parse(const ModuleText& text, VerilogModule& module) const {
    if (!check_pragmas(text)) return false;
    const std::size_t first = tokens_.tokens[text.first].spot.offset;
    const std::size_t last = tokens_.tokens[text.end - 1].spot.offset;
    for (const VerilogValueList& list : tokens_.value_lists) {
      if (first < list.spot.offset && list.spot.offset < last)
        module.initial_values.push_back(list);
    }
    return ModuleParser(VerilogCursor(source_, tokens_.tokens, text.first), module).run();
  }

 private:
  // A pragma holds for the statement below it.
  bool check_pragmas(const ModuleText& text) const {
    for (std::size_t i = text.first + 1; i < text.end; ++i) {
      const VerilogToken& token = tokens_.tokens[i];
      const VerilogToken& last = tokens_.tokens[i - 1];
      const bool starts_statement = last.kind == TokenKind::sign && last.text == ";";
      if (token.below_pragma && !starts_statement)
        return source_.report(token.spot.offset,
                              "a pragma of zero delay stands within a statement, not before it");
    }
    return true;
  }

  const base::SourceText& source_;
  const VerilogTokens& tokens_;
  std::vector<ModuleText> modules_;
};

}  // namespace

std::optional<VerilogModule> parse_verilog(const base::SourceText& source, const std::string& top,
                                           const std::function<bool(std::string_view)>& is_gate) {
  const auto tokens = scan_verilog(source);
  if (!tokens) return std::nullopt;
  FileParser parser(source, *tokens);
  if (!parser.find_modules()) return std::nullopt;
  const ModuleText* const text = parser.choose(top, is_gate);
  VerilogModule module;
  if (text == nullptr || !parser.parse(*text, module)) return std::nullopt;
  return module;
}

}  // namespace vorel::verify
