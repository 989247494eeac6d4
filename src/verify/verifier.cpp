#include "verify/verifier.h"

#include <algorithm>
#include <utility>

#include "base/messages.h"
#include "unfolder/unfolder.h"
#include "verify/progress_check.h"
#include "verify/state_questions.h"

namespace vorel::verify {
namespace {

constexpr std::uint64_t first_prefix_size = 5000, growth_of_prefix = 4;

class Verifier {
 public:
  Verifier(const net::Stg& stg, const Circuit& circuit, const VerifierOptions& options)
      : options_{options},
        deadline_{options.limits.max_seconds},
        functions_{circuit},
        composition_{stg, functions_},
        presets_{
            edge_presets(stg, [this](const net::Signal& s) { return composition_.is_silent(s); })},
        faults_{composition_, presets_ ? *presets_ : no_presets_},
        traces_{composition_, faults_, deadline_} {
    result_.answers.fill(Answer::undecided);
  }

  std::optional<Verification> run() {
    check_initial_state();
    if (presets_)
      ask_on_growing_prefixes();
    else
      base::print_warning("too many dummies come before one edge; all is left undecided");
    if (base::run_failed()) return std::nullopt;
    std::ranges::sort(result_.findings, {}, &Finding::question);
    return std::move(result_);
  }

 private:
  Answer& answer(Question question) { return result_.answers[static_cast<std::size_t>(question)]; }

  void fail(const Fault& fault, std::vector<const TraceBuilder::Event*> events) {
    answer(fault.question) = Answer::fails;
    if (auto finding = traces_.finding(fault, std::move(events)))
      result_.findings.push_back(std::move(*finding));
  }

  void check_initial_state() {
    answer(Question::initial_state) = Answer::holds;
    const auto fault = faults_.find(Question::initial_state, faults_.game().initial_state());
    if (fault) fail(*fault, {});
  }

  // A circuit with a fault goes on behind it, often in very many ways: a fault is looked for before
  // all of them are unfolded.
  void ask_on_growing_prefixes() {
    const std::uint64_t bound = options_.limits.max_events;
    for (std::uint64_t size = first_prefix_size;; size *= growth_of_prefix) {
      const bool is_last_size = bound != 0 && size >= bound;
      if (!unfold(is_last_size ? bound : size)) return;
      const bool is_last = is_complete_ || is_last_size || deadline_.is_over();
      const configuration::StateStructure<net::NetPrefix> structure(prefix_);
      MarkingFormula formula(composition_, *presets_, structure, options_.formula, deadline_);
      if (ask(formula, is_last) || base::run_failed()) return;
    }
  }

  bool unfold(std::uint64_t max_events) {
    unfolder::UnfoldOptions options;
    options.number_of_threads = options_.threads;
    options.max_events = max_events;
    options.max_seconds = deadline_.left();
    options.keep_incomplete = true;
    unfolder::Unfolder<net::Net> unfolder(composition_.make_net(), options);
    if (!unfolder.unfold()) return false;
    is_complete_ = unfolder.is_complete();
    prefix_ = std::move(unfolder).result();
    result_.events = prefix_.events.size();
    result_.conditions = prefix_.conditions.size();
    result_.cut_offs = static_cast<std::size_t>(
        std::ranges::count_if(prefix_.events, [](const auto& e) { return e->is_cut_off(); }));
    return true;
  }

  // True if nothing is left to be asked.
  bool ask(MarkingFormula& formula, bool is_last) {
    ask(formula, Question::conformance, nonconforming(formula));
    const HazardLiterals hazard = hazards(formula);
    ask(formula, Question::hazard, hazard.hazards);
    const bool is_wrong =
        answer(Question::conformance) == Answer::fails || answer(Question::hazard) == Answer::fails;
    if (is_last || is_wrong) ask_the_rest(formula, hazard);
    return is_last || is_wrong;
  }

  void ask_the_rest(MarkingFormula& formula, const HazardLiterals& hazard) {
    const bool arbitrates = find_arbiters(formula, hazard.arbitrations);
    ask(formula, Question::deadlock, {dead(formula)});
    if (base::run_failed()) return;
    ProgressCheck progress(formula, faults_, traces_, result_.arbiters,
                           !arbitrates && answer(Question::conformance) == Answer::holds &&
                               answer(Question::hazard) == Answer::holds);
    auto found = progress.run();
    answer(Question::progress) = proved(found.answer);
    if (found.finding) result_.findings.push_back(std::move(*found.finding));
  }

  // What holds of the markings that are in the prefix.
  Answer proved(Answer answer) const {
    return answer == Answer::holds && !is_complete_ ? Answer::undecided : answer;
  }

  // One after the other: together they are much harder to refute than each alone.
  void ask(MarkingFormula& formula, Question question, const sat::Lits& wrong) {
    if (base::run_failed()) return;
    for (const sat::Lit lit : wrong) {
      const auto found = formula.solve({lit});
      if (!found) return;
      if (*found) return tell(formula, question);
    }
    answer(question) = proved(Answer::holds);
  }

  // What the model shows.
  void tell(MarkingFormula& formula, Question question) {
    const auto events = formula.events_of_model();
    const auto state = traces_.state_after(events);
    if (!state) return;
    const auto fault = faults_.find(question, *state);
    if (fault)
      fail(*fault, events);
    else
      base::print_error("what was found cannot be confirmed in its state");
  }

  // Whether some gate may take away the excitation of another, as far as is known.
  bool find_arbiters(MarkingFormula& formula,
                     const std::vector<HazardLiterals::Arbitration>& arbitrations) {
    bool is_possible = false;
    for (const auto& [loser, winner, happens] : arbitrations) {
      const std::pair<WireId, WireId> pair = std::minmax(loser, winner);
      if (std::ranges::find(result_.arbiters, pair) != result_.arbiters.end()) continue;
      const auto found = formula.solve({happens});
      if (base::run_failed()) return true;
      is_possible = is_possible || found != false;
      if (found != true) continue;
      const auto state = traces_.state_after(formula.events_of_model());
      if (state && !faults_.is_arbitration(loser, winner, *state))
        base::print_error("an arbitration that was found cannot be confirmed in its state");
      result_.arbiters.push_back(pair);
    }
    std::ranges::sort(result_.arbiters);
    return is_possible;
  }

  const VerifierOptions options_;
  const base::Deadline deadline_;
  const CircuitFunctions functions_;
  const Composition composition_;
  const std::optional<EdgePresets> presets_;
  const EdgePresets no_presets_;
  const FaultFinder faults_;
  const TraceBuilder traces_;
  net::NetPrefix prefix_;
  bool is_complete_ = true;
  Verification result_;
};

}  // namespace

std::optional<Verification> verify(const net::Stg& stg, const Circuit& circuit,
                                   const VerifierOptions& options) {
  return Verifier(stg, circuit, options).run();
}

}  // namespace vorel::verify
