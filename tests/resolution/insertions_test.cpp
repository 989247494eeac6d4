// Single insertions against the states of the net that they make.
#include "resolution/insertions.h"

#include <gtest/gtest.h>

#include <set>

#include "net/clone_net.h"
#include "oracle/book_insertion.h"
#include "oracle/edit_rules.h"
#include "oracle/resolution_checks.h"
#include "resolution/resolution_support.h"
#include "resolution/transformation.h"

namespace vorel::resolution {
namespace {

using Places = std::vector<const net::StgPlace*>;
using Transitions = std::set<const net::StgTransition*>;

// What the list of insertions is to hold, by what the words say.
class Rules {
 public:
  explicit Rules(const net::StgPrefix& prefix) : prefix_{prefix} {
    for (const auto& event : prefix.events) alive_.insert(event->transition);
  }

  std::vector<net::Insertion> all() const {
    std::vector<net::Insertion> all;
    for (const auto& t : prefix_.transitions) {
      for (Places& places : subsets(t->preset)) all.push_back(net::SeqBefore{t.get(), places});
      for (Places& places : subsets(t->postset)) all.push_back(net::SeqAfter{t.get(), places});
      for (const auto& u : prefix_.transitions) {
        if (u == t) continue;
        all.push_back(net::Concurrent{u.get(), false, t.get()});
        all.push_back(net::Concurrent{u.get(), true, t.get()});
      }
    }
    std::erase_if(all, [this](const net::Insertion& insertion) {
      return !std::visit([this](const auto& kind) { return is_wanted(kind); }, insertion) ||
             !oracle::keeps_prefix_complete(prefix_, insertion);
    });
    std::ranges::sort(all, insertion_less);
    return all;
  }

 private:
  template <class List>
  static std::vector<Places> subsets(const List& list) {
    std::vector<Places> result{{}};
    for (const net::StgPlace* place : list) {
      const std::size_t count = result.size();
      for (std::size_t i = 0; i < count; ++i) {
        result.push_back(result[i]);
        result.back().push_back(place);
      }
    }
    result.erase(result.begin());
    return result;
  }

  bool is_dead(const net::StgTransition* t) const { return !alive_.contains(t); }
  static Transitions consumers(const Places& places) {
    Transitions result;
    for (const auto* place : places) result.insert(place->postset.begin(), place->postset.end());
    return result;
  }
  static Transitions through_dummies(const net::StgTransition* t) {
    Transitions result{t};
    for (std::size_t size = 0; size != result.size();) {
      size = result.size();
      for (const auto* reached : Transitions(result))
        if (reached->signal->is_dummy())
          result.merge(consumers({reached->postset.begin(), reached->postset.end()}));
    }
    return result;
  }
  static bool may_not_wait(const net::StgTransition* t) {
    return std::ranges::any_of(through_dummies(t), [](const auto* reached) {
      return reached->signal->kind == net::SignalKind::input;
    });
  }

  bool is_wanted(const net::General&) const { return false; }
  bool is_wanted(const net::SeqBefore& insertion) const {
    return !is_dead(insertion.target) && !may_not_wait(insertion.target);
  }
  bool is_wanted(const net::SeqAfter& insertion) const {
    const Transitions next = consumers(insertion.places);
    if (is_dead(insertion.source) || std::ranges::any_of(next, may_not_wait)) return false;
    const bool is_all = insertion.places.size() == insertion.source->postset.size();
    if (is_all && insertion.source->signal->is_dummy()) return false;
    const bool is_before_one = std::ranges::all_of(insertion.places, [](const auto* place) {
      return place->initial_marking + place->preset.size() == 1 && place->postset.size() == 1;
    });
    return !is_before_one || next.size() > 1;
  }
  bool is_wanted(const net::Concurrent& insertion) const {
    const auto *u = insertion.source, *t = insertion.target;
    if (is_dead(u) || is_dead(t) || may_not_wait(t)) return false;
    const Places before(t->preset.begin(), t->preset.end());
    const Places after(t->postset.begin(), t->postset.end());
    const Places behind(u->postset.begin(), u->postset.end());
    if (consumers(after).contains(u) || consumers(behind).contains(t)) return false;
    return !std::ranges::includes(through_dummies(t), through_dummies(u));
  }

