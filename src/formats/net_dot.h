// formats/net_dot.h - a drawing of a net or STG in the language of Graphviz.
// Transitions are boxes with their names, in the colour of the kind of their signal. A place with
// one producer and one consumer is an arc between the two; the others are circles with their names
// beside them. Tokens are dots. The same net gives the same text.
#pragma once

#include <ostream>
#include <string>

#include "net/net.h"

namespace vorel::formats {

// N is net::Net or net::Stg. False after an error.
template <class N>
bool write_net_dot(const N& net, std::ostream& stream);
template <class N>
bool save_net_dot(const N& net, const std::string& file_name);

}  // namespace vorel::formats
