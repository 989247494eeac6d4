// formats/pnml_net_reader.h - the reader of place/transition nets in PNML [ISO-15909-2].
// Here:      the document and its net; nested pages, reference nodes, arcs, markings, names.
// Not here:  the PNML of processes, which is another one (formats/pnml_reader.h).
// Only ordinary nets are read: an arc inscription other than 1 is refused.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "net/net.h"

namespace vorel::formats {

// Sorted and numbered. nullopt after an error. `name` is what messages call the file.
std::optional<net::Net> read_pnml_net_text(std::string_view text, const std::string& name);

}  // namespace vorel::formats
