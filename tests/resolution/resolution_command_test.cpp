// vorel -R from an STG to the resolved one: what it writes is read back and judged by its states.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <tuple>

#include "formats/g_writer.h"
#include "formats/mci_reader.h"
#include "formats/process_file.h"
#include "oracle/book_insertion.h"
#include "oracle/parse_g.h"
#include "oracle/prefix_checks.h"
#include "oracle/random_stg.h"
#include "oracle/reduction_checks.h"
#include "oracle/resolution_checks.h"
#include "resolution/insertions.h"
#include "resolution/transformation.h"
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

// Small ones, some with dummies, some with edges without a sign.
net::Stg random_stg(std::uint64_t seed) {
  return oracle::random_stg(seed,
                            {.dummies = seed % 3 == 1, .toggles = seed % 3 == 2, .max_states = 60});
}

std::string unfolded(const TemporaryFolder& folder, const net::Stg& stg) {
  const std::string name = folder.path("stg.g");
  EXPECT_TRUE(formats::save_g(stg, name));
  const std::string prefix = folder.path("stg.unf.pnml");
  EXPECT_LT(support::run_vorel_unfold({name, prefix}).exit_code, 2);
  return prefix;
}

const Names option_sets[] = {{},
                             {"-p0"},
                             {"-p2"},
                             {"-r"},
                             {"-cs"},
                             {"-$0"},
                             {"-r", "-p2"},
                             {"-cl", "-p0"},
                             // What makes reductions cheap.
                             {"-r", "-ccsc=0", "-cusc=0", "-cdel=0", "-ctrig=0", "-clock=0"}};

struct Tally {
  unsigned resolved = 0, inserted = 0, reduced = 0;
};

void expect_right_answer(const net::Stg& stg, Names options, bool repeat, Tally& tally) {
  options.push_back("-f");
  SCOPED_TRACE(testing::PrintToString(options));
  const TemporaryFolder folder;
  const std::string prefix = unfolded(folder, stg);
  const Answer answer = resolve(folder, prefix, options);
  EXPECT_EQ(fault_of(stg, answer, folder), "");
  if (repeat) {
    const Answer again = resolve(folder, prefix, options);
    EXPECT_TRUE(again.run.out == answer.run.out && again.g == answer.g && again.mci == answer.mci)
        << "the same input gives something else";
  }
  tally.resolved += answer.resolved ? 1 : 0;
  tally.inserted += answer.insertions > 0 ? 1 : 0;
  tally.reduced += answer.reductions > 0 ? 1 : 0;
}

TEST(ResolutionCommand, ResolvedStgsDoWhatTheyDidWithoutConflicts) {
  const support::CaughtMessages notes;
  const auto [first, end] = support::seeds(45);
  Tally tally;
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    expect_right_answer(random_stg(seed), option_sets[seed % std::size(option_sets)], seed % 4 == 0,
                        tally);
  }
  EXPECT_GT(tally.resolved, (end - first) / 2);
  EXPECT_GT(tally.inserted, (end - first) / 8);
  EXPECT_GT(tally.reduced, 0u);
}

TEST(ResolutionCommand, ResolvesTheExamples) {
  const support::CaughtMessages notes;
  Tally tally;
  for (const char* name : {"vme_read", "sequencer", "dummy_fork", "celement"}) {
    SCOPED_TRACE(name);
    const net::Stg stg = *oracle::parse_g(support::read_text(support::example(name) + ".g"));
    for (const Names& options : option_sets) expect_right_answer(stg, options, false, tally);
  }
  EXPECT_EQ(tally.resolved, 4 * std::size(option_sets));
}

// The STG after one suggestion, "INSERTION, INSERTION, ..." or "{u,v} --> t", and its fault.
std::string fault_of_suggestion(const net::StgPrefix& prefix, const std::string& text) {
  const std::size_t arrow = std::min(text.find(" --> "), text.find(" -*-> "));
  if (arrow != std::string::npos) {
    oracle::WaitingPlace place{{}, text.substr(text.find("> ") + 2), text[arrow + 2] == '*'};
    std::istringstream sources(text.substr(0, arrow));
    for (std::string name; std::getline(sources, name, ',');) {
      std::erase_if(name, [](char c) { return c == '{' || c == '}'; });
      place.sources.push_back(name);
    }
    const net::Stg reduced = oracle::with_place(prefix, place);
    return oracle::resolution_fault(prefix, reduced, {.resolved = false, .reduced = true});
  }
  std::map<std::string, net::Insertion> known;
  for (const net::Insertion& insertion : insertions(prefix, 2))
    known.emplace(to_text(insertion), insertion);
  std::vector<net::Insertion> chosen;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(", ", at), text.size());
    const auto found = known.find(text.substr(at, end - at));
    if (found == known.end()) return "unknown: " + text.substr(at, end - at);
    chosen.push_back(found->second);
    at = end + 2;
  }
  return oracle::insert_signal_by_the_book(prefix, chosen).fault;
}

TEST(ResolutionCommand, EachSuggestionOfAStepIsValid) {
  const support::CaughtMessages notes;
  const auto [first, end] = support::seeds(36);
  std::size_t suggestions = 0;
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    const TemporaryFolder folder;
    const std::string file = unfolded(folder, random_stg(seed));
    const auto prefix = formats::read_stg_prefix(file);
    Names options = option_sets[seed % std::size(option_sets)];
    if (seed % 3 != 0) options.push_back("-a9");
    SCOPED_TRACE("seed " + std::to_string(seed) + testing::PrintToString(options));
    const Answer answer = resolve(folder, file, options);
    EXPECT_TRUE(answer.run.exit_code < 2 && answer.g.empty() && answer.mci.empty());
    std::set<std::string> texts;
    std::istringstream lines(answer.run.out);
    for (std::string line; std::getline(lines, line);) {
      if (!line.starts_with("SOLUTION ") || !std::getline(lines, line)) continue;
      EXPECT_TRUE(texts.insert(line).second) << line << " is suggested twice";
      EXPECT_EQ(fault_of_suggestion(std::get<net::StgPrefix>(*prefix), line), "") << line;
    }
    suggestions += texts.size();
  }
  EXPECT_GT(suggestions, (end - first) / 4);
}

}  // namespace
}  // namespace vorel::resolution
