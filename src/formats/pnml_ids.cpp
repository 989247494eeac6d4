#include "formats/pnml_ids.h"

#include <cassert>
#include <cstring>
#include <string>

#include "base/messages.h"

namespace vorel::formats::pnml {
namespace {

std::uint64_t mixed(std::uint64_t value) {
  value *= 0x9E3779B97F4A7C15u;
  return value ^ (value >> 29);
}

// Eight bytes at a time: ids are short, and each is hashed for every arc that names it.
std::uint32_t hash_of(std::string_view id) {
  std::uint64_t hash = id.size();
  while (id.size() >= sizeof(std::uint64_t)) {
    std::uint64_t word;
    std::memcpy(&word, id.data(), sizeof(word));
    hash = mixed(hash ^ word);
    id.remove_prefix(sizeof(word));
  }
  std::uint64_t rest = 0;
  for (const char c : id) rest = rest << 8 | static_cast<unsigned char>(c);
  return static_cast<std::uint32_t>(mixed(hash ^ rest) >> 32);
}

}  // namespace

std::size_t IdTable::slot_of(std::string_view id, std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  assert((slots_.size() & mask) == 0 && "a power of two");
  assert(2 * ids_.size() <= slots_.size() && "a free slot ends every search");
  std::size_t at = hash & mask;
  while (slots_[at].number != base::no_index &&
         (slots_[at].hash != hash || ids_[slots_[at].number] != id)) {
    at = (at + 1) & mask;
  }
  return at;
}

void IdTable::grow() {
  std::vector<Slot> old(2 * slots_.size());
  old.swap(slots_);
  const std::size_t mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (slot.number == base::no_index) continue;
    assert(slot.number < ids_.size());
    std::size_t at = slot.hash & mask;
    while (slots_[at].number != base::no_index) at = (at + 1) & mask;
    slots_[at] = slot;
  }
}

bool IdTable::insert(std::string_view id) {
  const std::uint32_t hash = hash_of(id);
  const std::size_t at = slot_of(id, hash);
  if (slots_[at].number != base::no_index) return false;
  assert(size() < base::no_index);
  slots_[at] = {hash, size()};
  ids_.push_back(id);
  if (2 * ids_.size() > slots_.size()) grow();
  return true;
}

std::uint32_t IdTable::find(std::string_view id) const {
  return slots_[slot_of(id, hash_of(id))].number;
}

void report_duplicate_id(std::string_view id) {
  base::print_error(std::string("Duplicate XML id: \"").append(id).append("\""));
}

void report_undeclared(std::string_view id) {
  base::print_error(std::string("XML identifier \"").append(id).append("\" has not been declared"));
}

}  // namespace vorel::formats::pnml
