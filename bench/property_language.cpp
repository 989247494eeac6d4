// bench/property_language.cpp - what do properties cost before the solver sees them?
// Tables: parsing a megabyte; expanding a quantifier over 100,000 places of which some are kept;
// clauses of a property that names one definition many times; refuting a long disjunction, which is
// past the encoding, but what the encoding tells of it. Every row checks what it made; times
// are medians of five runs.
#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "base/clock.h"
#include "configuration/search_instance.h"
#include "net/process.h"
#include "reachlang/expansion.h"
#include "reachlang/parser.h"
#include "reachlang/predicate_encoding.h"

namespace vorel::bench {
namespace {

// Marked places, each with a transition of its own that takes the token for good.
std::unique_ptr<net::NetPrefix> independent_places(std::size_t count) {
  auto prefix = std::make_unique<net::NetPrefix>();
  for (std::size_t i = 0; i < count; ++i) {
    auto& place = base::append_new(prefix->places);
    place.name = "place" + std::to_string(i);
    auto& transition = base::append_new(prefix->transitions);
    transition.name = "t" + std::to_string(i);
    auto& condition = base::append_new(prefix->conditions);
    condition.place = &place;
    auto& event = base::append_new(prefix->events);
    event.transition = &transition;
    net::add_link(condition, event);
  }
  net::sort_net(*prefix);
  net::rebuild_arcs(*prefix);
  net::sort_adjacency(*prefix);
  net::count_initial_marking(*prefix);
  return prefix;
}

double median_seconds(const std::function<void()>& work) {
  std::array<double, 5> seconds{};
  for (double& row : seconds) {
    const std::uint64_t start = base::ticks_now();
    work();
    row = base::seconds_of(base::ticks_now() - start);
  }
  std::ranges::nth_element(seconds, seconds.begin() + 2);
  return seconds[2];
}

const char* verdict(bool is_right) { return is_right ? "checked" : "WRONG"; }

// The piece again and again, joined by the operator, up to a megabyte.
std::string megabyte_of(const std::string& piece, const std::string& joint) {
  std::string text = piece;
  while (text.size() < 1'000'000) text += joint + piece;
  return text;
}

void measure_parsing() {
  std::printf("%-44s %8s %8s %9s\n", "parsing", "MB", "seconds", "MB/s");
  const auto row = [](const char* title, const std::string& text) {
    bool is_parsed = true;
    const double seconds =
        median_seconds([&] { is_parsed &= reachlang::parse_reach(text) != nullptr; });
    const double megabytes = static_cast<double>(text.size()) / 1e6;
    std::printf("%-44s %8.2f %8.3f %9.1f  %s\n", title, megabytes, seconds, megabytes / seconds,
                verdict(is_parsed));
  };
  row("a long disjunction", megabyte_of("$P\"place1\" & ~$P\"place2\"", " | "));
  row("a list of numbers", "card {" + megabyte_of("12345", ", ") + "} > 0");
  row("quantifiers", megabyte_of("(exists p in PLACES s.t. #p < 9 { $p })", " & "));
  row("one string", "len \"" + megabyte_of("abc", "") + "\" > 0");
  row("one comment", "/*" + megabyte_of("abc", " ") + "*/ true");
}

// All places are looked at in every row; the first one keeps next to none, so that what others take
// longer is for what they keep.
void measure_expansion(const net::NetPrefix& prefix) {
  std::printf("\n%-44s %8s %8s %9s\n", "forall p in PLACES s.t. #p <= kept { $p }", "kept",
              "seconds", "ns/kept");
  double scan = 0;
  for (const std::size_t kept : {10, 1'000, 10'000, 100'000}) {
    const auto property =
        reachlang::parse_reach("forall p in PLACES s.t. #p <= " + std::to_string(kept) + " { $p }");
    std::size_t made = 0;
    const double seconds = median_seconds([&] {
      std::string fault;
      const auto normal = reachlang::normalise(*property, prefix, fault);
      if (!normal) return;
      const reachlang::ReachExpr& expr = normal->formula.expr();
      made = expr.operands(expr.node(normal->root)).size();
    });
    if (scan == 0) scan = seconds;
    std::printf("%-44s %8zu %8.4f %9.0f  %s\n", "", kept, seconds,
                (seconds - scan) * 1e9 / static_cast<double>(kept), verdict(made == kept));
  }
}

// Clauses of the property alone, without those of the configuration.
std::uint64_t clauses_of(const std::string& property, const net::NetPrefix& prefix) {
  sat::CnfFormula formula({});
  const configuration::StateStructure<net::NetPrefix> structure(prefix);
  configuration::ConfigurationVars<net::NetPrefix> vars(prefix, formula, formula.group(1));
  configuration::StateLiterals<net::NetPrefix> state(structure, vars,
                                                     configuration::Enabledness::direct);
  const auto parsed = reachlang::parse_reach(property);
  if (!parsed || !reachlang::encode_predicate(*parsed, state)) return 0;
  return formula.solver().num_clauses();
}

// Next to it, the same uses of something that costs no clauses.
void measure_sharing(const net::NetPrefix& prefix) {
  std::printf("\n%-44s %8s %8s %9s\n", "let x = a parity of 1,000 places { uses of x }", "uses",
              "clauses", "of x");
  std::uint64_t of_one = 0;
  for (const std::size_t uses : {1, 10, 100, 1'000}) {
    const std::string body =
        "{ forall p in PLACES s.t. #p <= " + std::to_string(uses) + " { x ^ $p } }";
    const std::uint64_t all =
        clauses_of("let x = xorsum q in PLACES s.t. #q > 2000 & #q <= 3000 { $q } " + body, prefix);
    const std::uint64_t of_uses = clauses_of("let x = $P 2001 " + body, prefix);
    if (uses == 1) of_one = all - of_uses;
    std::printf("%-44s %8zu %8llu %9llu  %s\n", "", uses, static_cast<unsigned long long>(all),
                static_cast<unsigned long long>(all - of_uses),
                verdict(of_uses > 0 && all - of_uses == of_one));
  }
}

// A disjunction of which no part can be true, as one question and part by part.
double refute(const net::NetPrefix& prefix, int solver, bool by_parts, bool& is_right) {
  const auto property = reachlang::parse_reach("exists x in EVENTS { $x & @x }");
  configuration::EncodingOptions options;
  options.formula.solver = solver;
  const configuration::StateStructure<net::NetPrefix> structure(prefix);
  return median_seconds([&] {
    configuration::SearchInstance<net::NetPrefix> instance(structure, options);
    instance.add_configuration();
    auto encoded = reachlang::encode_predicate(*property, instance.state(0));
    if (by_parts) instance.set_alternatives(std::move(encoded->alternatives));
    is_right &= !instance.solve();
  });
}

void measure_alternatives() {
  std::printf("\n%-44s %8s %8s %9s %6s\n", "exists x in EVENTS { $x & @x }", "events", "as one",
              "by parts", "ratio");
  for (const int solver : {0, 1}) {
    for (const std::size_t events : {1'000, 2'000, 4'000}) {
      const auto prefix = independent_places(events);
      bool is_right = true;
      const double as_one = refute(*prefix, solver, false, is_right);
      const double by_parts = refute(*prefix, solver, true, is_right);
      std::printf("solver %-37d %8zu %8.3f %9.3f %6.1f  %s\n", solver, events, as_one, by_parts,
                  as_one / by_parts, verdict(is_right));
    }
  }
}

}  // namespace
}  // namespace vorel::bench

int main() {
  const auto prefix = vorel::bench::independent_places(100'000);
  vorel::bench::measure_parsing();
  vorel::bench::measure_expansion(*prefix);
  vorel::bench::measure_sharing(*prefix);
  vorel::bench::measure_alternatives();
  return 0;
}
