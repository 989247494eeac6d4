// formats/prefix_dot.h - a drawing of a prefix in the language of Graphviz.
// Events are boxes with the names of their transitions and their numbers, in the colour of the kind
// of their signal, dashed for cut-offs. A condition with a producer and one consumer is an arc
// between the two; the others are circles with the names of their places beside them, filled in the
// initial cut. The same prefix gives the same text.
#pragma once

#include <ostream>
#include <string>

#include "net/process.h"

namespace vorel::formats {

// False after an error. Conditions left out after cut-offs are drawn, too.
template <class N>
bool write_dot(const net::PrefixOf<N>& prefix, std::ostream& stream);
template <class N>
bool save_dot(const net::PrefixOf<N>& prefix, const std::string& file_name);

}  // namespace vorel::formats
