#include "configuration/dummy_cutoffs.h"

#include <gtest/gtest.h>

#include <optional>

#include "support/process_builder.h"

namespace vorel::configuration {
namespace {

// The dummies d.k and d.l, where d.l has a signal's event in its past, and an event aside.
TEST(DummyCutOffs, AreThoseWhoseCorrespondentsDoNotExplainTheirPast) {
  using Numbers = std::vector<std::size_t>;
  constexpr std::size_t first = 0, k = 1, edge = 2, l = 3, aside = 4;
  struct Row {
    std::size_t cut_off;
    std::optional<Numbers> correspondents;  // none: unknown
    bool expected;
  };
  const Row table[] = {{k, std::nullopt, true},
                       {k, Numbers{first}, true},
                       {k, Numbers{}, false},
                       {k, Numbers{first, k}, false},
                       {k, Numbers{first, edge}, true},
                       {l, Numbers{}, true},
                       {l, Numbers{first, edge}, false},
                       {l, Numbers{first, l}, true},
                       {l, Numbers{edge, aside}, true},
                       {edge, std::nullopt, false},
                       {aside, Numbers{first}, false}};
  for (const Row& row : table) {
    const auto process = support::process_from<net::StgPrefix>(
        "d.first: p -> q r; d.k: q -> t; x+: r -> s; d.l: s -> u; y+: v -> w");
    const auto& events = process->events;
    auto& cut_off = events[row.cut_off]->cut_off;
    std::vector<net::StgPrefix::Event*> correspondents;
    for (const std::size_t number : row.correspondents.value_or(Numbers{}))
      correspondents.push_back(events[number].get());
    if (row.correspondents.has_value())
      cut_off.set_correspondents(correspondents);
    else
      cut_off.set_unknown();
    EXPECT_EQ(has_dummy_cutoffs(*process), row.expected) << "row " << &row - table;
  }
}

}  // namespace
}  // namespace vorel::configuration
