#include "decomposition/decomposition_driver.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <utility>

#include "base/clock.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "decomposition/deco_cost.h"
#include "formats/g_writer.h"
#include "resolution/apply_reduction.h"

namespace vorel::decomposition {
namespace {

constexpr const char* file_name = "vorel";
constexpr const char* signal_name = "map";
constexpr int verbosity_of_rounds = 1, verbosity_of_reuse = 2, verbosity_of_files = 3;
constexpr std::size_t line_width = 52;

bool tells(int verbosity) { return base::verbosity() >= verbosity; }

// Adds the time that it lives.
class Timer {
 public:
  explicit Timer(double& seconds) : seconds_{seconds}, start_{base::ticks_now()} {}
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  ~Timer() { seconds_ += base::seconds_of(base::ticks_now() - start_); }

 private:
  double& seconds_;
  std::uint64_t start_;
};

std::uint32_t most_pins(const GateLibrary& library, const std::vector<std::string>& gates) {
  std::uint32_t pins = 2;
  for (const std::string& gate : gates) pins = std::max(pins, library.gate(gate).input_count());
  return pins;
}

synthesis::SignalSolution& solution(const synthesis::EquationSearch& equations,
                                    std::size_t number) {
  return static_cast<synthesis::SignalSolution&>(*equations.found().solutions[number]);
}

// Of a signal that is not implemented yet, and for which something can be done.
bool can_be_applied(const Deco& deco) {
  return deco.kind != DecoKind::uninitialised && !deco.directly_implementable &&
         deco.chosen_part() != nullptr;
}

}  // namespace

struct DecompositionDriver::Tools {
  Tools(GateLibrary of, net::StgPrefix& prefix, const base::Params& params)
      : library{std::move(of)},
        gates{library.gate_list(static_cast<std::uint32_t>(params.get("max_gate_inputs")),
                                params.get("use_latches") != 0)},
        variables{most_pins(library, gates)},
        inserter{prefix, signal_name, variables.names(), params},
        decomposer{library, gates, variables, inserter} {}

