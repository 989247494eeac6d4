#include "decomposition/decomposition_driver.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <utility>

#include "base/clock.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "decomposition/deco_cost.h"
#include "decomposition/signal_variables.h"
#include "formats/g_writer.h"
#include "resolution/apply_reduction.h"
#include "synthesis/assumptions.h"

namespace vorel::decomposition {
namespace {

constexpr const char* signal_name = "map";
constexpr int verbosity_of_rounds = 1, verbosity_of_reuse = 2, verbosity_of_files = 3;
constexpr std::size_t line_width = 52;

// Steps that bring no progress, in a run.
constexpr int most_detours = 8;

using configuration::Notes;

bool tells(int verbosity) { return base::verbosity() >= verbosity; }

std::uint32_t most_pins(const GateLibrary& library, const std::vector<std::string>& gates) {
  std::uint32_t pins = 2;
  for (const std::string& gate : gates) pins = std::max(pins, library.gate(gate).input_count());
  return pins;
}

std::uint64_t cost_of(const SignalFunctions& functions) { return functions.solution->cost(); }

void tell_equations(const std::vector<SignalFunctions>& signals) {
  for (const SignalFunctions& functions : signals) {
    std::cerr << '\n';
    functions.solution->print(std::cerr);
  }
  std::cerr << "\nCG signals' costs:";
  for (const SignalFunctions& functions : signals) std::cerr << ' ' << cost_of(functions);
}

void tell_reuse(const std::string& signal) {
  const std::string line = '\n' + std::string(line_width, '$');
  std::cerr << line << "\nRe-using decomposition for " << signal << line;
}

// Incomplete after a reported error.
SignalDecomposer::Names signals_that_others_disable(const net::StgPrefix& prefix,
                                                    const base::Params& params) {
  const configuration::StateStructure<net::StgPrefix> structure(prefix);
  const auto encoding = configuration::SearchOptions::of(params).encoding;
  SignalDecomposer::Names names;
  for (const synthesis::Disabling& pair : synthesis::find_disablings(structure, encoding))
    names.insert(base::element(prefix.signals, pair.signal).name);
  return names;
}

bdd::Bdd regular(const bdd::Bdd& function) {
  return function.is_complement() ? ~function : function;
}

}  // namespace

struct DecompositionDriver::Tools {
  Tools(GateLibrary of, net::StgPrefix& prefix, const base::Params& params)
      : disabled_signals{signals_that_others_disable(prefix, params)},
        library{std::move(of)},
        gates{library.gate_list(static_cast<std::uint32_t>(params.get("max_gate_inputs")),
                                params.get("use_latches") != 0)},
        variables{most_pins(library, gates)},
        inserter{prefix, signal_name, variables.names(), params},
        decomposer{library, gates, variables, inserter, disabled_signals} {}

