// formats/ll_net_reader.h - the reader of nets in the low-level net text of the PEP tools.
// Here:      lines and their attributes.
// Not here:  nets in other forms (formats/g_reader.h, formats/pnml_net_reader.h).
//
//   PL  places       [NUMBER]"NAME"ATTRIBUTES, where M1 is the initial token
//   TR  transitions  [NUMBER]"NAME"ATTRIBUTES
//   TP  arcs         TRANSITION<PLACE ATTRIBUTES, where the weight w may only be 1
//   PT  arcs         PLACE>TRANSITION ATTRIBUTES
// Without a number, a node has the one after that of the node before. An attribute is a position
// X@Y, or a letter with a number, a position, a text in quotes or nothing.
//   RA  read arcs    as in TP or PT; the token is taken and put back
//   RS, IA           reset and inhibitor arcs, which are refused
//   PTR, PTP, PPT    phantom transitions and their arcs, skipped, as are texts (TX), the header and
//                    lines of defaults
// Of other sections is warned.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "net/net.h"

namespace vorel::formats {

// Sorted and numbered. nullopt after an error. `name` is what messages call the file.
std::optional<net::Net> read_ll_net_text(std::string_view text, const std::string& name);

}  // namespace vorel::formats
