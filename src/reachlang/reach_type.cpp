#include "reachlang/reach_type.h"

#include <cassert>
#include <iterator>
#include <string_view>
#include <vector>

namespace vorel::reachlang {
namespace {

constexpr std::string_view base_names[] = {"fail",   "condition", "event",  "place", "transition",
                                           "signal", "numerical", "string", "bool"};
static_assert(std::size(base_names) == static_cast<std::size_t>(BaseType::boolean) + 1);

}  // namespace

ReachType element_of(ReachType set) {
  assert(set.is_set());
  return {set.base, set.depth - 1};
}

std::string name_of(BaseType base) {
  return std::string(base_names[static_cast<std::size_t>(base)]);
}

std::string list_of(BaseTypes types, bool and_sets) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < std::size(base_names); ++i) {
    const auto base = static_cast<BaseType>(i);
    if (contains(types, base)) names.push_back(name_of(base));
  }
  if (and_sets) names.push_back("set thereof");
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " or " : ", ";
    text += names[i];
  }
  return text;
}

}  // namespace vorel::reachlang
