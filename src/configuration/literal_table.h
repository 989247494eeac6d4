// configuration/literal_table.h - literals by element, filled on demand and emptied in the time
// that filling took: so that small formulas can be made of a large process one after another.
#pragma once

#include <span>
#include <vector>

#include "base/indexed_by.h"
#include "sat/literal.h"

namespace vorel::configuration {

template <class Element>
class LiteralTable {
 public:
  explicit LiteralTable(std::size_t size) : cells_(size) {}

  // To be filled by the caller if it is not. References stay valid.
  sat::LitCell& operator[](base::Id<Element> id) {
    sat::LitCell& cell = cells_[id];
    if (cell.lit.is_uninit()) asked_for_.push_back(id);
    return cell;
  }
  sat::LitCell& operator[](const Element& element) { return (*this)[base::id_of(element)]; }
  const sat::LitCell& operator[](const Element& element) const { return cells_[element]; }

  // The elements whose cells may be filled, in the order in which they were asked for.
  std::span<const base::Id<Element>> asked_for() const { return asked_for_; }

  void clear() {
    for (const base::Id<Element> id : asked_for_) cells_[id] = {};
    asked_for_.clear();
  }

 private:
  base::IndexedBy<Element, sat::LitCell> cells_;
  std::vector<base::Id<Element>> asked_for_;
};

}  // namespace vorel::configuration
