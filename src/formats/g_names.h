// formats/g_names.h - what the places and transitions of an STG are called in a .g text.
// Here:      which places stay implicit, and names that read back as the same net.
// Not here:  the text (formats/g_writer.h).
//
// A .g text tells by its name alone whether a word is a transition and which label that has, and it
// knows a place between two transitions by these two only. So names that do not suit are replaced:
// names that tell another label or none, that are not one word, or that another node has already.
// Of several places between the same two transitions one is implicit, the one that is called
// "<t,u>" after them or else the first; and none is if another place has to be written by the name
// "<t,u>".
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "net/net.h"

namespace vorel::formats {

struct GNames {
  std::vector<std::string> transitions;  // by index
  std::vector<std::string> places;       // by index; empty for an implicit place
};

// Warns of names that had to be replaced. nullopt after an error: no name can replace that of a
// signal, as it is known outside of the circuit.
std::optional<GNames> choose_g_names(const net::Stg& stg);

}  // namespace vorel::formats
