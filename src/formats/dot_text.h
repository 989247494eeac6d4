// formats/dot_text.h - what drawings of nets and of prefixes in the language of Graphviz share.
// Here:      labels, colours by kind, the head of a drawing that is to fit a page.
// Not here:  the nodes and arcs (formats/net_dot.h, formats/prefix_dot.h).
#pragma once

#include <string_view>

#include "base/text_sink.h"
#include "net/net.h"

namespace vorel::formats {

// The text between the quotes of a label, whatever bytes it has.
void add_label_text(base::TextSink& sink, std::string_view text);

// Of a transition, its events and arcs: by the kind of its signal, black without signals.
std::string_view colour_of(const net::Transition& transition);
std::string_view colour_of(const net::StgTransition& transition);

// "digraph NAME {", comments that explain the drawing, small nodes, and a size of at most a page.
void start_drawing(base::TextSink& sink, std::string_view name, std::string_view explanation,
                   bool has_signals);

// The start of the statement of a place or condition, to which more attributes may be added. The
// label stands inside the circle, the name beside it.
void add_circle(base::TextSink& sink, std::string_view letter, std::size_t number,
                std::string_view label, std::string_view name);

}  // namespace vorel::formats
