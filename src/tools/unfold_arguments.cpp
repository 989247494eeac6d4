#include "tools/unfold_arguments.h"

#include <limits>
#include <memory>
#include <string>

#include "tools/arguments.h"

namespace vorel::tools {
namespace {

constexpr const char* description =
    "Unfolds a safe Petri net or Signal Transition Graph (STG), and writes a finite\n"
    "complete prefix of its unfolding, or the merged process of that prefix, for\n"
    "vorel to read.\n";

constexpr const char* footer = R"(
Input, told by the end of its name (each may be compressed, with .gz behind):
  .g                STG, as text
  .ll_net           low-level net, as text
  .pnml             place/transition net, PNML of ISO 15909-2
  -                 the standard input, in the format given by --format
Output, told by the end of its name:
  .pnml, .pnml.gz   PNML, which keeps everything
  .mci              legacy format of prefixes
  .mp               legacy format of merged processes, with --merge
  -                 PNML on the standard output
Without an output its name is that of the input, less folder and ending, with
.unf.pnml, or for --merge .merged.pnml, behind. An existing file is replaced, but
only once all has gone well, and never the input. A drawing replaces no file that
by its name is a net or a process.

The text of an STG (# starts a comment, \ at its end continues a line):
  .inputs a b               also .outputs, .internal, .dummy; all before the arcs
  .graph                    then lines "SOURCE TARGET ..." up to the next keyword:
  a+ p b-/2                 signals with + - ~ and an instance, or else places;
                            a weight (p=1 or p(1)) may only be 1
  .marking {p, <a+,b->}     <a+,b-> is the place of an arc between transitions
  .initial.state a !b       else initial values follow from the behaviour
  .end
.model, .name, .capacity, .slowenv and the blocks .coords, .time, .delays are
skipped; unknown keywords are too, with a warning and all lines below them.

Examples:
  vorel-unfold vme.g                    writes vme.unf.pnml
  vorel-unfold --merge net.ll_net.gz    writes net.merged.pnml
  vorel-unfold --max-events 100000 --timeout 2.5 big.pnml big.unf.pnml.gz
  vorel-unfold --format g - - < vme.g   reads and writes the standard streams

Exit code: 0 done, 1 done with warnings, 2 errors (nothing is written but the
drawing of --dot-net), 5 out of memory.)";

class UnfoldArguments {
 public:
  UnfoldArguments() {
    request_.options.number_of_threads = preset_threads();
    // The bound on memory and the length of rows are enough.
    request_.options.conc_rel_size = std::numeric_limits<std::uint32_t>::max();
    app_.footer(footer);
    add_usual_flags(app_);
    app_.formatter(std::make_shared<PlainHelp>());
    add_files();
    add_unfolding();
    add_bounds();
    add_messages();
  }

  std::optional<UnfoldRequest> parse(int argc, char** argv) {
    if (!parse_arguments(app_, argc, argv)) return std::nullopt;
    request_.options.order = static_cast<unfolder::AdequateOrder>(order_);
    request_.progress = !no_progress_ && !request_.quiet;
    return std::move(request_);
  }

 private:
  void add_files() {
    app_.add_option("input", request_.input, "file with the net or STG, or -")
        ->required()
        ->type_name("");
    app_.add_option("output", request_.output, "file for the result, or -")->type_name("");
    add_format_option(app_, request_.format_name);
    app_.add_flag("--merge", request_.merge, "write the merged process of the prefix");
    app_.add_option("--dot", request_.drawing,
                    "draw the prefix too, in the language of Graphviz:\n"
                    "dot -Tpdf FILE makes a page of it. Conditions between\n"
                    "two events are arcs, cut-offs dashed; inputs are red,\n"
                    "outputs blue, internal signals green, dummies grey")
        ->type_name("FILE");
    app_.add_option("--dot-net", request_.net_drawing,
                    "draw the net or STG in the same way, before it is\n"
                    "unfolded")
        ->type_name("FILE");
  }

  void add_unfolding() {
    unfolder::UnfoldOptions& options = request_.options;
    app_.add_option("--order", order_,
                    "order that decides about cut-offs: 0 inclusion, 1 size,\n"
                    "2 then lists of transitions, 3 then Foata normal forms\n"
                    "(default 3). Only the last is total: it gives a small\n"
                    "prefix, the same for any number of threads")
        ->check(CLI::Range(0u, 3u).description(""))
        ->type_name("0..3");
    add_threads_option(app_, options.number_of_threads);
    app_.add_flag("--no-cutoffs", options.no_cutoffs, "leave cut-off events out of the prefix");
    app_.add_flag("--dummy-cutoffs", options.dummy_cutoffs,
                  "let dummies be cut-offs like any other event; answers\n"
                  "of vorel about such a prefix are not reliable");
    app_.add_flag("--non-local", options.non_local_correspondents,
                  "look for correspondents of cut-offs among all\n"
                  "configurations: fewer events, for much more time");
    app_.add_option("--conc-rel-size", options.conc_rel_size,
                    "remember which conditions are concurrent while there are\n"
                    "no more than N, in N*N/4 bytes at most (0: never; default:\n"
                    "while that pays, and 1 GiB is enough). Beyond, the past of\n"
                    "events is compared instead, which some nets are slower with")
        ->check(CLI::Range(0u, ~0u).description(""))
        ->type_name("N");
  }

  void add_bounds() {
    app_.add_option("--max-events", request_.options.max_events,
                    "give up when the prefix gets more events than N")
        ->check(is_count_of_events())
        ->type_name("N");
    app_.add_option("--timeout", request_.options.max_seconds,
                    "give up after S seconds, which may be a fraction")
        ->check(is_time())
        ->type_name("S");
  }

  void add_messages() {
    auto* const stats = app_.add_flag("--stats", request_.stats,
                                      "tell sizes, batches, comparisons, times and memory");
    const std::string about_progress =
        "show a running line on the standard error stream, if\n"
        "that is a terminal (default)";
    auto* const progress = app_.add_flag("--progress", about_progress);
    auto* const no_progress = app_.add_flag("--no-progress", no_progress_, "show none");
    auto* const quiet =
        app_.add_flag("-q,--quiet", request_.quiet, "print nothing but errors and warnings");
    progress->excludes(no_progress)->excludes(quiet);
    stats->excludes(quiet);
  }

  UnfoldRequest request_;
  std::uint32_t order_ = static_cast<std::uint32_t>(unfolder::UnfoldOptions{}.order);
  bool no_progress_ = false;
  CLI::App app_{description, "vorel-unfold"};
};

}  // namespace

std::optional<UnfoldRequest> parse_unfold_arguments(int argc, char** argv) {
  return UnfoldArguments().parse(argc, argv);
}

}  // namespace vorel::tools
