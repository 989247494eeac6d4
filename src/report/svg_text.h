// report/svg_text.h - names in pictures and pages, whatever bytes they have.
// Here:      text that every browser shows as it stands, its width, shortening, escaping.
// Not here:  XML that has to give back the same bytes (formats/xml_text.h).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vorel::report {

// UTF-8 without control characters: those, bytes that are no UTF-8, and what changes the direction
// of the text around it are written by their numbers, "\x0A" and "\u202E".
std::string printable(std::string_view text);

// In a font of fixed width; wide characters count twice. The text is printable.
std::size_t column_count(std::string_view text);

// At most so many columns, of which at least three: an ellipsis takes the place of what is left out
// before the last third, which has the signs and numbers. The text is printable.
std::string shortened(std::string_view text, std::size_t most_columns);

// As text of an element or between quotes of an attribute, in HTML and XML. The text is printable.
std::string escaped(std::string_view text);

}  // namespace vorel::report
