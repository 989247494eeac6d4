// verify/verification.h - what is proved of a circuit, or found wrong with it.
// Here:      the questions, their answers, what shows that an answer is no.
// Not here:  how they are told (tools), how a trace looks in a waveform viewer.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "net/net.h"
#include "verify/circuit.h"

namespace vorel::verify {

enum class Question : std::uint8_t {
  initial_state = 0,  // at the start gates rest, but those of signals that the STG excites
  conformance = 1,    // outputs change only where the STG lets them
  hazard = 2,         // an excited gate stays excited until it has fired
  progress = 3,       // an output that is due comes, whatever inputs do, unless an arbiter makes
                      // another come instead
  deadlock = 4,       // the circuit with its environment stops only where the STG does
};
inline constexpr std::size_t question_count = 5;

enum class Answer : std::uint8_t { holds, fails, undecided };

struct TraceEdge {
  WireId wire;
  bool rises = false;
};

// Why an answer is no. The last edge of the trace is the one that goes wrong: for conformance the
// output edge that the STG does not let happen there, for a hazard the edge that takes the
// excitation away. For progress and deadlock the trace ends in the state where the output is due.
struct Finding {
  Question question;
  // The output of the gate concerned: the one that does not rest, changes where it must not, is no
  // longer excited, stays away.
  WireId wire;
  std::string message;           // one line, which names the wires and gates concerned
  std::vector<TraceEdge> trace;  // from the initial state, dummies left out; it replays
};

struct VerificationLimits {
  std::uint64_t max_events = 0;  // of the prefix; 0: none
  double max_seconds = 0;        // 0: none
};

struct Verification {
  std::array<Answer, question_count> answers;  // by Question
  std::vector<Finding> findings;               // at most one for each question, in their order
  // Pairs that were let through: declared, or those between which the STG chooses itself.
  std::vector<std::pair<WireId, WireId>> arbiters;
  std::size_t events = 0, conditions = 0, cut_offs = 0;  // of the prefix of the composition

  // No if some answer is no; else undecided if some answer is.
  Answer verdict() const;
};

}  // namespace vorel::verify
