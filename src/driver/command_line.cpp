#include "driver/command_line.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/default_params.h"
#include "base/messages.h"
#include "driver/help.h"
#include "driver/option_table.h"

namespace vorel::driver {
namespace {

using base::fail;

bool unrecognized(std::string_view argument) {
  return fail(base::with_hint(std::string("unrecognized option: ").append(argument),
                              "vorel -h describes the options"));
}

bool is_digit(char c) { return '0' <= c && c <= '9'; }

// A whole text as scanf reads it with %u: blanks and one sign may come first, and a negative number
// wraps. Numbers beyond 32 bits give the largest one.
std::optional<std::uint32_t> read_unsigned(std::string_view text) {
  constexpr std::uint64_t largest = 0xFFFFFFFFu;
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || !std::ranges::all_of(text, is_digit)) return std::nullopt;
  std::uint64_t value = 0;
  for (const char c : text) value = std::min(10 * value + static_cast<unsigned>(c - '0'), largest);
  return static_cast<std::uint32_t>(negative ? -value : value);
}

// -cs and -cl. The initializers are in the order of the members.
resolution::CoefficientTexts small_preset(Mode mode) {
  assert(mode == Mode::resolve || mode == Mode::decomposition);
  if (mode == Mode::resolve) return resolution::small_preset;
  return {"0", "0", "0", "0", "1", "2", "0"};
}
resolution::CoefficientTexts logic_preset(Mode mode) {
  assert(mode == Mode::resolve || mode == Mode::decomposition);
  if (mode == Mode::resolve) return resolution::logic_preset;
  return {"0", "0", "0", "#s*32", "#s*1", "#s*2", "8"};
}

class CommandLineParser {
 public:
  explicit CommandLineParser(std::span<char* const> arguments) : arguments_{arguments} {
    request_.params = base::default_params();
  }

  std::optional<RunRequest> run();

 private:
  bool parse_mode();
  bool parse_options();
  bool apply(const OptionRow& row, std::string_view argument);
  bool apply_flag(const OptionRow& row, std::string_view argument);
  bool apply_digit(const OptionRow& row, std::string_view argument);
  bool apply_all_solutions(const OptionRow& row, std::string_view argument);
  bool apply_coefficients(const OptionRow& row, std::string_view argument);
  bool apply_data(const OptionRow& row, std::string_view argument);
  bool apply_min_cost(const OptionRow& row, std::string_view argument);
  bool apply_gates(std::string_view argument);
  bool apply_plus_minus(const OptionRow& row, std::string_view argument);
  bool valid_here(const OptionRow& row, std::string_view argument) const;
  bool invalid_here(std::string_view argument) const;
  void use_preset(const resolution::CoefficientTexts& texts);
  bool finish_options();
  bool parse_file_names();

  std::string_view next() {
    assert(!arguments_.empty());
    const std::string_view argument = arguments_.front();
    arguments_ = arguments_.subspan(1);
    return argument;
  }

