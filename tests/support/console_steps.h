// tests/support/console_steps.h - the commands in a manual, and what they are said to print.
#pragma once

#include <sstream>
#include <string>
#include <vector>

namespace vorel::support {

struct ConsoleStep {
  std::string command, answer;
  std::size_t line = 0;  // in the manual, from 1
};

// An open quote of the shell; "\'" is none.
inline bool has_open_quote(const std::string& command) {
  bool is_open = false;
  for (std::size_t i = 0; i < command.size(); ++i)
    if (command[i] == '\'' && (i == 0 || command[i - 1] != '\\')) is_open = !is_open;
  return is_open;
}

// Between "```console" and "```" lines that begin with "$ " are commands, which go on while a quote
// is open, or up to the END of a here-document; the others are what comes of them.
inline std::vector<ConsoleStep> console_steps(const std::string& manual) {
  std::vector<ConsoleStep> steps;
  std::istringstream lines(manual);
  bool is_console = false, goes_on = false, in_document = false;
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    if (line.starts_with("```")) {
      is_console = line == "```console";
      continue;
    }
    if (!is_console) continue;
    if (!goes_on && line.starts_with("$ ")) {
      steps.push_back({line.substr(2), "", number});
      in_document = line.ends_with("<<END") || line.ends_with("<<'END'");
    } else {
      (goes_on ? steps.back().command : steps.back().answer) += '\n' + line;
      in_document = in_document && line != "END";
    }
    goes_on = in_document || has_open_quote(steps.back().command);
  }
  return steps;
}

}  // namespace vorel::support
