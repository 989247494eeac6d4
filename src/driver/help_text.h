// driver/help_text.h - the longer texts of the help.
// Here:      the banner with its credits, notes on the modes, one paragraph per option.
// Not here:  where an option is available, which the help derives from driver/option_table.h.
// A text begins each of its lines with a line end, so that the order of printing makes the layout.
// {NAME} stands for the current value of an option key or of a coefficient text.
#pragma once

#include <string_view>

namespace vorel::driver::help_text {

inline constexpr std::string_view banner = R"(
VOREL model checking/synthesis system, version 6.11alpha Compiled Oct 27 2015.

This system builds on the work of others:

  zChaff (version 2003.11.04), a SAT solver with retractable groups of
  clauses; meant for the derivation of implementations (-$0).

  MiniSat (version 2.2.0), a SAT solver with preprocessing; it answers
  the questions about reachable states and encoding conflicts (-$1).

  SIS (version 1.2), a system for logic synthesis; its algorithms on logic
  networks serve to minimise and factor equations and to read gate libraries.

  BREL, a solver of Boolean relations; it finds the functions into which
  logic decomposition splits a gate.)";

inline constexpr std::string_view usage = R"(

Usage:
	vorel [-h]
or
	vorel mode [options] inputfilename [outputfilename])";

inline constexpr std::string_view usage_notes = R"(

If outputfilename is omitted then stdout is used.

If -h is specified then full help is printed. If no
command-line parameters are given then brief help is printed.

The input is a finite complete prefix of an unfolding, or a merged process:
  *.pnml, *.pnml.gz - both, of nets and of STGs;
  *.mci             - prefixes, in a legacy format;
  *.mp              - merged processes of nets, in a legacy format.
-D takes all of them, -F all but merged processes of STGs, and the other modes
take prefixes of STGs only. The program vorel-unfold makes both from nets and
STGs, which come as *.g, *.ll_net or *.pnml; see vorel-unfold --help.

The name of the output selects what is written there:
  *.xml         - the verdict and all solutions as one XML document;
  *.v           - a Verilog module, in the modes -E, -G, -S and -T;
  cerr          - the same as no name: text for people on stdout;
  anything else - text for other programs: NO, or for each solution YES and
                  its traces, each behind a line _SEQUENCE: (or equations).
What the run reads is never overwritten. Neither is a file that is there and
by its name a net or a process: *.g, *.ll_net, *.pnml, *.mci and *.mp, also
with .gz behind.

Exit codes:
  0 - done, whatever the verdict;
  1 - done, but there were warnings;
  2 - there were errors;
  5 - out of memory.)";

inline constexpr std::string_view stg_reachability_note = R"(

    -Fs differs from -F as follows:
    * only configurations without maximal dummy events are explored;
    * the REACH operators that refer to the signals of the STG can be used;
    * the operator '@' counts an entity as enabled also when it is enabled
      via a sequence of dummies.
)";

inline constexpr std::string_view mode_notes = R"(

  At most one mode can be given.

  In the modes -C, -E, -Fs, -G, -N, -R, -S, -T and -U the input must be an
  unfolding of an STG. The legacy *.mci format has no place for signals, so
  the names of the transitions must carry them, in the form
  [prefix.]identifier[+|-][/number], where the prefix is i (input),
  O (output), I (internal) or d (dummy), for example O.x-/1. The newer
  *.pnml and *.pnml.gz formats store this information properly; they are
  what the ZEPH tool produces.

  The original STG must be consistent. The synthesis modes -E, -G, -S and -T
  also require it to have the CSC property; -R can establish it.

  -E, -G and -S take two more things for granted: there are equations, and the
  exit code is 0, also where they do not hold. -v1 checks them, and names the
  signals concerned on stderr.
  * Output persistency: no output or internal signal that is about to change
    is prevented from it by another signal, for example by an input. Where one
    is, the equations describe a circuit with a hazard. To look for such a
    state, use -F -d @examples/output_persistency.reach.
  * No dead signals: an output or internal signal that never changes becomes
    a constant.

  A violation of normalcy that -N finds has one of four causes. What is printed
  depends on the cause:
  1. triggers of different signs: a path to an event of the signal, and the
     triggers of this event, some rising and some falling;
  2. contradictory hypotheses: two paths, each with the triggers of its last
     event; one shows a violation of p-normalcy of the signal, the other a
     violation of n-normalcy;
  3. a CSC conflict: two paths to states with equal codes that require
     different behaviour of the signal;
  4. any other cause: three paths. The first, with the triggers of its last
     event, rules out one of the two types; the other two lead to states
     with ordered codes and so rule out the other type.)";

inline constexpr std::string_view restrict_branching = R"(
  The SAT solver then decides only on the variables of events and conditions.
  The effect on performance is mixed.)";

