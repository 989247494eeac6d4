// Single insertions against the states of the net that they make.
#include "resolution/insertions.h"

#include <gtest/gtest.h>

#include <iostream>
#include <map>

#include "net/clone_net.h"
#include "oracle/book_insertion.h"
#include "oracle/history.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "oracle/resolution_checks.h"
#include "resolution/transformation.h"
#include "support/seeds.h"

namespace vorel::resolution {
namespace {

std::string fault_of(const net::Stg& stg, const net::Insertion& insertion) {
  net::Stg result = net::clone_net(stg);
  net::Signal& signal = net::add_signal(result, "x", net::SignalKind::internal);
  net::sort_signals(result);
  signal.initial_value = 0;
  oracle::insert_by_the_book(result, insertion, signal, net::Sign::toggle);
  net::sort_net(result);
  return oracle::resolution_fault(stg, result, {.new_signals = {"x"}, .resolved = false});
}

TEST(Insertions, KeepWhatTheStgDoes) {
  const auto [first, end] = support::seeds(60);
  std::map<std::string, int> faults;
  int good = 0;
  for (std::uint64_t seed = first; seed < end; ++seed) {
    SCOPED_TRACE(seed);
    auto prefix = oracle::unfold(
        oracle::random_stg(seed, {.dummies = seed % 3 == 0, .toggles = seed % 3 == 1}), 150);
    if (!prefix) continue;
    for (const net::Insertion& insertion : insertions(*prefix, 2)) {
      const std::string fault = fault_of(*prefix, insertion);
      if (!fault.empty()) {
        std::cout << seed << ": " << to_text(insertion) << ": " << fault << "\n";
        ++faults[fault];
      } else
        ++good;
    }
  }
  for (auto& [f, n] : faults) std::cout << n << " " << f << "\n";
  std::cout << good << " good\n";
}

}  // namespace
}  // namespace vorel::resolution
