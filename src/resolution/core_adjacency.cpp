#include "resolution/core_adjacency.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "base/run_state.h"

namespace vorel::resolution {
namespace {

using configuration::EventSet;
using conflicts::Core;

constexpr int verbosity_of_arcs = 4;

bool meet(const EventSet& a, const EventSet& b) {
  auto i = a.begin(), j = b.begin();
  while (i != a.end() && j != b.end()) {
    if (*i == *j) return true;
    *i < *j ? ++i : ++j;
  }
  return false;
}

class ArcTest {
 public:
  ArcTest(const net::StgPrefix& prefix, const conflicts::KeepCore& is_usc_conflict,
          const conflicts::KeepCore& is_csc_conflict)
      : prefix_{prefix}, is_usc_{is_usc_conflict}, is_csc_{is_csc_conflict} {}

  bool has_arc(const Core& a, const Core& b) const {
    if (!b.nested || meet(b.sum, a.first) || meet(b.sum, a.second)) return false;
    if (!meet(a.sum, b.second)) return false;
    return fits_after(a.first, a.second, b) || fits_after(a.second, a.first, b);
  }

 private:
  bool fits_after(const EventSet& one, const EventSet& other, const Core& b) const {
    EventSet extended = configuration::set_union(one, b.sum);
    if (!configuration::is_configuration(prefix_, extended)) return false;
    const Core pair(std::move(extended), other);
    return is_usc_(pair) && !is_csc_(pair);
  }

  const net::StgPrefix& prefix_;
  const conflicts::KeepCore& is_usc_;
  const conflicts::KeepCore& is_csc_;
};

}  // namespace

std::vector<UscArc> usc_arcs(const net::StgPrefix& prefix, std::span<const Core> cores,
                             const conflicts::KeepCore& is_usc_conflict,
                             const conflicts::KeepCore& is_csc_conflict) {
  const ArcTest test(prefix, is_usc_conflict, is_csc_conflict);
  std::vector<UscArc> arcs;
  for (std::uint32_t a = 0; a < cores.size(); ++a) {
    for (std::uint32_t b = 0; b < cores.size(); ++b) {
      if (a != b && test.has_arc(cores[a], cores[b])) arcs.push_back({a, b});
    }
  }
  return arcs;
}

void print_adjacency(std::ostream& stream, std::size_t cores, std::span<const UscArc> arcs) {
  assert(std::ranges::is_sorted(arcs));
  constexpr std::uint32_t edges = 0;  // the cores are counted one by one
  base::print_formatted(stream, "\nAdjacency graph statistics: |V|=%u |E|=%u |USC arcs|=%u",
                        static_cast<std::uint32_t>(cores), edges,
                        static_cast<std::uint32_t>(arcs.size()));
  if (base::verbosity() < verbosity_of_arcs) return;
  auto arc = arcs.begin();
  for (std::uint32_t core = 0; core < cores; ++core) {
    stream << '\n' << core << ':';
    for (; arc != arcs.end() && arc->first == core; ++arc) stream << ' ' << arc->second << "[usc]";
  }
  stream << std::flush;
}

}  // namespace vorel::resolution
