#include "configuration/local_invariants.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <optional>
#include <random>
#include <utility>

#include "configuration/one_token_parts.h"

namespace vorel::configuration {
namespace {

using Places = TokenFlow::Places;
using Relations = LocalInvariants::Relations;

constexpr std::uint64_t most_weights = 1 << 20;  // of all relations at the start
constexpr std::uint32_t run_length = 500;
constexpr std::uint32_t patience = 1000;  // markings that leave all relations as they are

Places live_places_of(const TokenFlow& flow) {
  const auto is_live = live_places(flow);
  Places places;
  for (std::uint32_t place = 0; place < flow.place_count(); ++place) {
    if (is_live[place]) places.push_back(place);
  }
  return places;
}

std::optional<std::uint32_t> position_in(const Places& places, std::uint32_t place) {
  const auto found = std::ranges::lower_bound(places, place);
  if (found == places.end() || *found != place) return std::nullopt;
  return static_cast<std::uint32_t>(found - places.begin());
}

// What is left out is never marked.
Places positions_in(const Places& live, const Places& places) {
  Places result;
  for (const std::uint32_t place : places) {
    if (const auto position = position_in(live, place)) result.push_back(*position);
  }
  return result;
}

// Computes the relations of each place of the part. Starts with those of no marking at all, which
// say everything, and leaves out what some marking or change shows not to hold. Places are numbered
// among the live ones.
class Closure {
 public:
  Closure(const TokenFlow& flow, const Places& live, const Places& part, std::uint64_t& steps)
      : places_{live.size()}, part_{positions_in(live, part)}, steps_{steps} {
    for (std::uint32_t place = 0; place < places_; ++place) {
      if (flow.is_initial(live[place])) initial_.push_back(place);
    }
    for (const TokenFlow::Change& change : flow.changes())
      changes_.push_back(
          {positions_in(live, change.consumed), positions_in(live, change.produced)});
  }

  // Rows that hold always. They follow from the others, but say more by their bounds.
  void add_always(AffineRow row) { always_.push_back(std::move(row)); }

  // Nothing if the steps do not suffice.
  std::vector<Relations> run() && {
    const std::size_t length = places_ + 1;
    if (steps_ == 0 || part_.size() * length * length > most_weights) return {};
    Relations everything(length, AffineRow(length));
    for (std::size_t i = 0; i < length; ++i) everything[i][i] = 1;
    relations_.assign(part_.size(), everything);
    sample();
    if (!close()) return {};
    return std::move(relations_);
  }

 private:
  static constexpr std::uint32_t elsewhere = ~0u;

  void pay(std::uint64_t weights) { steps_ -= std::min(steps_, weights); }
  std::uint64_t size_of(const Relations& relations) const { return relations.size() * places_; }

  void sample();
  bool visit(const Places& marked);
  bool close();
  std::uint32_t destination(std::uint32_t from, const TokenFlow::Change& change) const;
  bool find_tokens(std::uint32_t from, const TokenFlow::Change& change);
  bool follow(std::uint32_t from, std::uint32_t to, const TokenFlow::Change& change);

