#include "resolution/transition_locks.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <iterator>

#include "base/run_state.h"
#include "resolution/transition_counts.h"
#include "toolkit/cliques.h"

namespace vorel::resolution {
namespace {

using net::StgTransition;
using Vertices = std::vector<std::uint32_t>;

constexpr std::size_t most_cliques = 100;
constexpr int verbosity_of_cliques = 5;
constexpr int verbosity_of_relations = 6;
constexpr int verbosity_of_derived_relations = 7;

void print_relation(int verbosity, const char* title, const TransitionRelation& graph) {
  if (base::verbosity() < verbosity) return;
  std::cerr << '\n' << title << ":\n";
  print_graph(std::cerr, graph);
  std::cerr << std::flush;
}

// As a symmetric relation between the vertices of `base`, for which related(u, v) with u < v tells
// the pairs.
template <class Related>
TransitionRelation symmetric_relation(const TransitionRelation& base, Related related) {
  TransitionRelation graph;
  for (const auto& vertex : base) graph.push_back({vertex.item, {}, {}});
  for (std::uint32_t v = 0; v < base.size(); ++v) {
    for (std::uint32_t u = 0; u < v; ++u) {
      if (!related(u, v)) continue;
      graph[u].post.push_back(v);
      graph[v].post.push_back(u);
    }
  }
  for (auto& vertex : graph) std::ranges::sort(vertex.post);
  return graph;
}

class DestinationSearch {
 public:
  DestinationSearch(std::span<const StgTransition* const> sources, const TransitionRelation& locks)
      : sources_{sources}, locks_{locks} {
    assert(!sources.empty());
    assert(std::ranges::is_sorted(sources, {}, &StgTransition::index));
  }

  std::vector<net::Insertion> run() {
    find_max_destinations();
    std::vector<net::Insertion> insertions;
    if (max_destinations_.empty()) return insertions;
    for (const toolkit::Clique& clique : cliques()) {
      net::General insertion = insertion_before(clique);
      if (!is_trivial(insertion)) insertions.emplace_back(std::move(insertion));
    }
    std::ranges::sort(insertions, insertion_less);
    return insertions;
  }

 private:
  void find_max_destinations() {
    for (const auto& vertex : locks_) {
      const StgTransition& transition = *vertex.item;
      const bool may_wait =
          !transition.signal->is_dummy() && transition.signal->kind != net::SignalKind::input;
      const bool is_locked = std::ranges::all_of(sources_, [&](const StgTransition* source) {
        return comes_after(*source, transition.index) || comes_before(*source, transition.index);
      });
      if (may_wait && is_locked) max_destinations_.push_back(transition.index);
    }
  }

  bool comes_after(const StgTransition& source, std::uint32_t transition) const {
    return has_edge(locks_, source.index, transition);
  }
  bool comes_before(const StgTransition& source, std::uint32_t transition) const {
    return has_edge(locks_, transition, source.index);
  }

  // Of positions in max_destinations_.
  std::vector<toolkit::Clique> cliques() const {
    const TransitionRelation graph = restrict(locks_, max_destinations_);
    print_relation(verbosity_of_derived_relations,
                   "Restriction of the lock relation on max_destinations", graph);
    const TransitionRelation locked = symmetric_relation(
        graph, [&](auto u, auto v) { return has_edge(graph, u, v) || has_edge(graph, v, u); });
    print_relation(verbosity_of_derived_relations, "Symmetric lock relation on max_destinations",
                   locked);
    const TransitionRelation incompatible = symmetric_relation(graph, [&](auto u, auto v) {
      return has_edge(locked, u, v) || !are_on_one_side(max_destinations_[u], max_destinations_[v]);
    });
    print_relation(verbosity_of_relations, "Incompatibility relation on max_destinations",
                   incompatible);
    const TransitionRelation compatible =
        symmetric_relation(graph, [&](auto u, auto v) { return !has_edge(incompatible, u, v); });
    print_relation(verbosity_of_relations, "Compatibility relation on max_destinations",
                   compatible);
    return maximal_cliques(compatible);
  }

  // Both come after each source, or both before it.
  bool are_on_one_side(std::uint32_t u, std::uint32_t v) const {
    return std::ranges::all_of(sources_, [&](const StgTransition* source) {
      return (comes_after(*source, u) && comes_after(*source, v)) ||
             (comes_before(*source, u) && comes_before(*source, v));
    });
  }