  const net::StgPrefix& prefix_;
  Transitions alive_;
};

// A toggle, so that no sign can be wrong.
std::string fault_of(const net::Stg& stg, const net::Insertion& insertion) {
  net::Stg result = net::clone_net(stg);
  net::Signal& signal = net::add_signal(result, "x", net::SignalKind::internal);
  net::sort_signals(result);
  signal.initial_value = 0;
  oracle::insert_by_the_book(result, insertion, signal, net::Sign::toggle);
  net::sort_net(result);
  return oracle::resolution_fault(stg, result, {.new_signals = {"x"}, .resolved = false});
}

struct Counts {
  int good = 0, hazards = 0, refused = 0, general = 0;
};

void expect_the_good_ones(const net::StgPrefix& prefix, Counts& counts) {
  std::set<std::string> found;
  for (const net::Insertion& insertion : insertions(prefix, 2))
    EXPECT_TRUE(found.insert(to_text(insertion)).second);
  const resolution_support::OldHazards old_hazards(prefix);
  for (const net::Insertion& insertion : Rules(prefix).all()) {
    SCOPED_TRACE(to_text(insertion));
    const bool is_found = found.erase(to_text(insertion)) != 0;
    const std::string fault = fault_of(prefix, insertion);
    if (is_found) {
      EXPECT_TRUE(fault.empty() || old_hazards.explain(fault)) << fault;
    } else if (!fault.empty()) {
      EXPECT_NE(fault.find(" disables "), std::string::npos) << fault;
    }
    ++(is_found ? counts.good : fault.empty() ? counts.refused : counts.hazards);
  }
  EXPECT_EQ(found, std::set<std::string>{}) << "not by the rules";
  for (const net::Insertion& insertion : resolution_support::all_general_insertions(prefix)) {
    if (++counts.general % 3 != 0) continue;  // there are many
    const std::string fault = fault_of(prefix, insertion);
    EXPECT_TRUE(fault.empty() || old_hazards.explain(fault)) << to_text(insertion) << ": " << fault;
  }
}

TEST(Insertions, AreThoseByTheRulesThatKeepWhatTheStgDoes) {
  Counts counts;
  resolution_support::on_prefixes(30, [&](const net::StgPrefix& prefix, std::uint64_t) {
    expect_the_good_ones(prefix, counts);
  });
  for (const char* name : {"celement", "dummy_fork", "fork_join", "mutex2", "toggle", "vme_read"})
    expect_the_good_ones(resolution_support::unfold_example(name), counts);
  EXPECT_GT(counts.hazards, 0);
  EXPECT_GT(counts.general, 0);
  EXPECT_LT(counts.refused * 50, counts.good) << "where several events give excitation back";
}

std::set<std::string> texts(const net::StgPrefix& prefix, int concurrent_insertions) {
  std::set<std::string> result;
  for (const net::Insertion& insertion : insertions(prefix, concurrent_insertions))
    result.insert(to_text(insertion));
  return result;
}

TEST(Insertions, OfTheBusControllerAreAsFarApartAsAskedFor) {
  const auto prefix = resolution_support::unfold_example("vme_read");
  const auto none = texts(prefix, 0), near = texts(prefix, 1), all = texts(prefix, 2);
  EXPECT_TRUE(std::ranges::includes(near, none) && std::ranges::includes(all, near));
  EXPECT_LT(none.size(), near.size());
  EXPECT_LT(near.size(), all.size());
  EXPECT_TRUE(none.contains("|lds+") && none.contains("d-|"));
  EXPECT_FALSE(all.contains("|dsr-")) << "an input would wait";
}

}  // namespace
}  // namespace vorel::resolution
