#include "toolkit/genlib_reader.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <unordered_map>

#include "base/messages.h"
#include "toolkit/gate_description.h"

namespace vorel::toolkit {
namespace {

struct LatchTypeRow {
  std::string_view keyword;
  GateClass gate_class;
};
constexpr LatchTypeRow latch_types[] = {
    {"ASYNCH", GateClass::asynchronous_latch},  {"RISING_EDGE", GateClass::clocked_latch},
    {"FALLING_EDGE", GateClass::clocked_latch}, {"ACTIVE_HIGH", GateClass::clocked_latch},
    {"ACTIVE_LOW", GateClass::clocked_latch},
};
constexpr std::string_view phases[] = {"INV", "NONINV", "UNKNOWN"};
constexpr int load_and_delay_numbers = 6;

class GenlibReader {
 public:
  GenlibReader(std::string_view text, const std::string& name) : cursor_{text, name} {}

  // library = { gate | latch } .
  std::optional<std::vector<LibraryGate>> run() {
    while (!cursor_.at_end()) {
      if (!statement()) return std::nullopt;
    }
    if (!is_in_gate_) cursor_.fail_expected("'GATE' or 'LATCH'");
    if (!is_in_gate_ || !finish_gate()) return std::nullopt;
    return std::move(gates_);
  }

 private:
  enum class Use : std::uint8_t { starts_gate, describes_gate, describes_latch };
  struct StatementRow {
    std::string_view keyword;
    bool (GenlibReader::*take)();
    Use use;
  };
  static const StatementRow statement_table[6];

  bool statement() {
    std::string_view keyword;
    if (!cursor_.take_word(keyword, "a statement")) return false;
    const auto row = std::ranges::find(statement_table, keyword, &StatementRow::keyword);
    if (row == std::end(statement_table)) return cursor_.fail_expected("a statement", keyword);
    if (row->use == Use::starts_gate) {
      if (is_in_gate_ && !finish_gate()) return false;
    } else if (!is_in_gate_) {
      return cursor_.fail_expected("'GATE' or 'LATCH'", keyword);
    } else if (row->use == Use::describes_latch && !described_.is_latch) {
      return cursor_.fail_expected("a statement of a combinational gate", keyword);
    }
    return (this->*row->take)();
  }

  bool take_gate() { return take_cell(false); }
  bool take_latch() { return take_cell(true); }

  // "GATE" name area equation .
  bool take_cell(bool is_latch) {
    described_ = {};
    described_.is_latch = is_latch;
    is_in_gate_ = true;
    return cursor_.take_word(described_.name, "the name of a gate") &&
           cursor_.take_number(described_.area, 0, "an area, a number that is not negative") &&
           parse_gate_equation(cursor_, described_.equation);
  }

  // pin = "PIN" ( name | "*" ) ( "INV" | "NONINV" | "UNKNOWN" ) load load 4 * delay .
  bool take_pin() {
    if (!cursor_.take_word(described_.declared_pins.emplace_back(), "the name of a pin or '*'")) {
      return false;
    }
    std::string_view phase;
    const std::string_view expected = "'INV', 'NONINV' or 'UNKNOWN'";
    if (!cursor_.take_word(phase, expected)) return false;
    if (std::ranges::find(phases, phase) == std::end(phases)) {
      return cursor_.fail_expected(expected, phase);
    }
    return skip_numbers(load_and_delay_numbers, "a load or a delay");
  }

  // sequence = "SEQ" output ( feedback | "ANY" ) type .
  bool take_sequence() {
    if (!described_.sequence_output.empty()) return cursor_.fail_expected("only one 'SEQ'");
    std::string_view type;
    if (!cursor_.take_word(described_.sequence_output, "the name of the output") ||
        !cursor_.take_word(described_.feedback, "the name of the feedback or 'ANY'")) {
      return false;
    }
    if (!cursor_.take_word(type, "the type of a latch")) return false;
    const auto row = std::ranges::find(latch_types, type, &LatchTypeRow::keyword);
    if (row == std::end(latch_types)) {
      return cursor_.fail_expected("the type of a latch, such as 'ASYNCH'", type);
    }
    described_.gate_class = row->gate_class;
    return true;
  }

  // control = "CONTROL" name load load 4 * delay .
  bool take_control() {
    return cursor_.take_word(described_.control, "the name of a pin") &&
           skip_numbers(load_and_delay_numbers, "a load or a delay");
  }

  // constraint = "CONSTRAINT" ( name | "*" ) setup-time hold-time .
  bool take_constraint() {
    std::string_view pin;
    return cursor_.take_word(pin, "the name of a pin or '*'") && skip_numbers(2, "a time");
  }

  bool skip_numbers(int count, std::string_view expected) {
    constexpr double lowest = std::numeric_limits<double>::lowest();
    for (double number = 0; count > 0; --count) {
      if (!cursor_.take_number(number, lowest, expected)) return false;
    }
    return true;
  }

  bool finish_gate() {
    LibraryGate gate;
    if (!make_gate(described_, cursor_, gate)) return false;
    const auto [known, is_new] = number_of_.emplace(described_.name, gates_.size());
    if (is_new) {
      gates_.push_back(std::move(gate));
      return true;
    }
    LibraryGate& before = gates_[known->second];
    if (!have_same_function(before, gate)) {
      return cursor_.fail_at(described_.name, "another gate with the name " +
                                                  GenlibCursor::quoted(described_.name) +
                                                  " has a different function");
    }
    before.area = std::min(before.area, gate.area);
    return true;
  }

  GenlibCursor cursor_;
  bool is_in_gate_ = false;  // what described_ holds is a gate whose description may go on
  GateDescription described_;
  std::vector<LibraryGate> gates_;
  std::unordered_map<std::string_view, std::size_t> number_of_;  // of the gates, by their names
};

constexpr GenlibReader::StatementRow GenlibReader::statement_table[] = {
    {"GATE", &GenlibReader::take_gate, Use::starts_gate},
    {"LATCH", &GenlibReader::take_latch, Use::starts_gate},
    {"PIN", &GenlibReader::take_pin, Use::describes_gate},
    {"SEQ", &GenlibReader::take_sequence, Use::describes_latch},
    {"CONTROL", &GenlibReader::take_control, Use::describes_latch},
    {"CONSTRAINT", &GenlibReader::take_constraint, Use::describes_latch},
};

}  // namespace

std::optional<std::vector<LibraryGate>> read_genlib(std::string_view text,
                                                    const std::string& name) {
  auto gates = GenlibReader(text, name).run();
  if (!gates) base::print_error("incorrect syntax of " + name);
  assert(!gates || !gates->empty());
  return gates;
}

}  // namespace vorel::toolkit
