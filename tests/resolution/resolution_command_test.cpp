// vorel -R from an STG to the resolved one: what it writes is read back and judged by its states.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <tuple>

#include "formats/g_writer.h"
#include "formats/mci_reader.h"
#include "oracle/parse_g.h"
#include "oracle/prefix_checks.h"
#include "oracle/random_stg.h"
#include "oracle/resolution_checks.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::resolution {
namespace {

using Names = std::vector<std::string>;
using support::ProgramRun;
using support::TemporaryFolder;

struct Answer {
  ProgramRun run;
  std::string g, mci;  // the files written, empty without one
  bool resolved = false;
  unsigned insertions = 0, reductions = 0;
};

std::string without_times(const std::string& text) {
  return text.substr(0, text.find("\n SAT/Total time:"));
}

Answer resolve(const TemporaryFolder& folder, const std::string& prefix, Names options) {
  for (const char* file : {"vorel.g", "vorel.mci"}) std::filesystem::remove(folder.path(file));
  options.insert(options.begin(), "-R");
  options.push_back(prefix);
  Answer answer;
  answer.run = support::run_vorel(options, {.directory = folder.path()});
  answer.run.out = without_times(answer.run.out);
  answer.g = support::read_text(folder.path("vorel.g"));
  answer.mci = support::read_text(folder.path("vorel.mci"));
  const auto told = answer.run.out.find("all conflicts resolved (");
  answer.resolved = told != std::string::npos;
  if (answer.resolved) {
    std::sscanf(answer.run.out.c_str() + told,
                "all conflicts resolved (%u signal insertion(s) and %u concurrency",
                &answer.insertions, &answer.reductions);
  }
  return answer;
}

// The net without what can never happen, of which *.mci has no arcs. Places are known by
// neighbours.
using Neighbours = std::tuple<std::multiset<std::string>, std::multiset<std::string>, unsigned>;
std::multiset<Neighbours> live_part(const net::Stg& stg, const std::set<std::string>& live) {
  std::multiset<Neighbours> places;
  const auto names = [&live](const auto& list) {
    std::multiset<std::string> result;
    for (const auto* transition : list) {
      if (live.contains(transition->name)) result.insert(transition->name);
    }
    return result;
  };
  for (const auto& place : stg.places) {
    Neighbours found{names(place->preset), names(place->postset), place->initial_marking};
    if (found != Neighbours{}) places.insert(std::move(found));
  }
  return places;
}

std::string prefix_fault(const net::Stg& stg, const TemporaryFolder& folder) {
  std::ifstream stream(folder.path("vorel.mci"), std::ios::binary);
  const auto prefix = formats::read_mci_stg(stream, "vorel.mci");
  if (!prefix) return "vorel.mci cannot be read";
  std::set<std::string> live, with_events;
  const auto graph = oracle::explore(stg);
  for (const auto& state : graph.states) {
    for (const auto& arc : state.arcs) live.insert(arc.transition->name);
  }
  for (const auto& event : prefix->events) with_events.insert(event->transition->name);
  if (live != with_events || live_part(*prefix, live) != live_part(stg, live))
    return "vorel.mci is of another net than vorel.g";
  std::erase_if(prefix->transitions, [&](const auto& t) { return !live.contains(t->name); });
  base::renumber(prefix->transitions);
  if (std::string fault = oracle::branching_fault<net::Stg>(*prefix); !fault.empty()) return fault;
  return oracle::completeness_fault(*prefix, oracle::explore<net::Stg>(*prefix), 50'000);
}

// What is wrong with the answer of the loop, in words.
std::string fault_of(const net::Stg& before, const Answer& answer, const TemporaryFolder& folder) {
  if (answer.run.exit_code > 1 || answer.run.exit_code < 0) return "fails: " + answer.run.err;
  if (!answer.resolved) {
    if (!answer.g.empty() || !answer.mci.empty()) return "files without success";
    if (answer.run.out.find("cannot make further progress (") == std::string::npos)
      return "no verdict";
    return answer.run.exit_code == 1 ? "" : "no warning";
  }
  const auto after = oracle::parse_g(answer.g);
  if (!after) return "vorel.g cannot be read";
  oracle::ResolutionClaim claim{.reduced = answer.reductions > 0};
  for (unsigned i = 0; i < answer.insertions; ++i) {
    claim.new_signals.push_back(i == 0 ? "csc" : "csc" + std::to_string(i));
  }
  std::string fault = oracle::resolution_fault(before, *after, claim);
  return fault.empty() ? prefix_fault(*after, folder) : fault;
}

std::string unfolded(const TemporaryFolder& folder, const net::Stg& stg) {
  const std::string name = folder.path("stg.g");
  EXPECT_TRUE(formats::save_g(stg, name));
  const std::string prefix = folder.path("stg.unf.pnml");
  EXPECT_LT(support::run_vorel_unfold({name, prefix}).exit_code, 2);
  return prefix;
}

// Each of these has been wrong where others were right.
const Names option_sets[] = {{},      {"-p0"}, {"-p2"},       {"-r"},
                             {"-cs"}, {"-$0"}, {"-r", "-p2"}, {"-cl", "-p0"}};

TEST(ResolutionCommand, ResolvedStgsDoWhatTheyDidWithoutConflicts) {
  const auto [first, end] = support::seeds(48);
  unsigned resolved = 0, inserted = 0, reduced = 0, given_up = 0;
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    const net::Stg stg = oracle::random_stg(
        seed, {.dummies = seed % 3 == 1, .toggles = seed % 3 == 2, .max_states = 150});
    Names options = option_sets[seed % std::size(option_sets)];
    options.push_back("-f");
    SCOPED_TRACE("seed " + std::to_string(seed) + testing::PrintToString(options));
    const TemporaryFolder folder;
    const std::string prefix = unfolded(folder, stg);
    const Answer answer = resolve(folder, prefix, options);
    EXPECT_EQ(fault_of(stg, answer, folder), "");
    if (seed % 4 == 0) {
      const Answer again = resolve(folder, prefix, options);
      EXPECT_TRUE(again.run.out == answer.run.out && again.g == answer.g && again.mci == answer.mci)
          << "the same input gives something else";
    }
    resolved += answer.resolved ? 1 : 0;
    inserted += answer.insertions > 0 ? 1 : 0;
    reduced += answer.reductions > 0 ? 1 : 0;
    given_up += answer.resolved ? 0 : 1;
  }
  std::printf("resolved %u, with insertions %u, with reductions %u, given up %u\n", resolved,
              inserted, reduced, given_up);
  EXPECT_GT(inserted, (end - first) / 4);
}

}  // namespace
}  // namespace vorel::resolution
