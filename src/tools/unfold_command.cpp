#include "tools/unfold_command.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <utility>
#include <variant>

#include "base/clock.h"
#include "base/messages.h"
#include "base/output_file.h"
#include "base/program.h"
#include "formats/net_dot.h"
#include "formats/prefix_dot.h"
#include "net/initial_values.h"
#include "net/merge.h"
#include "tools/progress_line.h"
#include "tools/remove_cut_offs.h"
#include "tools/time_limit.h"
#include "tools/unfold_arguments.h"
#include "tools/unfold_files.h"
#include "tools/unfold_report.h"
#include "unfolder/unfolder.h"

namespace vorel::tools {
namespace {

class UnfoldRun {
 public:
  explicit UnfoldRun(const UnfoldRequest& request)
      : request_{request},
        messages_{request.output == standard_stream ? std::cerr : std::cout},
        limit_{request.options.max_seconds, [this] { return give_up(); }} {}

  void run() {
    if (base::run_failed()) return;
    enter("reading the net");
    auto net = read_net(request_.input, *request_.input_format);
    figures_.reading_seconds = watch_.lap();
    if (!net) return;
    std::visit([this](auto& n) { draw_and_unfold(std::move(n)); }, *net);
  }

 private:
  void enter(const char* phase) {
    if (limit_.deadline().is_over() && !base::run_failed()) std::_Exit(give_up());
    phase_ = phase;
  }

  // Whoever has told its failure only takes too long to clear up.
  int give_up() const {
    base::abandon_output_files();
    if (!base::run_failed()) {
      base::print_last_error(base::format_message("the prefix is not complete after %g seconds",
                                                  request_.options.max_seconds) +
                             "; stopped while " + phase_.load());
    }
    return static_cast<int>(base::raise_severity(base::severity_error));
  }

  // A net that cannot be unfolded is worth a look, too.
  template <class N>
  void draw_and_unfold(N net) {
    enter("drawing the net");
    if (!request_.net_drawing.empty() && !formats::save_net_dot(net, request_.net_drawing)) return;
    unfold_and_write(std::move(net));
  }

  template <class N>
  void unfold_and_write(N net) {
    enter("unfolding");
    auto unfolded = unfold(std::move(net));
    if (!unfolded || !is_consistent(*unfolded)) return;
    auto& prefix = base::keep_to_the_end(*std::move(unfolded));
    // Only now: the cut-offs show the values of signals too.
    if (request_.options.no_cutoffs) remove_cut_offs(prefix);
    if (request_.stats) count_elements(prefix);
    figures_.unfolding_seconds = watch_.lap();
    enter("drawing the prefix");
    if (!request_.drawing.empty() && !formats::save_dot(prefix, request_.drawing)) return;
    if (request_.merge) {
      enter("merging");
      const auto merged = net::merge(prefix);
      enter("writing");
      if (write_merged(merged, request_)) tell_success(merged);
    } else {
      enter("writing");
      if (write_prefix(prefix, request_)) tell_success(prefix);
    }
  }

  // The unfolder gives back its memory before the prefix is written.
  template <class N>
  std::optional<net::PrefixOf<N>> unfold(N net) {
    unfolder::UnfoldOptions options = request_.options;
    options.no_cutoffs = false;
    options.seconds_before = limit_.deadline().spent();
    ProgressLine progress(request_.progress);
    unfolder::UnfoldingLoop::Callback callback;
    if (progress.is_active()) callback = [&](const std::string& line) { progress.show(line); };
    unfolder::Unfolder<N> unfolder(std::move(net), options, callback);
    if (!unfolder.unfold()) return std::nullopt;
    progress.clear();
    unfolder.warn_if_no_events();
    figures_.unfolding = unfolder.stats();
    return std::move(unfolder).result();
  }

  static bool is_consistent(const net::NetPrefix&) { return true; }
  static bool is_consistent(net::StgPrefix& prefix) { return net::find_initial_values(prefix); }

  template <class N>
  void count_elements(const net::PrefixOf<N>& prefix) {
    const auto count_where = [](const auto& list, auto holds) {
      return static_cast<std::uint64_t>(std::ranges::count_if(list, holds));
    };
    figures_.conditions = prefix.conditions.size();
    figures_.events = prefix.events.size();
    figures_.cut_offs = count_where(prefix.events, [](const auto& e) { return e->is_cut_off(); });
    figures_.initial_conditions =
        count_where(prefix.conditions, [](const auto& c) { return c->is_initial(); });
  }

  template <net::Process P>
  void tell_success(const P& process) {
    figures_.writing_seconds = watch_.lap();
    if (request_.quiet) return;
    net::print_statistics(process, messages_);
    if (request_.stats) print_figures(figures_, request_.options, messages_);
    if (request_.output != standard_stream) messages_ << "\nwrote " << request_.output;
    messages_ << std::endl;
  }

  const UnfoldRequest& request_;
  std::ostream& messages_;
  base::StopWatch watch_;
  UnfoldFigures figures_;
  std::atomic<const char*> phase_{"starting"};
  TimeLimit limit_;
};

}  // namespace

int run_unfold_command(int argc, char** argv) {
  base::start_program();
  auto request = parse_unfold_arguments(argc, argv);
  if (request && settle_files(*request)) UnfoldRun(*request).run();
  return base::finish_program();
}

}  // namespace vorel::tools