  // Insertions add none.
  const SignalDecomposer::Names disabled_signals;
  const GateLibrary library;
  const std::vector<std::string> gates;
  SignalVariables variables;
  SubfunctionInserter inserter;
  SignalDecomposer decomposer;
};

DecompositionDriver::DecompositionDriver(net::StgPrefix& prefix, const base::Params& params,
                                         std::string library_name, std::string file_name)
    : prefix_{prefix},
      params_{params},
      library_name_{std::move(library_name)},
      file_name_{std::move(file_name)} {}

DecompositionDriver::~DecompositionDriver() = default;

void DecompositionDriver::run() {
  const bool is_decomposed = prepare() && decompose_all();
  if (tools_ != nullptr && tells(verbosity_of_rounds)) tell_statistics();
  if (!is_decomposed) {
    base::print_error("failed to decompose");
    return;
  }
  if (save(file_name_)) build_circuit();
}

bool DecompositionDriver::save(const std::string& base_name) const {
  return file_name_.empty() || formats::save_g_and_mci(prefix_, base_name);
}

void DecompositionDriver::tell_statistics() const {
  const InserterStats& inserter = inserter_stats();
  base::print_formatted(
      std::cerr,
      "\nDecomposition statistics:\n rounds=%u insertions tried=%llu decompositions re-used=%llu"
      "\n candidates=%llu completed=%llu matcher queries=%llu relations=%llu"
      "\n subfunctions=%llu known=%llu choices of edges=%llu deviating=%llu breaking the "
      "coding=%llu"
      "\n with general insertions=%llu found=%llu"
      "\n seconds deriving=%.2f decomposing=%.2f inserting=%.2f\n",
      stats_.rounds, static_cast<unsigned long long>(stats_.tried),
      static_cast<unsigned long long>(stats_.reused),
      static_cast<unsigned long long>(decomposer_stats().candidates),
      static_cast<unsigned long long>(decomposer_stats().completed),
      static_cast<unsigned long long>(matcher_stats().queries),
      static_cast<unsigned long long>(decomposer_stats().relations),
      static_cast<unsigned long long>(inserter.questions),
      static_cast<unsigned long long>(inserter.cache_hits),
      static_cast<unsigned long long>(inserter.choices),
      static_cast<unsigned long long>(inserter.deviating),
      static_cast<unsigned long long>(inserter.refused),
      static_cast<unsigned long long>(inserter.searches_of_general),
      static_cast<unsigned long long>(inserter.general_found), stats_.derivation_seconds,
      stats_.decomposition_seconds - inserter.seconds, inserter.seconds);
}

bool DecompositionDriver::prepare() {
  std::optional<GateLibrary> library = GateLibrary::read(library_name_);
  if (!library || !resolution::prepare_for_insertions(prefix_)) return false;
  tools_ = std::make_unique<Tools>(std::move(*library), prefix_, params_);
  tools_->inserter.set_deadline(deadline_);
  return !base::run_failed();
}

bool DecompositionDriver::decompose_all() {
  state_ = state_of(prefix_, {}, {});
  while (state_ && !state_->complexity.empty())
    if (!insert_a_signal() && !admit_costly_latches()) return false;
  return state_.has_value();
}

bool DecompositionDriver::admit_costly_latches() {
  if (base::run_failed() || params_.get("use_latches") == 0 ||
      tools_->decomposer.admits_costly_latches())
    return false;
  tools_->decomposer.admit_costly_latches();
  state_ = state_of(prefix_, state_->implementations, {});
  return state_.has_value();
}

// A gate that the signal had before is kept while it is right.
std::optional<DecompositionDriver::State> DecompositionDriver::state_of(
    const net::StgPrefix& prefix, const Implementations& known, const std::string& inserted) {
  const base::AddedTime timer(stats_.derivation_seconds);
  for (std::size_t i = 0; i < prefix.internals_end; ++i)
    tools_->variables.of(prefix.signals[i]->name);
  std::optional<Derivation> equations;
  if (state_) {
    const Derivation::Before before{state_->equations, inserted};
    equations = Derivation::of(prefix, params_, Notes::left_out, &before);
  } else {
    equations = Derivation::of(prefix, params_, Notes::given);
  }
  if (!equations) return std::nullopt;
  if (tells(verbosity_of_rounds)) tell_equations(equations->functions());
  State state{.equations = std::move(*equations), .implementations = {}, .complexity = {}};
  for (const SignalFunctions& functions : state.equations.functions()) {
    const auto before = known.find(functions.name());
    Deco deco;
    if (before != known.end() && tools_->decomposer.still_holds(before->second, functions)) {
      deco = before->second;
      ++stats_.reused;
      if (tells(verbosity_of_reuse)) tell_reuse(functions.name());
    } else {
      deco = tools_->decomposer.implementation_of(functions);
    }
    if (deco.directly_implementable)
      state.implementations.emplace(functions.name(), std::move(deco));
    else
      state.complexity.push_back(cost_of(functions));
  }
  std::ranges::sort(state.complexity, std::greater<>());
  return state;
}

bool DecompositionDriver::insert_a_signal() {
  ++stats_.rounds;
  seen_.insert(state_->complexity);
  decos_.clear();
  rejected_.clear();
  std::optional<Trial> least_harmful;
  while (const Deco* const deco = choose()) {
    std::optional<resolution::InsertedSignal> inserted = inserted_for(*deco);
    if (base::run_failed()) return false;
    if (!inserted) {
      decos_.at(deco->signal).reconsider_front();
      continue;
    }
    rejected_.insert(regular(deco->chosen_part()->function));
    std::optional<Trial> trial = attempt(*deco, std::move(*inserted));
    if (!trial) return false;
    if (trial->state.complexity < state_->complexity) return adopt(std::move(*trial));
    const bool is_new = !seen_.contains(trial->state.complexity);
    if (is_new && (!least_harmful || trial->state.complexity < least_harmful->state.complexity))
      least_harmful = std::move(trial);
  }
  if (base::run_failed() || !least_harmful || ++detours_ > most_detours) return false;
  return adopt(std::move(*least_harmful));
}

// Of the signals without a gate, the one with the largest function first.
const Deco* DecompositionDriver::choose() {
  const base::AddedTime timer(stats_.decomposition_seconds);
  std::vector<const SignalFunctions*> order;
  for (const SignalFunctions& functions : state_->equations.functions())
    if (!state_->implementations.contains(functions.name())) order.push_back(&functions);
  std::ranges::stable_sort(order, std::greater<>(),
                           [](const SignalFunctions* functions) { return cost_of(*functions); });
  std::optional<RatedDeco> best;
  for (const SignalFunctions* functions : order) {
    if (best && best->deco->chosen_part()->is_settled() &&
        cost_of(*functions) < best->gate_literals)
      break;
    const Deco* const deco = best_of(*functions);
    if (base::run_failed()) return nullptr;
    if (deco == nullptr) continue;
    const RatedDeco rated{deco, cost_of(*functions)};
    if (!best || is_preferred(rated, *best)) best = rated;
  }
  return best ? best->deco : nullptr;
}

const Deco* DecompositionDriver::best_of(const SignalFunctions& functions) {
  auto entry = decos_.find(functions.name());
  if (entry == decos_.end()) {
    entry = decos_
                .emplace(functions.name(),
                         tools_->decomposer.decompositions(
                             functions, static_cast<std::uint32_t>(prefix_.signals.size())))
                .first;
  }
  for (;;) {
    const Deco* const deco = entry->second.front();
    if (deco == nullptr) return nullptr;
    const Subfunction* const part = deco->chosen_part();
    if (part != nullptr && !rejected_.contains(regular(part->function))) return deco;
    entry->second.drop_front();
  }
}

std::optional<resolution::InsertedSignal> DecompositionDriver::inserted_for(const Deco& deco) {
  const Subfunction& part = *deco.chosen_part();
  const std::optional<SubfunctionInsertion> insertion =
      tools_->inserter.insert(part.function, deco.signal, false);
  if (!insertion || insertion->text() != part.insertion->text) return std::nullopt;
  resolution::InsertedSignal inserted = tools_->inserter.after(*insertion);
  if (tools_->inserter.keeps_coding(inserted.prefix)) return inserted;
  tools_->inserter.refuse(part.function, *insertion);
  return std::nullopt;
}

std::optional<DecompositionDriver::Trial> DecompositionDriver::attempt(
    const Deco& deco, resolution::InsertedSignal inserted) {
  ++stats_.tried;
  std::string name = base::element(inserted.prefix.signals, inserted.signal).name;
  if (!resolution::re_unfold(inserted.prefix)) return std::nullopt;
  std::optional<State> state = state_of(inserted.prefix, state_->implementations, name);
  if (!state) return std::nullopt;
  return Trial{.prefix = std::move(inserted.prefix),
               .signal = std::move(name),
               .deco = deco,
               .state = std::move(*state)};
}

bool DecompositionDriver::adopt(Trial trial) {
  if (tells(verbosity_of_rounds)) {
    const std::string line = '\n' + std::string(line_width, '@');
    std::cerr << "\n\n"
              << line << "\nChosen decomposition(s):\n\nSignal " << trial.deco.signal
              << to_string(trial.deco, tools_->library, tools_->variables.names())
              << "\n1 new signal(s) inserted" << line;
  }
  tools_->inserter.adopt(std::move(trial.prefix));
  inserted_.push_back(std::move(trial.signal));
  state_ = std::move(trial.state);
  return !tells(verbosity_of_files) || save(file_name_ + std::to_string(stats_.rounds));
}

// What a later signal has made cheaper than it was is taken so.
void DecompositionDriver::build_circuit() {
  circuit_ = std::make_unique<MappedCircuit>(prefix_, tools_->library);
  for (const SignalFunctions& functions : state_->equations.functions()) {
    const Deco& kept = state_->implementations.at(functions.name());
    const Deco fresh = tools_->decomposer.implementation_of(functions);
    const bool is_cheaper = fresh.directly_implementable && fresh.cost < kept.cost;
    circuit_->add(is_cheaper ? fresh : kept, functions.solution->triggers(),
                  tools_->variables.names());
  }
}

void DecompositionDriver::report(const std::string& output) const {
  if (circuit_ != nullptr) {
    circuit_->report(output);
  } else {
    report_failure(output);
  }
}

void DecompositionDriver::print_statistics(std::ostream& stream) const {
  if (state_) stream << state_->equations.statistics();
}

const SignalDecomposer::Stats& DecompositionDriver::decomposer_stats() const {
  return tools_->decomposer.stats();
}

const GateMatcher::Stats& DecompositionDriver::matcher_stats() const {
  return tools_->decomposer.matcher_stats();
}

const InserterStats& DecompositionDriver::inserter_stats() const {
  return tools_->inserter.stats();
}

}  // namespace vorel::decomposition
