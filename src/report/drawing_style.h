// report/drawing_style.h - what all drawings of nets, prefixes and netlists look like.
// Here:      the stylesheet, boxes of transitions by the kind of their signals, legends.
// Not here:  what is drawn where (report/drawings.h), waveforms (report/waveform_drawing.h).
//
// Kinds of signals differ in colour and in the border, too, for print and for eyes that do not tell
// the colours apart: inputs have round ends, outputs a thick border, internal signals a double one,
// dummies sharp corners.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "net/net.h"
#include "report/svg_canvas.h"

namespace vorel::report {

// For the head of a page, once, whatever drawings there are. Sets the properties --input, --output,
// --internal, --dummy, --ink, --quiet and --paper within elements of the class "drawing", light or
// dark as the reader's system, light in print.
std::string_view drawing_style();

// "input", "output", "internal", "dummy": the class of what is coloured by it, and the word.
std::string_view kind_word(net::SignalKind kind);

inline constexpr double letter_width = 7.25;  // of labels
inline constexpr double small_letter_width = 5.5;
inline constexpr double text_height = 4.2;  // from the middle of a line of labels to its base
inline constexpr double box_height = 22;
inline constexpr std::size_t most_label_columns = 26;

std::string label_of(std::string_view name);  // printable and short
double label_width(std::string_view label);   // of a printable text
double box_width(std::string_view label);     // of a box around it

// The border of a box of the kind, within a group of the class kind_word(kind). More classes may
// change it.
void draw_border(SvgCanvas& canvas, net::SignalKind kind, Point centre, double width, double height,
                 std::string_view more_classes = {});

// The curve and its arrowhead.
void draw_arc(SvgCanvas& canvas, const Curve& curve, bool has_arrow);

struct LegendItem {
  double width = 0;  // of the sample
  std::function<void(SvgCanvas&, Point middle)> draw;
  std::string text;
};
LegendItem kind_sample(net::SignalKind kind);

// Below a drawing, in as many lines as its width takes; `width` and `height` are those of the
// drawing and grow.
void draw_legend(SvgCanvas& canvas, const std::vector<LegendItem>& items, double& width,
                 double& height);

// "a", "a and b", "a, b and c".
std::string listed(const std::vector<std::string>& names);
// "1 event", "2 events".
std::string counted(std::size_t count, std::string_view noun);

}  // namespace vorel::report