  const GateLibrary library;
  const std::vector<std::string> gates;
  SignalVariables variables;
  SubfunctionInserter inserter;
  SignalDecomposer decomposer;
};

DecompositionDriver::DecompositionDriver(net::StgPrefix& prefix, const base::Params& params,
                                         std::string library_name)
    : prefix_{prefix}, params_{params}, library_name_{std::move(library_name)} {}

DecompositionDriver::~DecompositionDriver() = default;

void DecompositionDriver::run() {
  if (!prepare() || !decompose_all()) {
    decos_.clear();
    base::print_error("failed to decompose");
    return;
  }
  if (formats::save_g_and_mci(prefix_, file_name)) build_circuit();
}

bool DecompositionDriver::prepare() {
  std::optional<GateLibrary> library = GateLibrary::read(library_name_);
  if (!library || !resolution::prepare_for_insertions(prefix_)) return false;
  tools_ = std::make_unique<Tools>(std::move(*library), prefix_, params_);
  return true;
}

bool DecompositionDriver::decompose_all() {
  for (;;) {
    ++stats_.rounds;
    if (!derive()) return false;
    reuse_decompositions();
    const std::optional<std::size_t> chosen = choose();
    if (base::run_failed()) return false;
    if (!chosen) {
      return std::ranges::all_of(functions_, [this](const SignalFunctions& functions) {
        return decos_.at(functions.name()).directly_implementable;
      });
    }
    if (!apply(*chosen)) return false;
  }
}

// False after a reported failure, and if there is nothing to derive.
bool DecompositionDriver::derive() {
  const Timer timer(stats_.derivation_seconds);
  functions_.clear();
  for (std::size_t i = 0; i < prefix_.internals_end; ++i)
    tools_->variables.of(prefix_.signals[i]->name);
  const auto run = [&](std::optional<synthesis::EquationSearch>& search,
                       synthesis::SynthesisStyle style) {
    base::Params params = params_;
    params.set("synthesis_type", static_cast<std::int32_t>(style));
    params.set("solver", 0);
    search.emplace(prefix_, configuration::SearchOptions::of(params), style);
    search->run();
    return !base::run_failed() && !search->found().solutions.empty();
  };
  const bool uses_latches = params_.get("use_latches") != 0;
  if (!run(whole_, synthesis::SynthesisStyle::four_sets)) return false;
  for (std::size_t i = 0; i < whole_->found().solutions.size(); ++i) {
    solution(*whole_, i).trim(4, 8);
    functions_.push_back({.solution = &solution(*whole_, i)});
  }
  if (tells(verbosity_of_rounds)) tell_equations();
  if (!uses_latches) return true;
  if (!run(latches_, synthesis::SynthesisStyle::standard_c)) return false;
  for (std::size_t i = 0; i < functions_.size(); ++i) {
    for (const std::size_t number : {2 * i, 2 * i + 1}) solution(*latches_, number).trim(2, 4);
    functions_[i].set = &solution(*latches_, 2 * i);
    functions_[i].reset = &solution(*latches_, 2 * i + 1);
  }
  return true;
}

void DecompositionDriver::tell_equations() const {
  for (const SignalFunctions& functions : functions_) {
    std::cerr << '\n';
    functions.solution->print(std::cerr);
  }
  std::cerr << "\nCG signals' costs:";
  for (const SignalFunctions& functions : functions_)
    std::cerr << ' ' << functions.solution->cost();
}

// What needs an insertion was found for the STG as it was.
void DecompositionDriver::reuse_decompositions() {
  for (const SignalFunctions& functions : functions_) {
    const auto entry = decos_.find(functions.name());
    if (entry == decos_.end()) continue;
    const Deco& deco = entry->second;
    if (!deco.directly_implementable || !tools_->decomposer.still_holds(deco, functions)) {
      decos_.erase(entry);
      continue;
    }
    ++stats_.reused;
    if (tells(verbosity_of_reuse)) {
      const std::string line = '\n' + std::string(line_width, '$');
      std::cerr << line << "\nRe-using decomposition for " << functions.name() << line;
    }
  }
}

std::optional<std::size_t> DecompositionDriver::choose() {
  const Timer timer(stats_.decomposition_seconds);
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < functions_.size(); ++i) order.push_back(i);
  const auto cost_of = [this](std::size_t i) { return functions_[i].solution->cost(); };
  std::ranges::stable_sort(order, std::greater<>(), cost_of);
  std::optional<std::size_t> best;
  for (const std::size_t i : order) {
    const std::string& name = functions_[i].name();
    if (best && decos_.at(functions_[*best].name()).chosen_part()->is_settled() &&
        cost_of(i) < cost_of(*best))
      break;
    if (!decos_.contains(name))
      decos_.emplace(name, tools_->decomposer.decompose(
                               functions_[i], static_cast<std::uint32_t>(prefix_.signals.size())));
    if (base::run_failed()) return std::nullopt;
    if (!can_be_applied(decos_.at(name))) continue;
    if (!best || is_preferred({&decos_.at(name), cost_of(i)},
                              {&decos_.at(functions_[*best].name()), cost_of(*best)}))
      best = i;
  }
  return best;
}

bool DecompositionDriver::apply(std::size_t signal) {
  const Timer timer(stats_.insertion_seconds);
  const std::string name = functions_[signal].name();
  const Deco deco = decos_.extract(name).mapped();
  const std::string line(line_width, '@');
  if (tells(verbosity_of_rounds)) {
    std::cerr << "\n\n"
              << line << "\nChosen decomposition(s):\n\nSignal " << name
              << to_string(deco, tools_->library, tools_->variables.names());
  }
  const Subfunction& part = *deco.chosen_part();
  SubfunctionInserter& inserter = tools_->inserter;
  std::optional<SubfunctionInsertion> insertion = inserter.insert(part.function, name, false);
  assert(insertion && "the candidate was rated with it");
  const net::SignalId inserted = inserter.apply(*insertion);
  inserted_.push_back(base::element(prefix_.signals, inserted).name);
  if (tells(verbosity_of_rounds)) std::cerr << "\n1 new signal(s) inserted\n" << line;
  if (tells(verbosity_of_files) &&
      !formats::save_g_and_mci(prefix_, file_name + std::to_string(stats_.rounds)))
    return false;
  return resolution::re_unfold(prefix_);
}

void DecompositionDriver::build_circuit() {
  circuit_ = std::make_unique<MappedCircuit>(prefix_, tools_->library);
  for (const SignalFunctions& functions : functions_)
    circuit_->add(decos_.at(functions.name()), functions.solution->triggers(),
                  tools_->variables.names());
}

void DecompositionDriver::report(const std::string& output) const {
  if (circuit_ != nullptr) {
    circuit_->report(output);
  } else {
    report_failure(output);
  }
}

void DecompositionDriver::print_statistics(std::ostream& stream) const {
  if (whole_) whole_->print_statistics(stream);
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
