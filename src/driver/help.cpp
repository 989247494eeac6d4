#include "driver/help.h"

#include <cassert>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "driver/help_text.h"
#include "driver/option_table.h"

namespace vorel::driver {
namespace {

std::string current_value(std::string_view name, const RunRequest& defaults) {
  for (const resolution::CoefficientRow& row : resolution::coefficient_table()) {
    if (row.name == name) return defaults.coefficients.*row.text;
  }
  return std::to_string(defaults.params.get(name));
}

// The text with the current values in the place of their names in braces.
std::string with_values(std::string_view text, const RunRequest& defaults) {
  std::string result;
  for (std::size_t open = text.find('{'); open != std::string_view::npos; open = text.find('{')) {
    const std::size_t close = text.find('}', open);
    assert(close != std::string_view::npos);
    result.append(text.substr(0, open));
    result.append(current_value(text.substr(open + 1, close - open - 1), defaults));
    text.remove_prefix(close + 1);
  }
  return result.append(text);
}

// "-D, -F and -U", in the order of the table.
std::string list_of(ModeSet modes) {
  std::string list;
  std::size_t last_comma = std::string::npos;
  for (const ModeRow& row : mode_table()) {
    if (!modes.contains(row.mode)) continue;
    if (!list.empty()) {
      last_comma = list.size();
      list.append(", ");
    }
    list.append(row.option);
  }
  assert(!list.empty() && "an option is for some mode");
  if (last_comma != std::string::npos) list.replace(last_comma, 1, " and");
  return list;
}

std::string availability(const OptionRow& row) {
  const bool ignored_elsewhere = row.effective != row.valid;
  if (!ignored_elsewhere && row.valid == all_modes) {
    return "\n  This option is available in all modes.";
  }
  const std::string modes = list_of(row.effective);
  const bool single = modes.find(' ') == std::string::npos;
  std::string text = "\n  This option is available in the mode" + std::string(single ? " " : "s ");
  text.append(modes).append(ignored_elsewhere ? ",\n  and silently ignored in any other mode."
                                              : ".");
  return text;
}

void print_modes(ModeGroup group) {
  for (const ModeRow& row : mode_table()) {
    if (row.group == group) std::cout << "\n    " << row.option << " - " << row.line;
  }
}

void print_all_modes(bool brief) {
  std::cout << "\n\nModes:\n  Reachability-like properties checking modes:";
  print_modes(ModeGroup::reachability);
  if (!brief) std::cout << help_text::stg_reachability_note;
  std::cout << "\n  Encoding conflicts detection and resolution modes:";
  print_modes(ModeGroup::conflicts);
  std::cout << "\n  Synthesis modes:";
  print_modes(ModeGroup::synthesis);
  if (!brief) std::cout << help_text::mode_notes;
}

void print_options(bool brief, const RunRequest& defaults) {
  std::cout << "\n\nOptions:";
  std::string_view separator;
  for (const OptionRow& row : option_table()) {
    if (row.line.empty()) continue;
    std::cout << separator << "\n  " << row.form << " - " << row.line;
    if (brief) continue;
    std::cout << availability(row) << with_values(row.paragraph, defaults);
    separator = "\n";
  }
}

}  // namespace

void print_help(bool brief, const RunRequest& defaults) {
  std::cout << help_text::banner << help_text::usage;
  if (!brief) std::cout << help_text::usage_notes;
  print_all_modes(brief);
  print_options(brief, defaults);
  if (brief) std::cout << "\nType vorel -h for extended help.";
  std::cout << '\n';
}

}  // namespace vorel::driver
