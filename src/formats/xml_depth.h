// formats/xml_depth.h - how deeply the elements of an XML text are nested, without parsing it.
// Here:      the scan that lets a text be refused before a recursive parser runs out of stack.
// Not here:  parsing (formats/pnml_document.h).
// The scan takes tags apart in just the way RapidXML does: where the two disagreed on what is a tag
// and what is text, deep nesting could be hidden from it.
#pragma once

#include <cstdint>
#include <string>

namespace vorel::formats {

// The start tag of the first element that has `bound` elements around it; null if there is none, or
// none before the place where the parser will refuse the text. No zero byte may be in the text.
const char* element_below_depth(const std::string& text, std::uint32_t bound);

}  // namespace vorel::formats