  std::span<char* const> arguments_;  // what is still to be read
  RunRequest request_;
  Mode mode_ = Mode::none;
};

bool CommandLineParser::invalid_here(std::string_view argument) const {
  return fail(std::string("option ").append(argument).append(" is invalid in the current mode"));
}

bool CommandLineParser::valid_here(const OptionRow& row, std::string_view argument) const {
  return row.valid.contains(mode_) || invalid_here(argument);
}

bool CommandLineParser::apply_flag(const OptionRow& row, std::string_view argument) {
  if (argument.size() != 2) return unrecognized(argument);
  request_.params.set(row.key, row.bare);
  return valid_here(row, argument);
}

bool CommandLineParser::apply_digit(const OptionRow& row, std::string_view argument) {
  if (argument.size() == 2 && row.kind == OptionKind::optional_digit) {
    request_.params.set(row.key, row.bare);
    return valid_here(row, argument);
  }
  if (argument.size() != 3 || !is_digit(argument[2])) return unrecognized(argument);
  assert(row.low <= row.high);
  const int value = argument[2] - '0';
  if (value < row.low || value > row.high) {
    return row.kind == OptionKind::method ? invalid_here(argument) : unrecognized(argument);
  }
  request_.params.set(row.key, value);
  return valid_here(row, argument);
}

bool CommandLineParser::apply_all_solutions(const OptionRow& row, std::string_view argument) {
  if (request_.params.get("min_cost") != 0) {
    return fail("only one option among -f, -a may be specified");
  }
  std::int32_t limit = row.bare;
  if (argument.size() > 2) {
    const auto number = read_unsigned(argument.substr(2));
    if (!number) return unrecognized(argument);
    limit = static_cast<std::int32_t>(*number);
  }
  request_.params.set(row.key, limit);
  return valid_here(row, argument);
}

void CommandLineParser::use_preset(const resolution::CoefficientTexts& texts) {
  request_.coefficients = texts;
  request_.params.set("pwr_of_2", 0);
}

bool CommandLineParser::apply_coefficients(const OptionRow& row, std::string_view argument) {
  if (!valid_here(row, argument)) return false;
  if (argument == "-cs") return use_preset(small_preset(mode_)), true;
  if (argument == "-cl") return use_preset(logic_preset(mode_)), true;
  for (const resolution::CoefficientRow& coefficient : resolution::coefficient_table()) {
    const std::string prefix = std::string("-c").append(coefficient.name).append("=");
    if (!argument.starts_with(prefix)) continue;
    request_.coefficients.*coefficient.text = argument.substr(prefix.size());
    return true;
  }
  return unrecognized(argument);
}

bool CommandLineParser::apply_data(const OptionRow& row, std::string_view argument) {
  if (argument.size() != 2) return unrecognized(argument);
  if (!valid_here(row, argument)) return false;
  // The input file must follow the data.
  if (arguments_.size() < 2) return fail("no data is provided with the -d option");
  request_.data = next();
  return true;
}

bool CommandLineParser::apply_min_cost(const OptionRow& row, std::string_view argument) {
  if (!apply_flag(row, argument)) return false;
  if (request_.params.get("all_solutions") == 0) return true;
  return fail("only one option among -a, -f may be specified");
}

bool CommandLineParser::apply_gates(std::string_view argument) {
  assert(argument.starts_with("-g"));
  std::string_view rest = argument.substr(2);
  if (rest.starts_with('!')) {
    request_.params.set("use_latches", 0);
    rest.remove_prefix(1);
  }
  if (rest.empty()) return true;
  const auto number = read_unsigned(rest);
  if (!number) return unrecognized(argument);
  request_.params.set("max_gate_inputs", static_cast<std::int32_t>(*number));
  return true;
}

bool CommandLineParser::apply_plus_minus(const OptionRow& row, std::string_view argument) {
  if (argument.size() != 3 || (argument[2] != '+' && argument[2] != '-')) {
    return unrecognized(argument);
  }
  request_.params.set(row.key, argument[2] == '+' ? 1 : 0);
  return valid_here(row, argument);
}

bool CommandLineParser::apply(const OptionRow& row, std::string_view argument) {
  assert(argument.size() >= 2 && argument[1] == row.form[1]);
  switch (row.kind) {
    case OptionKind::flag:
      return apply_flag(row, argument);
    case OptionKind::digit:
    case OptionKind::optional_digit:
    case OptionKind::method:
      return apply_digit(row, argument);
    case OptionKind::all_solutions:
      return apply_all_solutions(row, argument);
    case OptionKind::coefficients:
      return apply_coefficients(row, argument);
    case OptionKind::data:
      return apply_data(row, argument);
    case OptionKind::min_cost:
      return apply_min_cost(row, argument);
    case OptionKind::gates:
      return apply_gates(argument);
    case OptionKind::plus_minus:
      return apply_plus_minus(row, argument);
    case OptionKind::only_in_help:
      break;
  }
  return unrecognized(argument);
}

bool CommandLineParser::parse_mode() {
  const std::string_view argument = next();
  for (const ModeRow& row : mode_table()) {
    if (row.option != argument) continue;
    mode_ = row.mode;
    request_.params.set("mode", static_cast<std::int32_t>(row.mode));
    return true;
  }
  return fail(base::with_hint(std::string("unrecognized mode: ").append(argument),
                              "vorel -h describes the modes"));
}

bool CommandLineParser::parse_options() {
  const auto options = option_table();
  while (!arguments_.empty() && *arguments_.front() == '-') {
    const std::string_view argument = next();
    const auto row = std::ranges::find_if(options, [argument](const OptionRow& candidate) {
      return argument.size() >= 2 && candidate.form[1] == argument[1];
    });
    if (row == options.end()) return unrecognized(argument);
    if (!apply(*row, argument)) return false;
  }
  return true;
}

bool CommandLineParser::finish_options() {
  if (request_.data.empty() && (mode_ == Mode::reach || mode_ == Mode::reach_stg)) {
    return fail("the -d option must be used in the current mode to provide additional information");
  }
  const bool synthesis =
      mode_ == Mode::complex_gate || mode_ == Mode::gc || mode_ == Mode::standard_c;
  if (request_.params.get("solver") == -1) request_.params.set("solver", synthesis ? 0 : 1);
  return true;
}

bool CommandLineParser::parse_file_names() {
  if (arguments_.empty()) return fail("unfolding file name must be specified");
  request_.input = next();
  if (!arguments_.empty()) request_.output = next();
  return true;
}

std::optional<RunRequest> CommandLineParser::run() {
  if (arguments_.empty() || std::string_view(arguments_.front()) == "-h") {
    print_help(arguments_.empty(), request_);
    return std::nullopt;
  }
  if (!parse_mode() || !parse_options() || !finish_options() || !parse_file_names()) {
    return std::nullopt;
  }
  assert(request_.params.get("mode") != 0 && request_.params.get("solver") != -1);
  return std::move(request_);
}

}  // namespace

std::optional<RunRequest> parse_command_line(int argc, char** argv) {
  const std::span<char* const> all(argv, static_cast<std::size_t>(argc));
  return CommandLineParser(all.empty() ? all : all.subspan(1)).run();
}

}  // namespace vorel::driver
