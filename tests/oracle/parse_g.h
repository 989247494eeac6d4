// oracle/parse_g.h - the small text forms in which example circuits and nets are kept.
// Here:      STGs in the *.g form, low-level nets in the *.ll_net form.
// Not here:  the program's input files (it reads processes only).
// Plain parsers of well-formed files: nullopt says that the text is not one, not why.
#pragma once

#include <optional>
#include <string>

#include "net/net.h"

namespace vorel::oracle {

// Sections .inputs, .outputs, .internal, .dummy, .graph and .marking. An arc between transitions
// "a+" and "b-" goes through a place named "<a+,b->".
std::optional<net::Stg> parse_g(const std::string& text);

// Sections PL, TR, TP and PT; others are passed over. Numbers count from 1 in the order of the
// lines.
std::optional<net::Net> parse_ll_net(const std::string& text);

// The whole file; nullopt when it cannot be read.
std::optional<std::string> read_file(const std::string& path);

}  // namespace vorel::oracle
