// report/drawings.h - nets, prefixes and netlists as pictures.
// Here:      each picture as SVG to be put into a page, and a text that says the same to those who
//            do not see it.
// Not here:  the layout, which Graphviz makes (report/graph_layout.h), colours, which a page has to
//            bring in once (report/drawing_style.h), waveforms (report/waveform_drawing.h).
//
// Where the layout fails there is a warning, and the text alone.
#pragma once

#include <cstddef>
#include <string>

#include "flow/flow_result.h"
#include "net/process.h"

namespace vorel::report {

struct Drawing {
  std::string svg;          // one element <svg>; empty where there is too much to draw
  std::string alternative;  // plain text, never empty
};

// Beyond it a picture helps nobody.
inline constexpr std::size_t most_drawn_events = 400;
inline constexpr std::size_t most_drawn_nodes = 400;  // of an STG or a circuit
inline constexpr std::size_t most_drawn_arcs = 800;
inline constexpr std::size_t most_drawn_wires = 400;  // of a circuit, which are more tangled

// Places with one producer and one consumer are arcs (with a token, if marked); transitions are
// coloured by the kind of their signals.
Drawing draw_stg(const net::Stg& stg);
// Conditions with one producer and at most one consumer are arcs; cut-offs are dashed; the more
// conflict cores run through an event the stronger its colour. An empty map is one of zeros.
Drawing draw_prefix(const net::StgPrefix& prefix, const flow::CoreMap& cores);
// Gates in the usual shapes where one tells the function, else as boxes with their names or
// functions; wires upright and level, coloured by the kind of their signals; inversions that take
// no time are bubbles of another colour.
Drawing draw_schematic(const flow::CircuitResult& circuit, const net::Stg& stg);

}  // namespace vorel::report
