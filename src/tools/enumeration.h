// tools/enumeration.h - the rows of a table in words.
#pragma once

#include <cstddef>
#include <string>

namespace vorel::tools {

// "a, b and c" of the field of each row.
template <class Table, class Field>
std::string enumerate(const Table& table, Field field) {
  std::string names;
  for (std::size_t i = 0; i < table.size(); ++i) {
    if (i > 0) names += i + 1 == table.size() ? " and " : ", ";
    names += table[i].*field;
  }
  return names;
}

}  // namespace vorel::tools
