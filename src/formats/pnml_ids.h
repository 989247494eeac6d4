// formats/pnml_ids.h - from the text of an `id` to the number of the element that has it.
// Here:      the table, filled once and then asked once or twice for each end of each arc.
// Not here:  what is numbered (formats/pnml_page.h).
// An open-addressing table of hash and number, with no allocation of its own for an entry: the
// texts are not copied and must outlive it.
#pragma once

#include <cassert>
#include <cstdint>
#include <string_view>
#include <vector>

#include "base/ptr_list.h"

namespace vorel::formats::pnml {

class IdTable {
 public:
  IdTable() : slots_(smallest_slot_count) {}

  // Numbers the id with the count of those before it. False if it is in the table already.
  bool insert(std::string_view id);
  // no_index for an unknown id.
  std::uint32_t find(std::string_view id) const;

  std::uint32_t size() const { return static_cast<std::uint32_t>(ids_.size()); }
  std::string_view id(std::uint32_t number) const {
    assert(number < ids_.size());
    return ids_[number];
  }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t number = base::no_index;  // none: the slot is free
  };
  static constexpr std::size_t smallest_slot_count = 64;

  // The slot of the id, or the free one where it belongs.
  std::size_t slot_of(std::string_view id, std::uint32_t hash) const;
  void grow();

  std::vector<Slot> slots_;  // a power of two, at most half full
  std::vector<std::string_view> ids_;
};

// The error `Duplicate XML id: "..."`.
void report_duplicate_id(std::string_view id);
// The error `XML identifier "..." has not been declared`.
void report_undeclared(std::string_view id);

}  // namespace vorel::formats::pnml