  static std::vector<toolkit::Clique> maximal_cliques(const TransitionRelation& compatible) {
    toolkit::BitGraph graph(static_cast<std::uint32_t>(compatible.size()));
    for (std::uint32_t u = 0; u < compatible.size(); ++u) {
      for (const std::uint32_t v : compatible[u].post) graph.add_edge(u, v);
    }
    std::vector<toolkit::Clique> cliques;
    toolkit::for_each_maximal_clique(graph, [&cliques](const toolkit::Clique& clique) {
      cliques.push_back(clique);
      return cliques.size() < most_cliques;
    });
    if (base::verbosity() >= verbosity_of_cliques) print_cliques(compatible, cliques);
    return cliques;
  }

  static void print_cliques(const TransitionRelation& graph,
                            const std::vector<toolkit::Clique>& cliques) {
    std::cerr << '\n' << cliques.size() << " cliques in the compatibility relation computed:";
    for (const toolkit::Clique& clique : cliques) {
      std::cerr << '\n';
      for (const std::uint32_t v : clique) std::cerr << ' ' << graph[v].item->name;
    }
    std::cerr << std::flush;
  }

  net::General insertion_before(const toolkit::Clique& clique) const {
    net::General insertion;
    insertion.sources.assign(sources_.begin(), sources_.end());
    for (const std::uint32_t position : clique) {
      insertion.targets.push_back(locks_[max_destinations_[position]].item);
    }
    for (const StgTransition* source : sources_) {
      insertion.starred.push_back(!comes_after(*source, insertion.targets.front()->index));
    }
    return insertion;
  }

  // Done as well by a transition in an arc from the one source to the one target, before the target
  // of all sources, or after the one source.
  static bool is_trivial(const net::General& insertion) {
    const StgTransition& target = *insertion.targets.front();
    if (insertion.sources.size() == 1) {
      return insertion.targets.size() == 1 || feeds_only(*insertion.sources.front(), insertion);
    }
    return insertion.targets.size() == 1 &&
           std::ranges::all_of(insertion.sources, [&target](const StgTransition* source) {
             return feeds(*source, target);
           });
  }

  static bool feeds(const StgTransition& source, const StgTransition& target) {
    return std::ranges::any_of(source.postset, [&target](const net::StgPlace* place) {
      return std::ranges::find(target.preset, place) != target.preset.end();
    });
  }
  // Each place that the source produces on is consumed from by some target.
  static bool feeds_only(const StgTransition& source, const net::General& insertion) {
    return std::ranges::all_of(source.postset, [&insertion](const net::StgPlace* place) {
      return std::ranges::any_of(insertion.targets, [place](const StgTransition* target) {
        return std::ranges::find(target->preset, place) != target->preset.end();
      });
    });
  }

  const std::span<const StgTransition* const> sources_;
  const TransitionRelation& locks_;
  Vertices max_destinations_;  // locked with all sources
};

bool knows_all_correspondents(const net::StgPrefix& prefix) {
  return std::ranges::none_of(prefix.events,
                              [](const auto& event) { return event->cut_off.is_unknown(); });
}

}  // namespace

TransitionRelation transition_lock_relation(const net::StgPrefix& prefix) {
  TransitionRelation graph = graph_over(prefix.transitions, prefix.transitions.size());
  if (knows_all_correspondents(prefix)) {
    const net::Instances<net::StgPrefix> instances(prefix);
    const TransitionCounts counts(instances);
    for (std::uint32_t a = 0; a < graph.size(); ++a) {
      for (std::uint32_t b = 0; b < graph.size(); ++b) {
        // As many of each before every a, one more of a before every b.
        const bool alternate = counts.lead({b}, {a}) == 0 && counts.lead({a}, {b}) == 1;
        if (a == b || !alternate || !counts.agree_at_cut_offs({a}, {b})) continue;
        graph[a].post.push_back(b);
        graph[b].pre.push_back(a);
      }
    }
  }
  print_relation(verbosity_of_relations, "Underapproximation of the lock relation", graph);
  return graph;
}

std::vector<net::Insertion> max_destination_cliques(std::span<const StgTransition* const> sources,
                                                    const TransitionRelation& locks) {
  return DestinationSearch(sources, locks).run();
}

}  // namespace vorel::resolution
