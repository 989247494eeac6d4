#include "zchaff/group_table.h"

#include "base/messages.h"

namespace vorel::zchaff {
namespace {

void report(const char* what, const char* where) {
  base::print_error(base::format_message("%s (%s, zchaff_dbase)", what, where));
}

}  // namespace

std::optional<Group> GroupTable::allocate() {
  for (std::uint32_t number = 1; number <= max_groups; ++number) {
    if (births_[number] != 0) continue;
    births_[number] = ++made_;
    return Group{number};
  }
  report("Not enough GID", "CDatabase::alloc_gid");
  return std::nullopt;
}

bool GroupTable::release(Group group) {
  if (group == permanent || !is_alive(group)) {
    report("Can't free unallocated GID", "CDatabase::free_gid");
    return false;
  }
  births_[index_of(group)] = 0;
  return true;
}

Group GroupTable::youngest_of(GroupSet groups) const {
  Group youngest = permanent;
  for (std::uint32_t number = 1; number <= max_groups && !groups.empty(); ++number)
    if (groups.contains(Group{number}) && is_younger(Group{number}, youngest))
      youngest = Group{number};
  return youngest;
}

}  // namespace vorel::zchaff
