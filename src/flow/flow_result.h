// flow/flow_result.h - all that a run of the flow has found out.
// Here:      steps, findings, conflicts, what resolution did, the circuit, its verification, the
//            verdict, as data that outlives the engines.
// Not here:  how it is told (tools, report).
//
// Names are texts, as nets change from step to step. Three STGs may be there: the one given, the
// resolved one, and that of the circuit, which has the signals that mapping inserted as well; each
// with a complete prefix, and those that are equal only once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/indexed_by.h"
#include "flow/flow_request.h"
#include "net/process.h"
#include "verify/circuit.h"
#include "verify/verification.h"

namespace vorel::flow {

// In the order of the run; those that a verdict makes pointless are left out.
enum class Step : std::uint8_t {
  read,
  unfold,
  check,       // of the STG itself, before synthesis
  properties,  // only if there are any
  coding,      // USC and CSC
  resolve,
  synthesise,
  verify,
  report,
};
inline constexpr std::size_t step_count = 9;

struct StepRecord {
  Step step;
  std::string text;  // what came out, in one line
  double seconds = 0;
};

// A firing of an STG.
struct TraceStep {
  std::string transition;
  std::string signal;  // empty for a dummy
  bool value = false;  // of the signal afterwards
};
using StgTrace = std::vector<TraceStep>;  // from the initial state; it replays

enum class FindingKind : std::uint8_t {
  unsafe,           // a place can get two tokens
  inconsistent,     // edges of a signal do not alternate
  not_persistent,   // an output or internal signal is disabled before it has changed
  dead_transition,  // it never fires
  dead_signal,      // none of its transitions ever fires
  deadlock,         // a state in which nothing can fire
  arbitration,      // outputs or internal signals disable each other: an arbiter of the STG's own
  input_held_back,  // an output or internal signal disables an input
  irreducible,      // an encoding conflict that no new signal can resolve
};
// Notes say what is so, warnings what is rarely meant, faults what no circuit can do.
enum class Gravity : std::uint8_t { note, warning, fault };

struct StgFinding {
  FindingKind kind;
  Gravity gravity;
  std::vector<std::string> subjects;  // the place; the signal; the signal that loses, then the one
                                      // that takes; the transitions
  std::string message;                // one line, which names the subjects
  // Empty where nothing has to happen. The last step is the one that goes wrong, as far as a step
  // does: the second token, the edge in the wrong direction, the edge that disables.
  std::optional<StgTrace> trace;
};

// Two states with one code that ask for different behaviour.
struct Conflict {
  bool is_csc = false;     // else the states differ in their markings only
  std::string signal;      // whose next values differ, of a CSC conflict
  std::string code;        // a digit for each signal, in the order of `code_signals`
  StgTrace common;         // what both traces begin with, as far as that was found
  StgTrace first, second;  // behind it
  std::vector<std::string> excited_first, excited_second;  // edges, as "lds+"
  std::vector<std::uint32_t> core;                         // events of the prefix given, ascending
};

// How many cores of CSC conflicts run through each event of a prefix.
using CoreMap = std::vector<std::uint32_t>;

struct Coding {
  bool usc_holds = false, csc_holds = false;
  std::vector<Conflict> conflicts;  // those found: one for each core, CSC before USC
  // All of them, or, if they were too many to list, those found.
  std::size_t csc_cores = 0, usc_cores = 0;
  bool has_all_cores = true;
  CoreMap core_map;  // by event of the prefix
  std::vector<std::string> code_signals;
};

struct AppliedTransformation {
  bool is_insertion = true;        // else a reduction of concurrency
  std::string signal;              // inserted
  std::vector<std::string> parts;  // edges, or the one reduction
  std::uint64_t cost = 0;
  std::string cost_text;
};

struct Resolution {
  std::vector<AppliedTransformation> transformations;
  bool is_complete = false;  // no conflict left
  std::size_t cores_left = 0;
};

struct Equation {
  std::string function;  // "z", "z SET", "z RESET"
  std::string text;      // the right side
  std::uint64_t literals = 0;
  std::vector<std::string> triggers;
};

// A gate of the circuit.
struct Instance {
  struct Pin {
    std::string pin;  // of the gate; empty where there is no gate of a library
    std::string wire;
    bool is_inverted = false;  // in no time
  };
  std::string name;
  std::string gate;    // of the library; empty: a gate with this function
  std::string output;  // wire
  bool is_output_inverted = false;
  std::vector<Pin> inputs;
  std::string function;  // in the names of the wires
  double area = 0;
};

struct Attempt {
  Style style;
  std::string failure;  // empty: taken
};

struct CircuitResult {
  Style style = Style::mapped;  // never automatic
  std::vector<Equation> equations;
  std::vector<Instance> instances;
  double area = 0;                    // of a mapped circuit
  std::vector<std::string> inserted;  // signals, by mapping
  std::string module_name, module_text;
  std::string models_text;     // of the library's gates; empty if none is used
  std::string testbench_text;  // empty unless wanted
  verify::Circuit circuit;
  std::optional<verify::Verification> verification;  // next to the circuit's STG
};

enum class PropertyAnswer : std::uint8_t { holds, witness, undecided };

struct PropertyResult {
  std::string name, text;
  // A property asks whether there is a state that satisfies it: a witness shows one.
  PropertyAnswer answer = PropertyAnswer::undecided;
  StgTrace trace;                                           // of a witness
  std::vector<std::pair<std::string, std::string>> values;  // of outer quantifiers
  std::string message;                                      // why it is undecided
};

struct StgSizes {
  std::size_t places = 0, transitions = 0, inputs = 0, outputs = 0, internals = 0, dummies = 0;
  std::size_t conditions = 0, events = 0, cut_offs = 0;
};
// Without those of its prefix.
StgSizes sizes_of(const net::Stg& stg);

// The numbers are exit codes.
enum class Verdict : std::uint8_t {
  verified = 0,
  verified_with_warnings = 1,
  error = 2,
  faulty_stg = 3,
  gave_up = 4,
};

struct FlowResult {
  Verdict verdict = Verdict::error;
  std::string sentence;                       // the verdict, in one line
  std::string hint;                           // what to do next; empty after a good end
  std::vector<std::string> warnings, errors;  // as far as findings do not say it
  std::vector<StepRecord> steps;
  std::vector<StgFinding> findings;  // faults first
  std::optional<net::StgPrefix> given, resolved, mapped;
  StgSizes sizes;                // of the STG given
  std::optional<Coding> coding;  // of the STG given
  std::optional<Resolution> resolution;
  std::optional<CoreMap> resolved_core_map;  // by event of `resolved`
  std::vector<PropertyResult> properties;
  std::vector<Attempt> attempts;
  std::optional<CircuitResult> circuit;
  double seconds = 0;

  // The STG that the circuit implements; null without a prefix.
  const net::StgPrefix* circuit_stg() const;
};

}  // namespace vorel::flow