  const std::size_t places_;
  const Places part_;
  std::uint64_t& steps_;
  Places initial_;
  std::vector<TokenFlow::Change> changes_;
  Relations always_;
  std::vector<Relations> relations_;  // by place of the part
  std::vector<Token> tokens_;         // scratch: known before a change
  AffineBasis basis_;                 // scratch
};

std::int64_t value_in(const AffineRow& row, const Places& marked) {
  std::int64_t value = row.back();
  for (const std::uint32_t place : marked) value += row[place];
  return value;
}

// What the change adds to the value. Tokens that it takes and gives back cancel out.
std::int64_t effect_on(const AffineRow& row, const TokenFlow::Change& change) {
  std::int64_t effect = 0;
  for (const std::uint32_t place : change.produced) effect += row[place];
  for (const std::uint32_t place : change.consumed) effect -= row[place];
  return effect;
}

// What a few runs come across leaves little to be found out one change at a time.
void Closure::sample() {
  std::mt19937 random;
  std::vector<bool> is_marked(places_);
  Places marked;
  std::vector<const TokenFlow::Change*> enabled;
  std::uint32_t unchanged = 0;
  for (std::uint32_t i = 0; unchanged < patience && steps_ > 0; ++i) {
    if (enabled.empty() || i % run_length == 0) {
      std::fill(is_marked.begin(), is_marked.end(), false);
      for (const std::uint32_t place : initial_) is_marked[place] = true;
    } else {
      const TokenFlow::Change& change = *enabled[random() % enabled.size()];
      for (const std::uint32_t place : change.consumed) is_marked[place] = false;
      for (const std::uint32_t place : change.produced) is_marked[place] = true;
    }
    marked.clear();
    for (std::uint32_t place = 0; place < places_; ++place) {
      if (is_marked[place]) marked.push_back(place);
    }
    unchanged = visit(marked) ? 0 : unchanged + 1;
    enabled.clear();
    for (const TokenFlow::Change& change : changes_) {
      if (std::ranges::all_of(change.consumed, [&](std::uint32_t p) { return is_marked[p]; }))
        enabled.push_back(&change);
    }
    pay(places_ + changes_.size());
  }
}

// True if some relation does not hold in the marking.
bool Closure::visit(const Places& marked) {
  const auto at = std::ranges::find_first_of(part_, marked) - part_.begin();
  assert(at < std::ssize(part_) && "one place of the part is marked");
  Relations& relations = relations_[static_cast<std::size_t>(at)];
  pay(relations.size() * marked.size());
  const auto holds = [&marked](const AffineRow& row) { return value_in(row, marked) == 0; };
  if (std::ranges::all_of(relations, holds)) return false;
  pay(size_of(relations));
  for (AffineRow& row : relations) row.push_back(value_in(row, marked));
  relations = rows_without_rest(std::move(relations), places_ + 1);
  return true;
}

// Follows each change from each place of the part until what is left holds after all of them. False
// if the steps do not suffice.
bool Closure::close() {
  std::vector<bool> is_pending(part_.size(), true);
  for (auto next = is_pending.begin(); next != is_pending.end();
       next = std::ranges::find(is_pending, true)) {
    const auto from = static_cast<std::uint32_t>(next - is_pending.begin());
    is_pending[from] = false;
    for (const TokenFlow::Change& change : changes_) {
      if (steps_ == 0) return false;
      const std::uint32_t to = destination(from, change);
      if (to != elsewhere && follow(from, to, change)) is_pending[to] = true;
    }
  }
  return true;
}

// Where the change leads from a place of the part.
std::uint32_t Closure::destination(std::uint32_t from, const TokenFlow::Change& change) const {
  for (const std::uint32_t place : change.consumed) {
    const auto taken = position_in(part_, place);
    if (taken && *taken != from) return elsewhere;
  }
  for (const std::uint32_t place : change.produced) {
    if (const auto given = position_in(part_, place)) return *given;
  }
  return from;
}

// What is known of the tokens before the change. False if it cannot happen there.
bool Closure::find_tokens(std::uint32_t from, const TokenFlow::Change& change) {
  tokens_.assign(places_, Token::unknown);
  for (const std::uint32_t place : part_) tokens_[place] = Token::absent;
  tokens_[part_[from]] = Token::present;
  for (const std::uint32_t place : change.produced) tokens_[place] = Token::absent;  // a safe net
  for (const std::uint32_t place : change.consumed) tokens_[place] = Token::present;
  pay(2 * size_of(relations_[from]) + size_of(always_));
  return propagate(relations_[from], tokens_) && propagate(always_, tokens_) &&
         propagate(relations_[from], tokens_);
}

// True if the change does not establish all relations of the place it leads to. Those that it does
// are left.
bool Closure::follow(std::uint32_t from, std::uint32_t to, const TokenFlow::Change& change) {
  const auto is_kept = [&change](const AffineRow& row) { return effect_on(row, change) == 0; };
  pay(relations_[to].size());
  if (from == to && std::ranges::all_of(relations_[to], is_kept)) return false;
  if (!find_tokens(from, change) || !basis_.assign(relations_[from], tokens_)) return false;
  pay(relations_[from].size() * size_of(relations_[from]));
  Relations pairs;
  bool is_weaker = false;
  for (const AffineRow& row : relations_[to]) {
    AffineRow pair(row);
    pair.insert(pair.end(), row.begin(), row.end());
    pair.back() += effect_on(row, change);
    const bool is_small = basis_.reduce(pair);
    const auto is_not_zero = [](std::int64_t weight) { return weight != 0; };
    if (!is_small || std::any_of(pair.end() - std::ssize(row), pair.end(), is_not_zero))
      is_weaker = true;
    if (is_small) pairs.push_back(std::move(pair));
  }
  pay(2 * relations_[from].size() * size_of(pairs));
  if (is_weaker) relations_[to] = rows_without_rest(std::move(pairs), places_ + 1);
  return is_weaker;
}

}  // namespace

LocalInvariants::LocalInvariants(const TokenFlow& flow, std::span<const PlaceInvariant> always,
                                 const TokenFlow::Places& part, std::uint64_t& steps)
    : part_{part}, live_{live_places_of(flow)} {
  Closure closure(flow, live_, part_, steps);
  for (const PlaceInvariant& invariant : always) {
    AffineRow row(live_.size() + 1);
    for (const auto& term : invariant.terms) {
      if (const auto position = position_in(live_, term.place)) row[*position] = term.weight;
    }
    row.back() = -invariant.total;
    closure.add_always(std::move(row));
  }
  relations_ = std::move(closure).run();
}

// Literals of what makes up a value other than 0. Where it is larger than what a token can change,
// that one is left out.
std::vector<PlaceLiteral> LocalInvariants::clause_of(const AffineRow& row,
                                                     std::span<const Token> tokens) const {
  const std::int64_t value = value_of(row, tokens);
  assert(value != 0);
  std::vector<std::pair<std::int64_t, std::size_t>> changes;  // toward 0
  for (std::size_t place = 0; place < tokens.size(); ++place) {
    const bool brings_up = (row[place] > 0) == (tokens[place] == Token::absent);
    if (row[place] == 0) continue;
    changes.emplace_back(brings_up == (value < 0) ? std::abs(row[place]) : 0, place);
  }
  std::ranges::sort(changes);
  std::vector<PlaceLiteral> clause;
  std::int64_t left = std::abs(value);
  for (const auto& [change, place] : changes) {
    if (change < left) {
      left -= change;
    } else {
      clause.push_back({live_[place], tokens[place] == Token::absent});
    }
  }
  return clause;
}

std::vector<PlaceLiteral> LocalInvariants::clause_against(const std::vector<bool>& marked) const {
  std::vector<Token> tokens;
  for (const std::uint32_t place : live_)
    tokens.push_back(marked[place] ? Token::present : Token::absent);
  std::vector<PlaceLiteral> shortest;
  for (std::size_t at = 0; at < relations_.size(); ++at) {
    if (!marked[part_[at]]) continue;
    for (const AffineRow& row : relations_[at]) {
      if (value_of(row, tokens) == 0) continue;
      auto clause = clause_of(row, tokens);
      clause.push_back({part_[at], false});
      if (shortest.empty() || clause.size() < shortest.size()) shortest = std::move(clause);
    }
  }
  return shortest;
}

}  // namespace vorel::configuration
