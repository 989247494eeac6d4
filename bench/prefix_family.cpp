#include "bench/prefix_family.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

namespace vorel::bench {
namespace {

using enum ModuleKind;

PrefixFamily::Sizes sizes_of(const Group& group) {
  const auto cut_offs = std::ranges::count_if(
      group.events, [](const auto& event) { return event.cut_off != Group::no_cut_off; });
  return {group.places.size(),     group.transitions.size(), group.signals.size(),
          group.conditions.size(), group.events.size(),      static_cast<std::uint64_t>(cut_offs)};
}

void add(PrefixFamily::Sizes& total, const PrefixFamily::Sizes& more) {
  total.places += more.places;
  total.transitions += more.transitions;
  total.signals += more.signals;
  total.conditions += more.conditions;
  total.events += more.events;
  total.cut_offs += more.cut_offs;
}

// The first one neither ends nor has a deadlock of its own.
std::vector<GroupShape> standard_shapes() {
  return {
      {{two_orders, exclusion, three_orders, join, two_orders}, 12, GroupEnding::starts_again},
      {{two_orders, three_orders, exclusion, two_orders}, 16, GroupEnding::ends},
      {{two_locks, three_orders, two_orders, two_orders}, 10, GroupEnding::starts_again},
      {{three_orders, two_orders, two_orders, join, three_orders, two_orders},
       14,
       GroupEnding::ends},
  };
}

}  // namespace

PrefixFamily::PrefixFamily(std::vector<Group> templates, std::uint64_t least_events)
    : templates_{std::move(templates)} {
  assert(!templates_.empty());
  do {
    const auto number = static_cast<std::uint32_t>(copies_.size());
    const Group& group = templates_[number % templates_.size()];
    copies_.push_back({&group, number, sizes_});
    add(sizes_, sizes_of(group));
  } while (sizes_.events < least_events);
  assert(sizes_.conditions < std::numeric_limits<std::uint32_t>::max());
}

std::vector<Group> standard_templates(bool with_deadlock) {
  std::vector<GroupShape> shapes = standard_shapes();
  if (with_deadlock) shapes.front().modules.push_back(two_locks);
  std::vector<Group> templates;
  for (const GroupShape& shape : shapes) templates.push_back(make_group(shape));
  return templates;
}

}  // namespace vorel::bench
