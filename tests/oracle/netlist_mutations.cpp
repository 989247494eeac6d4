#include "oracle/netlist_mutations.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <utility>
#include <vector>

namespace vorel::oracle {
namespace {

// A part of the text.
struct Piece {
  std::size_t begin = 0, size = 0;
};

constexpr std::string_view pragma = "    // #PRAGMA: zero delay\n";
constexpr std::string_view list_title = "    // initial values of the signals\n";

class Mutator {
 public:
  Mutator(const std::string& module, const std::map<std::string, toolkit::LibraryGate>& library,
          Random& random)
      : text_{module}, library_{library}, random_{random} {
    for (std::size_t at = 0, end = 0; end != std::string::npos; at = end + 1) {
      look_at_line(at);
      end = text_.find('\n', at);
    }
  }

  std::optional<std::string> run(NetlistMutation mutation) {
    switch (mutation) {
      case NetlistMutation::pins_swapped:
        return swap_pins();
      case NetlistMutation::inversion_lost:
        return random_.chance(50) && !bubbles_.empty() ? lose_bubble() : lose_negation();
      case NetlistMutation::gate_changed:
        return change_gate();
      case NetlistMutation::wire_cut:
        return cut_wire();
      case NetlistMutation::initial_value_flipped:
        return flip_initial_value();
      case NetlistMutation::inverter_made_slow:
        return make_inverter_slow();
    }
    return std::nullopt;
  }

 private:
  struct Bubble {
    Piece lines;  // with the pragma
    std::string input, output;
  };

  std::string_view line_at(std::size_t at) const {
    return std::string_view(text_).substr(at, text_.find('\n', at) + 1 - at);
  }
  std::string text_of(const Piece& piece) const { return text_.substr(piece.begin, piece.size); }

  void look_at_line(std::size_t at) {
    const std::string_view line = line_at(at);
    if (line.starts_with("    assign "))
      look_at_assignment(at, at + line.find(';'));
    else if (line.starts_with("    ") && line.find("(.") != std::string_view::npos)
      look_at_instance(at, at + line.size());
  }

  // assign WIRE = EXPRESSION
  void look_at_assignment(std::size_t at, std::size_t end) {
    for (at = text_.find('=', at) + 1; at < end; ++at) {
      const char c = text_[at];
      if (c == '~') negations_.push_back({at, 1});
      if (c == '&' || c == '|') operators_.push_back({at, 1});
      if (std::string_view("~&|() ").find(c) != std::string_view::npos) continue;
      const std::size_t stop = std::min(text_.find_first_of(c == '\\' ? " " : "~&|() ;", at), end);
      // The blank behind an escaped name belongs to it.
      operands_.push_back({at, stop - at + (c == '\\' ? 1u : 0u)});
      at = stop - 1;
    }
  }

  // GATE INSTANCE(.PIN(WIRE), .PIN(WIRE));
  void look_at_instance(std::size_t at, std::size_t end) {
    const std::size_t name_at = text_.find_first_not_of(' ', at);
    const Piece name{name_at, text_.find(' ', name_at) - name_at};
    const bool is_escaped = text_[name_at] == '\\';
    const auto found = library_.find(text_of(name).substr(is_escaped ? 1 : 0));
    if (found == library_.end()) return;
    const toolkit::LibraryGate& gate = found->second;
    std::vector<Piece> inputs;
    Piece output;
    for (std::size_t dot = text_.find("(.", at) + 1; dot > 0 && dot < end;
         dot = text_.find(" .", dot) + 1) {
      const std::size_t open = text_.find('(', dot);
      const Piece wire{open + 1, text_.find(')', open) - open - 1};
      if (text_.substr(dot + 1, open - dot - 1) == gate.output)
        output = wire;
      else
        inputs.push_back(wire);
    }
    const std::size_t start = at - std::min(at, pragma.size());
    if (std::string_view(text_).substr(start, pragma.size()) == pragma) {
      bubbles_.push_back({{start, end - start}, text_of(inputs.at(0)), text_of(output)});
    } else {
      gates_.emplace_back(name, &gate);
      operands_.insert(operands_.end(), inputs.begin(), inputs.end());
    }
  }

  template <class List>
  const auto& any_of(const List& list) {
    return list[random_.below(list.size())];
  }

  std::string with(const Piece& piece, const std::string& instead) const {
    return std::string(text_).replace(piece.begin, piece.size, instead);
  }

