// report/gate_symbol.h - the shape by which a gate is known at sight.
// Here:      which shape a function has, and drawing it.
// Not here:  wires, and inversions beside gates (report/drawings.h).
#pragma once

#include <cstdint>
#include <vector>

#include "flow/flow_result.h"
#include "report/svg_canvas.h"

namespace vorel::report {

enum class GateShape : std::uint8_t { box, conjunction, disjunction, buffer, c_element };

// All but a box tell the whole function.
struct GateSymbol {
  GateShape shape = GateShape::box;
  std::vector<bool> has_bubble;  // by pin: it is inverted in the gate; empty for a box
  bool has_output_bubble = false;
};

// What a gate that is its function reads of itself is part of what it is, and has no pin.
bool has_pin(const flow::Instance& instance, const flow::Instance::Pin& pin);

// Of the function behind inversions that the instance has at its pins.
GateSymbol symbol_of(const flow::Instance& instance, const verify::Circuit& circuit);

// Its outline in the box with this middle.
void draw_outline(SvgCanvas& canvas, GateShape shape, Point centre, double width, double height);
// How far inside the box the outline is at the left, at `height_part` of the height.
double inset_at(GateShape shape, double height_part);

}  // namespace vorel::report
