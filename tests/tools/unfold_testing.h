// tools/unfold_testing.h - for the tests of the program vorel-unfold.
// Here:      what its output says, nets that are too much for it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/run_program.h"

namespace vorel::tools {

// The first line that starts with the text, without what follows its end; else "".
inline std::string line_starting(const std::string& text, const std::string& start) {
  const std::size_t position = ("\n" + text).find("\n" + start);
  if (position == std::string::npos) return "";
  return text.substr(position, text.find('\n', position) - position);
}

inline std::string sizes_in(const support::ProgramRun& run) {
  return line_starting(run.out, " |B|=");
}

// Sizes and verdict of vorel -D.
inline std::string answer_about(const std::string& file) {
  const support::ProgramRun run = support::run_vorel({"-D", file});
  return sizes_in(run) + "; " + line_starting(run.out, "the system ");
}

inline std::vector<std::string> names_in(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  return names;
}

// Low-level net text, piece by piece.
class LowLevelNet {
 public:
  int place(const std::string& name, bool marked) {
    places_ += "\"" + name + (marked ? "\"M1\n" : "\"\n");
    return ++place_count_;
  }
  void transition(const std::string& name, const std::vector<int>& inputs,
                  const std::vector<int>& outputs) {
    const std::string number = std::to_string(++transition_count_);
    transitions_ += "\"" + name + "\"\n";
    for (const int p : inputs) consumed_ += std::to_string(p) + ">" + number + "\n";
    for (const int p : outputs) produced_ += number + "<" + std::to_string(p) + "\n";
  }
  std::string text() const {
    return "PL\n" + places_ + "TR\n" + transitions_ + "TP\n" + produced_ + "PT\n" + consumed_;
  }

 private:
  int place_count_ = 0, transition_count_ = 0;
  std::string places_, transitions_, produced_, consumed_;
};

// Concurrent choices between two, and a walk past all of them that leaves them as they are: each
// stage of it doubles the number of events.
inline std::string doubling_net(int stages) {
  LowLevelNet net;
  int walk = net.place("walk0", true);
  for (int i = 0; i < stages; ++i) {
    const std::string n = std::to_string(i);
    const int open = net.place("open" + n, true), next = net.place("walk" + n + "'", false);
    for (const std::string side : {"a", "b"}) {
      const int chosen = net.place(side + n, false), seen = net.place("seen_" + side + n, false);
      net.transition("choose_" + side + n, {open}, {chosen});
      net.transition("pass_" + side + n, {walk, chosen}, {next, seen});
    }
    walk = next;
  }
  return net.text();
}

// Choices between two, both of which lead to the same place, and one transition that takes all:
// under the order of inclusion the search for its presets alone finds 2 to the number of choices.
inline std::string wide_join_net(int choices) {
  LowLevelNet net;
  std::vector<int> inputs, outputs;
  for (int i = 0; i < choices; ++i) {
    const std::string n = std::to_string(i);
    const int open = net.place("open" + n, true), done = net.place("done" + n, false);
    net.transition("a" + n, {open}, {done});
    net.transition("b" + n, {open}, {done});
    inputs.push_back(done);
    outputs.push_back(open);
  }
  net.transition("join", inputs, outputs);
  return net.text();
}

}  // namespace vorel::tools
