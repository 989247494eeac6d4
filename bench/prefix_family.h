// bench/prefix_family.h - a big finite complete prefix, known without unfolding.
// Here:      which groups lie side by side, and at which numbers each one starts.
// Not here:  what a group is (bench/prefix_group.h), files (bench/make_prefix.h).
//
// The net is the disjoint union of groups, and so is its prefix: the state after an event's local
// configuration has all other groups in their initial states. It is complete; between 10 and 30 %
// of the events are cut-offs; an STG is consistent, with all signals 0 at the start. Groups are
// copies of a few templates, so a prefix of any size takes no more memory than its list of groups.
//
// Deadlock: a dead marking needs every group to be dead. Some groups end after their last stage;
// others start again for ever but have a module with a deadlock of its own. Without a deadlock
// every fourth group starts again and has none.
#pragma once

#include <cstdint>
#include <vector>

#include "bench/prefix_group.h"

namespace vorel::bench {

class PrefixFamily {
 public:
  struct Sizes {
    std::uint64_t places = 0, transitions = 0, signals = 0, conditions = 0, events = 0,
                  cut_offs = 0;
  };
  struct Copy {
    const Group* group;
    std::uint32_t number;
    Sizes start;  // sizes of all groups before it
  };

  // Copies the templates in turn until there are at least so many events.
  PrefixFamily(std::vector<Group> templates, std::uint64_t least_events);
  PrefixFamily(const PrefixFamily&) = delete;  // copies point at templates
  PrefixFamily& operator=(const PrefixFamily&) = delete;

  const std::vector<Copy>& copies() const { return copies_; }
  const Sizes& sizes() const { return sizes_; }

 private:
  std::vector<Group> templates_;
  std::vector<Copy> copies_;
  Sizes sizes_;
};

// The templates of the family told above, a few hundred events each.
std::vector<Group> standard_templates(bool with_deadlock);

}  // namespace vorel::bench
