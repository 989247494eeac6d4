// tests/resolution/resolution_support.h - prefixes to try transformations on.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "oracle/coding.h"
#include "oracle/parse_g.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "resolution/general_insertions.h"
#include "support/process_builder.h"
#include "support/seeds.h"

namespace vorel::resolution_support {

inline net::StgPrefix unfold_example(const std::string& name) {
  const auto text = oracle::read_file(VOREL_EXAMPLES "/" + name + ".g");
  return std::move(*oracle::unfold(*oracle::parse_g(text.value())));
}

inline const net::StgTransition& transition_of(const net::StgPrefix& prefix,
                                               const std::string& name) {
  return **std::ranges::find(prefix.transitions, name, [](const auto& t) { return t->name; });
}

// Of tag General, with transitions of any signals as sources.
inline std::vector<net::Insertion> all_general_insertions(const net::StgPrefix& prefix) {
  const auto visible = prefix.visible_signals();
  return resolution::general_insertions(prefix, resolution::transition_lock_relation(prefix),
                                        std::vector<net::SignalId>(visible.begin(), visible.end()));
}

// Calls check(prefix, seed) for the prefixes of random STGs, plain ones, with edges without a sign,
// and with dummies in turn, until one fails.
template <class Check>
void on_prefixes(std::uint64_t usual_count, Check check) {
  const auto [first, end] = support::seeds(usual_count);
  for (std::uint64_t seed = first; seed < end && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const auto stg = oracle::random_stg(seed, {.dummies = seed % 3 == 0, .toggles = seed % 3 == 1});
    if (const auto prefix = oracle::unfold(stg, 150)) check(*prefix, seed);
  }
}

// The signals that lose their excitation to dummies alone: a new signal, or any other, that happens
// to fire right after those seems to have disabled them.
class OldHazards {
 public:
  explicit OldHazards(const net::Stg& stg) {
    for (const std::uint32_t signal :
         oracle::signals_that_dummies_disable(oracle::explore<net::Stg>(stg)))
      endings_.push_back(" disables " + stg.signals[signal]->name);
  }
  bool explain(const std::string& fault) const {
    return std::ranges::any_of(endings_, [&](const auto& end) { return fault.ends_with(end); });
  }

 private:
  std::vector<std::string> endings_;
};

}  // namespace vorel::resolution_support
