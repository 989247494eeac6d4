// flow/properties.h - named properties of an STG: their file, and their answers.
// Here:      reading the file, a witness for each property that has one.
// Not here:  the language of properties (src/reachlang), the search (reach/reach_check.h).
//
// A file has a property in each paragraph, "NAME: PROPERTY" over any number of lines. Lines that
// begin with # are comments, wherever they stand.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "flow/flow_result.h"
#include "net/process.h"
#include "sat/cnf_formula.h"

namespace vorel::flow {

// Names are words of letters, digits and - _ . with blanks between; no two are the same. The text
// of a property stands in the columns that it has in the file. nullopt after an error with file,
// line and what is wrong there. The properties themselves are not looked at.
std::optional<std::vector<NamedProperty>> read_properties(const std::string& file_name);
std::optional<std::vector<NamedProperty>> parse_properties(std::string_view text,
                                                           const std::string& file_name);

// The prefix is complete, with initial values. What is enabled after dummies counts as enabled, as
// does -Fs of vorel. A witness is as short as any on prefixes of up to 1000 events. A property that
// makes no sense is undecided, and the message says why, with line and column of the file; no
// message goes elsewhere.
PropertyResult check_property(const net::StgPrefix& prefix, const NamedProperty& property,
                              const sat::CnfParams& formula);

}  // namespace vorel::flow
