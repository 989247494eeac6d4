// formats/repeated_names.h - names for the nodes of a net whose file tells them apart by other
// means.
#pragma once

#include <cassert>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/ptr_list.h"
#include "formats/pnml_ids.h"

namespace vorel::formats {

// Appends "_ID" to each name that an earlier element has or another one had from the start, so that
// no name is left twice. Gives the indices of what has a new name now.
template <class T>
std::vector<std::uint32_t> make_names_unique(base::OwnedList<T>& elements,
                                             std::span<const std::string_view> ids) {
  assert(elements.size() == ids.size());
  pnml::IdTable names;
  std::vector<std::uint32_t> repeated;
  for (const auto& element : elements) {
    if (!names.insert(element->name)) repeated.push_back(element->index);
  }
  for (const std::uint32_t index : repeated) {
    std::string& name = elements[index]->name;
    do {
      name.append("_").append(ids[index]);
    } while (!names.insert(name));
  }
  return repeated;
}

}  // namespace vorel::formats
