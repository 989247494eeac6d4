// driver/option_table.h - the tables of the command line: modes and options.
// Here:      what exists and where it is valid; the parser (driver/command_line.h) and the help
//            (driver/help.h), brief and full, read these rows.
// Not here:  the defaults (base/default_params.h), the long paragraphs of the manual
//            (driver/help_text.h).
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "driver/run_request.h"

namespace vorel::driver {

// The values of the option key `mode`.
enum class Mode : std::uint8_t {
  none = 0,
  deadlock = 1,
  reach = 2,
  reach_stg = 3,
  usc = 4,
  csc = 5,
  normalcy = 6,
  complex_gate = 7,
  gc = 8,
  standard_c = 9,
  resolve = 10,
  decomposition = 11,
};
inline constexpr std::uint8_t last_mode = 11;

class ModeSet {
 public:
  constexpr ModeSet(std::initializer_list<Mode> modes) {
    for (const Mode mode : modes) bits_ |= 1u << static_cast<unsigned>(mode);
  }
  constexpr bool contains(Mode mode) const {
    return (bits_ >> static_cast<unsigned>(mode) & 1u) != 0;
  }
  constexpr bool operator==(const ModeSet&) const = default;

 private:
  std::uint32_t bits_ = 0;
};

inline constexpr ModeSet all_modes{Mode::deadlock,   Mode::reach,    Mode::reach_stg,    Mode::usc,
                                   Mode::csc,        Mode::normalcy, Mode::complex_gate, Mode::gc,
                                   Mode::standard_c, Mode::resolve,  Mode::decomposition};

enum class ModeGroup : std::uint8_t { reachability, conflicts, synthesis };

struct ModeRow {
  std::string_view option;
  Mode mode;
  ModeGroup group;
  std::string_view line;  // of the help
};

enum class OptionKind : std::uint8_t {
  flag,            // nothing may follow; stores `bare`
  digit,           // one digit from `low` to `high`; stored as it is
  optional_digit,  // the same, or nothing, which stores `bare`
  method,          // a digit; one not from `low` to `high` is known, but invalid
  all_solutions,   // nothing or a number
  coefficients,    // a preset or one expression
  data,            // the next argument
  min_cost,        // a flag that excludes -a
  gates,           // "!", a number, both or nothing
  plus_minus,      // "+" or "-"
  only_in_help,    // never accepted
};

struct OptionRow {
  std::string_view form;  // as the help writes it; the second character selects the row
  OptionKind kind;
  std::string_view key;
  int low, high, bare;
  ModeSet valid;               // elsewhere an error
  ModeSet effective;           // elsewhere silently ignored
  std::string_view line;       // of the help; empty for an option that it does not list
  std::string_view paragraph;  // of the full help; {NAME} stands for a current value
};

// In the order of the help.
std::span<const ModeRow> mode_table();
std::span<const OptionRow> option_table();

}  // namespace vorel::driver