inline constexpr std::string_view solver = R"(
  N=0 selects zChaff, N=1 selects MiniSat.
  The default is chosen heuristically, depending on the mode.)";

inline constexpr std::string_view output_configurations = R"(
  A configuration is printed as the numbers of its events.
  The numbering of events starts from 1.
  This is how E n counts in a property; the numbers printed by -@ are smaller
  by one: they start from 0.)";

inline constexpr std::string_view all_solutions = R"(
  The search goes on until all solutions are found. N>0 restricts their
  number; it is only approximate, the actual number can slightly differ.
  This option must not be combined with -f.)";

inline constexpr std::string_view backward_conflicts = R"(
  The constraints say that no two mp-events in the preset of an mp-condition
  can belong to the same mp-configuration. They are redundant, but may help
  performance. They are silently ignored unless the input is a merged process.)";

inline constexpr std::string_view coefficients = R"(
  The cost function is the sum of the following numbers, each multiplied by
  its coefficient:
    csc  - the number of unresolved CSC cores;
    usc  - the number of unresolved USC cores;
    del  - the number of delayed transitions;
    trig - the number of triggers of output and internal transitions;
    seq  - the number of sequential insertions, or |U| if a concurrency
           reduction U-n->t was applied;
    conc - the number of concurrent insertions;
    lock - the sum over the pairs of non-locked signals; without -r it is
           the difference to that of the original STG.
  COEFF is one of these names, and EXPR an expression that may contain
  non-negative integers, parentheses, the operators
  +, -, *, /, %%,
  with their usual precedence, and the macros
    #i   - the number of input signals;
    #o   - the number of output signals;
    #I   - the number of internal signals;
    #d   - the number of dummy signals;
    #s   - the number of all signals excluding dummies;
    #p   - the number of places;
    #t   - the number of transitions.
  The value of an expression must be non-negative.
  -cs sets all the coefficients so that few insertions are made, -cl so that
  the logic becomes simple; both depend on the mode. The option can be
  repeated, and a later one takes precedence. The default is
      csc={csc}, usc={usc}, del={del}, trig={trig}, seq={seq}, conc={conc}, lock={lock}.)";

inline constexpr std::string_view data = R"(
  In the modes -F and -Fs, where this option is compulsory, the string is a
  property in the REACH language, or @ followed by the name of a file that
  contains one; a property that itself begins with @ needs a blank before it.
  The language is described in docs/reach.md.
  In the mode -T the string is the name of a gate library in the GENLIB
  format; without it a built-in library is used.)";

inline constexpr std::string_view min_cost = R"(
  Usually the sum of the lengths of the traces is minimised, but the
  criterion is different for -N and -R.
  This option must not be combined with -a.)";

inline constexpr std::string_view gates = R"(
  Concerns the main loop of logic decomposition: ! disables the use of
  latches there, and N>1 is the maximal number of inputs of a gate or latch,
  not counting the feedback of a latch. Other gates and latches of the
  library may still be used in technology mapping.
    -g!  - all combinational gates;
    -g2  - gates and latches with up to two inputs;
    -g!2 - combinational gates with up to two inputs.
  By default all gates and latches are allowed.)";

inline constexpr std::string_view inclusion_constraints = R"(
  -l+ generates these constraints, -l- does not. They speed things up, but
  might give incorrect results on prefixes that are not conflict-free.
  Without this option they are generated exactly when the prefix is
  conflict-free.)";

inline constexpr std::string_view method = R"(
  -D:
    -m1           - use cut-offs;
    -m2 (default) - ignore cut-offs.
  -C, -N, -U:
    -m1 (default) - process all signals or places together;
    -m2           - process each signal or place in turn.)";

inline constexpr std::string_view concurrent_insertions = R"(
  N=0 - no concurrent insertions;
  N=1 - only valid concurrent insertions of the form u-||n->t, with u in ****t;
  N=2 - all valid concurrent insertions.
  The default is -p{concurrent_insertions}.)";

inline constexpr std::string_view concurrency_reduction = R"(
  The result is guaranteed to be correct only if all transitions of the STG
  are weakly fair. This assumption is not compositional: a deadlock can be
  introduced if concurrency reductions are done both in the STG and in its
  environment.)";

inline constexpr std::string_view decompose_down_to_trivial = R"(
  Signals are inserted until each local signal can be mapped to a single gate
  or latch of the library, possibly with inversions on its inputs or output.
  This takes longer, and the result suits an external technology mapper.)";

inline constexpr std::string_view wait_mode = R"(
  N=0 - never wait;
  N=1 - wait after errors;
  N=2 - wait after warnings or errors;
  N=3 - always wait.
  The default is -w{wait_mode}, and -w is equivalent to -w3.)";

}  // namespace vorel::driver::help_text
