// formats/prefix_dot.h - a drawing of a prefix in the language of Graphviz.
// Conditions are circles with the names of their places, events boxes with the names of their
// transitions and their numbers. Cut-offs are dashed; the events of an STG and their arcs have the
// colour of the kind of their signal. The same prefix gives the same text.
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