  std::optional<std::string> swap_pins() {
    if (operands_.empty()) return std::nullopt;
    Piece a = any_of(operands_), b = any_of(operands_);
    if (text_of(a) == text_of(b)) return std::nullopt;
    if (a.begin > b.begin) std::swap(a, b);
    std::string text = with(b, text_of(a));
    return text.replace(a.begin, a.size, text_of(b));
  }

  // Those behind it are driven by what drives it.
  std::optional<std::string> lose_bubble() {
    const Bubble& bubble = any_of(bubbles_);
    std::string text = text_;
    std::vector<Piece> readers = operands_;
    std::ranges::sort(readers, std::ranges::greater{}, &Piece::begin);
    for (const Piece& reader : readers)
      if (text_of(reader) == bubble.output) text.replace(reader.begin, reader.size, bubble.input);
    // Wires between have moved, but not the lines before the first of them.
    const std::string lines = text_of(bubble.lines);
    return text.erase(text.find(lines), lines.size());
  }

  std::optional<std::string> lose_negation() {
    if (negations_.empty()) return std::nullopt;
    return with(any_of(negations_), "");
  }

  std::optional<std::string> change_gate() {
    if (!operators_.empty()) {
      const Piece& sign = any_of(operators_);
      return with(sign, text_of(sign) == "&" ? "|" : "&");
    }
    if (gates_.empty()) return std::nullopt;
    const auto& [name, gate] = any_of(gates_);
    std::vector<std::string> others;
    for (const auto& [other_name, other] : library_)
      if (other_name != gate->name && other.output == gate->output &&
          inputs_of(other) == inputs_of(*gate) &&
          other.gate_class != toolkit::GateClass::clocked_latch)
        others.push_back(other_name);
    if (others.empty()) return std::nullopt;
    return with(name, '\\' + any_of(others) + ' ');
  }

  static std::vector<std::string> inputs_of(const toolkit::LibraryGate& gate) {
    return {gate.pins.begin(), gate.pins.begin() + gate.input_count()};
  }

  std::optional<std::string> cut_wire() {
    if (operands_.empty()) return std::nullopt;
    return with(any_of(operands_), random_.chance(50) ? "1'b1" : "1'b0");
  }

  std::optional<std::string> flip_initial_value() {
    const std::size_t title = text_.find(list_title);
    if (title == std::string::npos) return std::nullopt;
    const std::size_t list = title + list_title.size() + std::string_view("    //").size();
    std::vector<std::size_t> starts;
    for (std::size_t at = list; at < text_.find('\n', list); ++at)
      if (text_[at] == ' ') starts.push_back(at + 1);
    if (starts.empty()) return std::nullopt;
    // The last ones are wires, and more of a case than signals are.
    const std::size_t start = random_.chance(60) ? starts.back() : any_of(starts);
    return text_[start] == '!' ? with({start, 1}, "") : with({start, 0}, "!");
  }

  std::optional<std::string> make_inverter_slow() {
    if (!bubbles_.empty()) return with({any_of(bubbles_).lines.begin, pragma.size()}, "");
    std::vector<Piece> inverted;
    for (const Piece& operand : operands_)
      if (text_[operand.begin - 1] == '~' && text_[operand.begin] != '\\')
        inverted.push_back(operand);
    if (inverted.empty()) return std::nullopt;
    const Piece wire{any_of(inverted)};
    const std::string name = text_of(wire), slow = "slow_" + name;
    std::string text = with({wire.begin - 1, wire.size + 1}, slow);
    return text.insert(text.find("\n", wire.begin) + 1,
                       "    assign " + slow + " = ~" + name + ";\n");
  }

  const std::string& text_;
  const std::map<std::string, toolkit::LibraryGate>& library_;
  Random& random_;
  std::vector<Piece> operands_, negations_, operators_;  // inputs of gates that take time
  std::vector<std::pair<Piece, const toolkit::LibraryGate*>> gates_;  // with their names
  std::vector<Bubble> bubbles_;
};

}  // namespace

const char* name_of(NetlistMutation mutation) {
  constexpr std::array<const char*, netlist_mutation_count> names = {
      "pins swapped", "inversion lost",        "gate changed",
      "wire cut",     "initial value flipped", "inverter made slow"};
  return names.at(static_cast<std::size_t>(mutation));
}

std::optional<std::string> mutated(const std::string& module, NetlistMutation mutation,
                                   const std::map<std::string, toolkit::LibraryGate>& library,
                                   Random& random) {
  return Mutator(module, library, random).run(mutation);
}

}  // namespace vorel::oracle
