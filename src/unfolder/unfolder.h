// unfolder/unfolder.h - a finite complete prefix of the unfolding of a safe net or STG.
// Here:      from a net with names to a Prefix; what is wrong with a net is told in its names.
// Not here:  the unfolding itself (unfolder/unfolding_loop.h).
//
// With the total order the prefix is the same for any number of threads, numbers included. Events
// are numbered by the size of their local configuration, then by their presets; cut-offs come last,
// and keep the conditions that they produce.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "net/process.h"
#include "unfolder/flat_net.h"
#include "unfolder/unfold_options.h"
#include "unfolder/unfolding_loop.h"

namespace vorel::unfolder {

// N is Net or Stg. The final state of a configuration is its marking and, for an STG, the code.
template <class N>
class Unfolder {
 public:
  // The net is moved in and becomes that of the prefix; it must be numbered, with sorted arcs.
  Unfolder(N net, const UnfoldOptions& options, UnfoldingLoop::Callback callback = {});

  // False after a reported error: a transition without preset, a net that is not safe (with a
  // trace), or more events or time than allowed unless what there is is to be kept. Runs once.
  bool unfold();
  // After a successful run: it came to its end before the bounds.
  bool is_complete() const { return is_complete_; }
  // A place that can have two tokens, after these firings if there are any, causes first.
  struct Unsafe {
    const typename N::Place* place;
    std::vector<const typename N::Transition*> trace;
  };
  // After a run that has ended because the net is not safe.
  const std::optional<Unsafe>& unsafe() const { return unsafe_; }
  // Until the result is taken.
  const N& net() const { return net_; }
  // Warns of a prefix all of whose events are cut-offs.
  void warn_if_no_events() const;
  // After a successful run.
  net::PrefixOf<N> result() &&;

  const UnfoldStats& stats() const { return loop_.stats(); }

 private:
  bool has_presets() const;
  bool is_initially_safe();
  bool report(UnfoldOutcome outcome);
  void report_unsafe();

  N net_;
  const UnfoldOptions options_;
  const FlatNet flat_;
  UnfoldingLoop loop_;
  bool is_complete_ = true;
  std::optional<Unsafe> unsafe_;
};

}  // namespace vorel::unfolder
