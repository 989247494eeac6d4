// formats/net_reading.h - for the tests of the readers of nets.
// Here:      reading a text with its messages caught, a net as one line to compare.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "formats/net_file.h"
#include "support/legacy_files.h"

namespace vorel::formats {

namespace describing {

inline void add_label(std::ostream&, const net::Transition&) {}
inline void add_label(std::ostream& out, const net::StgTransition& transition) {
  const char sign = "+-~"[static_cast<std::size_t>(transition.sign)];
  out << " = " << transition.signal->name << sign;
}

inline void add_signals(std::ostream&, const net::Net&) {}
inline void add_signals(std::ostream& out, const net::Stg& stg) {
  for (const auto& signal : stg.signals) {
    out << "iord"[static_cast<std::size_t>(signal->kind)] << '.' << signal->name << '='
        << "01?"[signal->initial_value] << ' ';
  }
}

}  // namespace describing

// "i.a=? o.b=1 marked p <a+,b->; a+ = a+: p -> q r; ...", all in the order of the net.
template <class N>
std::string describe_net(const N& net) {
  std::ostringstream out;
  describing::add_signals(out, net);
  out << "marked";
  for (const auto& place : net.places) {
    if (place->initial_marking > 0) out << ' ' << place->name;
  }
  for (const auto& transition : net.transitions) {
    out << "; " << transition->name;
    describing::add_label(out, *transition);
    out << ':';
    for (const auto* place : transition->preset) out << ' ' << place->name;
    out << " ->";
    for (const auto* place : transition->postset) out << ' ' << place->name;
  }
  return out.str();
}

struct NetReading {
  std::optional<AnyNet> net;
  std::string messages;  // "Error: ..." and "Warning: ...", one a line

  // Empty for what could not be read.
  std::string description() const {
    return net ? std::visit([](const auto& n) { return describe_net(n); }, *net) : "";
  }
};

inline std::string without_empty_lines(const std::string& text) {
  std::istringstream lines(text);
  std::string kept;
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) kept += kept.empty() ? line : "\n" + line;
  }
  return kept;
}

inline NetReading read_text(const std::string& text, NetFormat format) {
  const support::CaughtMessages messages;
  auto net = read_net_text(text, format, "FILE");
  return {std::move(net), without_empty_lines(messages.text())};
}

// What a text is read as, and what is said of it.
struct ReadingRow {
  const char* what;
  std::string text, description, messages = {};
};

inline void expect_readings(const std::vector<ReadingRow>& rows, NetFormat format) {
  for (const ReadingRow& row : rows) {
    const NetReading reading = read_text(row.text, format);
    EXPECT_EQ(reading.description(), row.description) << row.what;
    EXPECT_EQ(reading.messages, row.messages) << row.what;
  }
}

// Texts that are refused, each with the error that tells why.
inline void expect_faults(const std::vector<std::pair<std::string, std::string>>& rows,
                          NetFormat format) {
  for (const auto& [text, error] : rows) {
    const NetReading reading = read_text(text, format);
    EXPECT_FALSE(reading.net) << text;
    EXPECT_EQ(reading.messages, "Error: " + error) << text;
  }
}

// "(file FILE, line L, column C)"
inline std::string at(int line, int column) {
  return "(file FILE, line " + std::to_string(line) + ", column " + std::to_string(column) + ")";
}

}  // namespace vorel::formats
