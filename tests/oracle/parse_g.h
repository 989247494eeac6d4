// oracle/parse_g.h - the small text form in which example circuits are kept.
// A plain parser of well-formed files: nullopt says that the text is not one, not why.
#pragma once

#include <optional>
#include <string>

#include "net/net.h"

namespace vorel::oracle {

// Sections .inputs, .outputs, .internal, .dummy, .graph and .marking. An arc between transitions
// "a+" and "b-" goes through a place named "<a+,b->".
std::optional<net::Stg> parse_g(const std::string& text);

// The whole file; nullopt when it cannot be read.
std::optional<std::string> read_file(const std::string& path);

}  // namespace vorel::oracle
