// formats/g_reader.h - the reader of STGs in the .g text form.
// Here:      the lines and keywords of the form.
// Not here:  splitting into words (formats/g_words.h), what is built (formats/g_graph.h,
//            formats/g_initial_state.h).
//
//   .model NAME             ignored, as are .name, .capacity and .slowenv
//   .inputs a b             also .outputs, .internal, .dummy; before the arcs
//   .graph                  then lines "SOURCE TARGET ..." of arcs, up to the next keyword; a
//                           target may have a weight behind it, "p=1" or "p(1)", which must be 1
//   .marking { p <a+,b+> }  over one or more lines; also .marking = { p, <a+,b+> }
//   .initial.state a !b     also .initial_state, .initial, .init_values, .init_state
//   .coords, .time, .delays skipped with all lines up to the next keyword; so are unknown keywords
//                           with theirs, but not without a warning
//   .end                    also behind the marking; of what follows is warned
// "#" starts a comment, and a backslash at the end of a line continues it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "net/net.h"

namespace vorel::formats {

// Sorted and numbered. nullopt after an error. `name` is what messages call the file.
std::optional<net::Stg> read_g_text(std::string_view text, const std::string& name);

}  // namespace vorel::formats
