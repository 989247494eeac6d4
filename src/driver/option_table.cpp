#include "driver/option_table.h"

#include <iterator>

#include "driver/help_text.h"

namespace vorel::driver {
namespace {

constexpr ModeRow modes[] = {
    {"-D", Mode::deadlock, ModeGroup::reachability, "Deadlock checking."},
    {"-F", Mode::reach, ModeGroup::reachability,
     "Find a reachable marking satisfying a given REACH predicate."},
    {"-Fs", Mode::reach_stg, ModeGroup::reachability,
     "Find a reachable STG state satisfying a given REACH predicate."},
    {"-C", Mode::csc, ModeGroup::conflicts, "CSC conflict detection."},
    {"-N", Mode::normalcy, ModeGroup::conflicts, "Normalcy property checking mode."},
    {"-R", Mode::resolve, ModeGroup::conflicts, "Resolve encoding conflicts."},
    {"-U", Mode::usc, ModeGroup::conflicts, "USC conflict detection."},
    {"-E", Mode::complex_gate, ModeGroup::synthesis, "Derive complex-gate implementation."},
    {"-G", Mode::gc, ModeGroup::synthesis, "Derive gC-elements implementation."},
    {"-S", Mode::standard_c, ModeGroup::synthesis, "Derive standard-C implementation."},
    {"-T", Mode::decomposition, ModeGroup::synthesis,
     "Logic decomposition and technology mapping (experimental)."},
};

static_assert(std::size(modes) == last_mode);

constexpr ModeSet solution_modes{Mode::deadlock, Mode::reach,        Mode::reach_stg,
                                 Mode::usc,      Mode::csc,          Mode::normalcy,
                                 Mode::resolve,  Mode::decomposition};
constexpr ModeSet trace_modes{Mode::deadlock, Mode::reach, Mode::reach_stg,
                              Mode::usc,      Mode::csc,   Mode::normalcy};
constexpr ModeSet data_modes{Mode::reach, Mode::reach_stg, Mode::decomposition};
constexpr ModeSet stg_modes{Mode::reach_stg,  Mode::usc,          Mode::csc,
                            Mode::normalcy,   Mode::complex_gate, Mode::gc,
                            Mode::standard_c, Mode::resolve,      Mode::decomposition};
constexpr ModeSet method_modes{Mode::deadlock, Mode::usc, Mode::csc, Mode::normalcy};
constexpr ModeSet insertion_modes{Mode::resolve, Mode::decomposition};
constexpr ModeSet resolve_mode{Mode::resolve};
constexpr ModeSet decomposition_mode{Mode::decomposition};

// -b stores what the default is already: the constraints are always generated.
constexpr OptionRow options[] = {
    {"-!", OptionKind::flag, "restrict_branching", 0, 0, 1, all_modes, all_modes,
     "Disable branching on auxiliary variables.", help_text::restrict_branching},
    {"-$N", OptionKind::digit, "solver", 0, 1, 0, all_modes, all_modes,
     "Switch to SAT solver N (0-1).", help_text::solver},
    {"-+", OptionKind::flag, "incremental_acyclic_constraint", 0, 0, 1, all_modes, all_modes, "",
     ""},
    {"-@", OptionKind::flag, "output_configurations", 0, 0, 1, all_modes, trace_modes,
     "Output configurations rather than traces.", help_text::output_configurations},
    {"-a[N]", OptionKind::all_solutions, "all_solutions", 0, 0, -1, solution_modes, solution_modes,
     "Compute all solutions (might be slow).", help_text::all_solutions},
    {"-b", OptionKind::flag, "backward_conflict_constraints", 0, 0, 1, all_modes, all_modes,
     "Generate backward conflict constraints.", help_text::backward_conflicts},
    {"-c[s|l|COEFF=EXPR]", OptionKind::coefficients, "", 0, 0, 0, insertion_modes, insertion_modes,
     "Specifies the coefficients for the cost function.", help_text::coefficients},
    {"-d string", OptionKind::data, "", 0, 0, 0, data_modes, data_modes,
     "Specifies additional mode-dependent data.", help_text::data},
    {"-f", OptionKind::min_cost, "min_cost", 0, 0, 1, solution_modes, solution_modes,
     "Looking for a solution minimising the cost function (might be slow).", help_text::min_cost},
    {"-g[[!][N]]", OptionKind::gates, "max_gate_inputs", 0, 0, 0, all_modes, decomposition_mode,
     "Specifies gates/latches used for logic decomposition.", help_text::gates},
    {"-l[+|-]", OptionKind::plus_minus, "inclusion_constraints", 0, 0, 0, stg_modes, stg_modes,
     "Specifies whether to generate inclusion constraints.", help_text::inclusion_constraints},
    {"-mN", OptionKind::method, "method", 1, 2, 0, method_modes, method_modes,
     "Using method N (1-9).", help_text::method},
    {"-pN", OptionKind::digit, "concurrent_insertions", 0, 2, 0, insertion_modes, insertion_modes,
     "Controls the use of parallel (concurrent) inserions.", help_text::concurrent_insertions},
    {"-r", OptionKind::flag, "use_concurrency_reduction", 0, 0, 1, resolve_mode, resolve_mode,
     "Allows to use concurrency reduction for encoding conflict resolution.",
     help_text::concurrency_reduction},
    {"-s", OptionKind::flag, "store_cnf_formula", 0, 0, 1, all_modes, all_modes,
     "Store the CNF formula for an external SAT solver.", ""},
    {"-t", OptionKind::flag, "decompose_down_to_trivial", 0, 0, 1, decomposition_mode,
     decomposition_mode, "Perform logic decomposition down to the gate/latch level.",
     help_text::decompose_down_to_trivial},
    {"-vN", OptionKind::digit, "verbosity", 0, 9, 0, all_modes, all_modes,
     "The verbosity level (0<=N<=9, the default is 0).", ""},
    {"-w[N]", OptionKind::optional_digit, "wait_mode", 0, 3, 3, all_modes, all_modes,
     "Wait for user input before exiting (prevents the window from closing).",
     help_text::wait_mode},
    {"-x", OptionKind::only_in_help, "", 0, 0, 0, all_modes, all_modes,
     "Saves the results in vorel.xml.", ""},
};

constexpr bool are_selected_by_second_character(std::span<const OptionRow> rows) {
  std::uint64_t seen[2] = {};
  for (const OptionRow& row : rows) {
    const auto letter = static_cast<unsigned char>(row.form[1]);
    const std::uint64_t bit = std::uint64_t{1} << letter % 64;
    if (row.form[0] != '-' || letter >= 128 || (seen[letter / 64] & bit) != 0) return false;
    seen[letter / 64] |= bit;
  }
  return true;
}
static_assert(are_selected_by_second_character(options));

}  // namespace

std::span<const ModeRow> mode_table() { return modes; }
std::span<const OptionRow> option_table() { return options; }

}  // namespace vorel::driver
