// reachlang/text_position.h - a spot in the text of a property, and how messages tell it.
#pragma once

#include <cstdint>
#include <string>

namespace vorel::reachlang {

// Lines and columns count from 1; a column is a byte.
struct TextPosition {
  std::uint32_t line = 1;
  std::uint32_t column = 1;
};

// " (located at line 2, column 7)".
inline std::string located_at(const TextPosition& position) {
  return " (located at line " + std::to_string(position.line) + ", column " +
         std::to_string(position.column) + ")";
}

}  // namespace vorel::reachlang
