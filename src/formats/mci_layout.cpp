#include "formats/mci_layout.h"

#include <algorithm>

namespace vorel::formats {
namespace {

class LayoutFinder {
 public:
  LayoutFinder(std::string_view bytes, MciLayout& layout) : words_{bytes}, layout_{layout} {}

  bool run() {
    layout_.condition_count = words_.next();
    layout_.event_count = words_.next();
    if (words_.rest().size() / 4 < layout_.event_count) return false;
    return walk_events() && walk_conditions() && walk_cut_offs() && skip_groups() && find_names();
  }

 private:
  bool walk_events() {
    layout_.events = words_.rest();
    for (std::uint32_t i = 0; i < layout_.event_count; ++i) {
      const std::uint32_t transition = words_.next();
      if (transition == 0) return false;
      highest_transition_ = std::max(highest_transition_, transition);
    }
    return !words_.failed();
  }

  bool walk_conditions() {
    layout_.conditions = words_.rest();
    layout_.consumed.assign(layout_.event_count, 0);
    layout_.produced.assign(layout_.event_count, 0);
    for (std::uint32_t i = 0; i < layout_.condition_count; ++i) {
      if (!walk_condition()) return false;
    }
    return !words_.failed();
  }

  bool walk_condition() {
    const std::uint32_t place = words_.next();
    const std::uint32_t producer = words_.next();
    if (place == 0 || producer > layout_.event_count) return false;
    highest_place_ = std::max(highest_place_, place);
    if (producer != 0) ++layout_.produced[producer - 1];
    while (const std::uint32_t consumer = words_.next()) {
      if (consumer > layout_.event_count) return false;
      ++layout_.consumed[consumer - 1];
    }
    return true;
  }

  bool walk_cut_offs() {
    layout_.cut_offs = words_.rest();
    while (const std::uint32_t event = words_.next()) {
      const std::uint32_t correspondent = words_.next();
      if (event > layout_.event_count) return false;
      if (correspondent > layout_.event_count && correspondent != mci_unknown_correspondent) {
        return false;
      }
    }
    return !words_.failed();
  }

  bool skip_groups() {
    while (words_.next() != 0) {
      while (words_.next() != 0) {
      }
    }
    return !words_.failed();
  }

  bool find_names() {
    const std::uint32_t place_count = words_.next();
    const std::uint32_t transition_count = words_.next();
    max_name_length_ = words_.next();
    if (words_.failed()) return false;
    if (highest_place_ > place_count || highest_transition_ > transition_count) return false;
    names_ = words_.rest();
    std::string_view separator;
    return take_names(place_count, layout_.place_names) && take_name(separator) &&
           separator.empty() && take_names(transition_count, layout_.transition_names);
  }

  bool take_names(std::uint32_t count, std::vector<std::string_view>& names) {
    if (names_.size() < count) return false;  // each has its zero byte at least
    names.resize(count);
    return std::ranges::all_of(names, [this](std::string_view& name) { return take_name(name); });
  }

  bool take_name(std::string_view& name) {
    const std::size_t length = names_.substr(0, std::size_t{max_name_length_} + 1).find('\0');
    if (length == std::string_view::npos) return false;
    name = names_.substr(0, length);
    names_.remove_prefix(length + 1);
    return true;
  }

  MciWords words_;
  MciLayout& layout_;
  std::string_view names_;  // what is left of the file behind the words
  std::uint32_t highest_place_ = 0, highest_transition_ = 0;
  std::uint32_t max_name_length_ = 0;
};

}  // namespace

bool find_mci_layout(std::string_view bytes, MciLayout& layout) {
  return LayoutFinder(bytes, layout).run();
}

}  // namespace vorel::formats
