#include "oracle/net_text.h"

#include <cassert>
#include <sstream>
#include <string>

#include "oracle/net_builder.h"

namespace vorel::oracle {
namespace {

constexpr TrapNet trap_table[] = {
    {"self_loop_in_competition", "marked A0 B0 D0; e: A0 B0 -> A0 B0; f: B0 D0 -> X; x: D0 -> D1"},
    {"ring_of_two", "marked p0; a: p0 -> p1; b: p1 -> p0"},
    {"dead_from_the_start", "marked p; a: p q -> p"},
    {"no_transition", "marked p q"},
    {"no_place_after", "marked p q; a: p ->; b: q ->"},
    {"pure_self_loop", "marked p q; a: p -> p; b: q -> r"},
    {"branches_meet", "marked p; a: p -> q; b: p -> q; c: q -> r; d: q -> r; e: r -> p"},
    {"confusion", "marked p q; a: p -> r; b: q -> s; c: p q -> t"},
    {"two_readers", "marked p q r; a: p q -> p s; b: p r -> p t; c: p -> u"},
    {"long_and_short_way", "marked p; a: p -> q; b: q -> r; c: r -> s; d: p -> s; e: s -> p"},
    {"late_conflict", "marked p q; a: p -> r; b: q -> s; c: r s -> t; d: r s -> u; e: t -> p q"},
};

}  // namespace

net::Net net_from(std::string_view text) {
  NetBuilder<net::Net> builder;
  std::istringstream clauses{std::string(text)};
  for (std::string clause; std::getline(clauses, clause, ';');) {
    std::istringstream words(clause);
    std::string word;
    words >> word;
    if (word == "marked") {
      while (words >> word) builder.mark(word);
      continue;
    }
    assert(word.size() > 1 && word.back() == ':' && "expected 'NAME: places -> places'");
    builder.add_transition(word.substr(0, word.size() - 1));
    bool before_arrow = true;
    while (words >> word) {
      if (word == "->") {
        before_arrow = false;
      } else if (before_arrow) {
        builder.consume(word);
      } else {
        builder.produce(word);
      }
    }
    assert(!before_arrow && "expected '->'");
  }
  return builder.finish();
}

net::Net philosophers(std::uint32_t n) {
  NetBuilder<net::Net> builder;
  for (std::uint32_t i = 0; i < n; ++i) {
    const std::string own = std::to_string(i), next = std::to_string((i + 1) % n);
    builder.mark("fork" + own);
    builder.mark("think" + own);
    builder.add_transition("take" + own).consume("think" + own).consume("fork" + own);
    builder.produce("has" + own);
    builder.add_transition("both" + own).consume("has" + own).consume("fork" + next);
    builder.produce("eat" + own);
    builder.add_transition("put" + own).consume("eat" + own);
    builder.produce("think" + own).produce("fork" + own).produce("fork" + next);
  }
  return builder.finish();
}

net::Net token_ring(std::uint32_t n, std::uint32_t tokens) {
  assert(n >= 2 && tokens <= n);
  NetBuilder<net::Net> builder;
  for (std::uint32_t i = 0; i < n; ++i) {
    const std::string own = std::to_string(i), next = std::to_string((i + 1) % n);
    builder.mark((i < tokens ? "full" : "free") + own);
    builder.add_transition("move" + own).consume("full" + own).consume("free" + next);
    builder.produce("free" + own).produce("full" + next);
  }
  return builder.finish();
}

std::span<const TrapNet> trap_nets() { return trap_table; }

}  // namespace vorel::oracle
