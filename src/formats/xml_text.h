// formats/xml_text.h - names as the text of XML elements.
// Here:      escaping, such that every parser gives back the same bytes, blanks included.
// Not here:  elements (formats/pnml_writer.h), reading (formats/pnml_document.h).
#pragma once

#include <string_view>

#include "base/text_sink.h"

namespace vorel::formats {

// There must be no zero byte in the text.
void add_xml_text(base::TextSink& sink, std::string_view text);

// Whether the text has a control character that XML 1.0 knows no way to write.
bool needs_xml_1_1(std::string_view text);

}  // namespace vorel::formats
