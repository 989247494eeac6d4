#include "reachlang/exclusive_parts.h"

#include <algorithm>
#include <numeric>

namespace vorel::reachlang {
namespace {

constexpr std::uint64_t most_steps = 100'000'000;  // for the relation, and again for the lists
constexpr std::uint32_t most_places = 8192;        // or the relation would not stay in the cache
constexpr std::ptrdiff_t most_lists = 256;         // tried for a node; beyond, little is gained
constexpr int rounds = 6;

}  // namespace

// What is enabled after dummies may need tokens that are not there yet.
template <net::Process P>
typename ExclusiveParts<P>::Tokens ExclusiveParts<P>::needs_of_atom(const ReachNode& atom) const {
  const ReachNodeRef& node = expr_.value(expr_.operand(atom, 0)).node();
  Tokens tokens;
  if (atom.op == ReachOp::state) {
    if (node.kind == BaseType::place) tokens.push_back({node.index, base::no_index});
    if (node.kind == BaseType::condition)
      tokens.push_back({process_.conditions[node.index]->place->index, node.index});
  } else if (atom.op == ReachOp::enabled && enabledness_ == configuration::Enabledness::direct) {
    if (node.kind == BaseType::transition) {
      for (const auto* place : process_.transitions[node.index]->preset)
        tokens.push_back({place->index, base::no_index});
    }
    if (node.kind == BaseType::event) {
      for (const auto* condition : process_.events[node.index]->preset)
        tokens.push_back({condition->place->index, condition->index});
    }
  }
  return tokens;
}

// None where none are known.
template <net::Process P>
typename ExclusiveParts<P>::Tokens ExclusiveParts<P>::needs_of(ReachNodeId id) const {
  const ReachNode& node = expr_.node(id);
  if (node.op == ReachOp::state || node.op == ReachOp::enabled) return needs_of_atom(node);
  Tokens tokens;
  if (node.op == ReachOp::and_) {
    for (const ReachNodeId part : expr_.operands(node)) {
      const ReachNode& atom = expr_.node(part);
      if (atom.op != ReachOp::state && atom.op != ReachOp::enabled) continue;
      const Tokens more = needs_of_atom(atom);
      tokens.insert(tokens.end(), more.begin(), more.end());
    }
  }
  return tokens;
}

// Two tokens that cannot be there together.
template <net::Process P>
bool ExclusiveParts<P>::exclude(const Tokens& some, const Tokens& others) const {
  return std::ranges::any_of(some, [&](const Token& a) {
    return std::ranges::any_of(others, [&](const Token& b) {
      const bool may_be_one =
          a.place == b.place && (a.condition == b.condition || a.condition == base::no_index ||
                                 b.condition == base::no_index);
      return !may_be_one && !concurrency_->related(a.place, b.place);
    });
  });
}

// Each enters the first list that takes it.
template <net::Process P>
typename ExclusiveParts<P>::Lists ExclusiveParts<P>::first_fit(std::span<const std::size_t> order) {
  Lists lists;
  for (const std::size_t i : order) {
    const auto takes = [&](const std::vector<std::size_t>& list) {
      return std::ranges::all_of(list, [&](std::size_t member) {
        steps_ += needs_[i].size() * needs_[member].size();
        return exclude(needs_[i], needs_[member]);
      });
    };
    const bool is_open = !needs_[i].empty() && steps_ < most_steps;
    const auto end = lists.begin() + std::min(most_lists, std::ssize(lists));
    auto list = is_open ? std::find_if(lists.begin(), end, takes) : end;
    if (list == end) list = lists.end();
    if (list != lists.end()) {
      list->push_back(i);
    } else {
      lists.push_back({i});
    }
  }
  return lists;
}

// In the order of some lists, first fit makes as many lists or fewer, whatever the order of the
// lists [Cul-1992].
template <net::Process P>
std::vector<std::vector<ReachNodeId>> ExclusiveParts<P>::divide(
    std::span<const ReachNodeId> nodes) {
  if (!concurrency_) {
    const bool is_small = process_.places.size() <= most_places;
    concurrency_.emplace(configuration::TokenFlow::of(process_), is_small ? most_steps : 0);
  }
  needs_.clear();
  for (const ReachNodeId node : nodes) needs_.push_back(needs_of(node));
  std::vector<std::size_t> order(nodes.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  Lists lists = first_fit(order);
  const auto is_worthwhile = [&] {
    return lists.size() > 1 && lists.size() < nodes.size() && std::ssize(lists) <= most_lists;
  };
  for (int round = 0; round < rounds && is_worthwhile() && steps_ < most_steps; ++round) {
    if (round % 2 == 0)
      std::ranges::stable_sort(lists, {}, &std::vector<std::size_t>::size);
    else
      std::ranges::reverse(lists);
    order.clear();
    for (const auto& list : lists) order.insert(order.end(), list.begin(), list.end());
    Lists shorter = first_fit(order);
    if (shorter.size() <= lists.size()) lists = std::move(shorter);
  }
  std::vector<std::vector<ReachNodeId>> result;
  for (const auto& list : lists) {
    result.emplace_back();
    for (const std::size_t i : list) result.back().push_back(nodes[i]);
  }
  return result;
}

#define INSTANTIATE(P) template class ExclusiveParts<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
