// report/svg_canvas.h - an SVG picture, element by element.
// Here:      elements, numbers with one decimal, the frame with the texts for those who see
//            nothing.
// Not here:  what is drawn, colours (report/drawing_style.h).
//
// Names and titles are any bytes. There are no ids in a picture, so that a page may have several.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "report/graph_layout.h"

namespace vorel::report {

class SvgCanvas {
 public:
  // A title is what a pointer that rests on the group is shown; empty for none.
  void begin_group(std::string_view classes, std::string_view title = {});
  void end_group() { body_ += "</g>\n"; }

  void box(Point centre, double width, double height, double radius, std::string_view classes);
  void circle(Point centre, double radius, std::string_view classes);
  void line(std::span<const Point> points, std::string_view classes);
  void polygon(std::span<const Point> points, std::string_view classes);
  void curve(std::span<const Point> points, std::string_view classes);
  // From the middle of its base to the tip.
  void arrowhead(Point base, Point tip);
  // Any path, in the words of SVG, moved by `origin`.
  void path(Point origin, std::string_view data, std::string_view classes);
  // Its middle is at `at`, or its start or end if the classes say so (report/drawing_style.h).
  void text(Point at, std::string_view classes, std::string_view text);

  // The element <svg>. It is as wide as the page allows, at most its natural width, which the style
  // finds in "--natural". Title and description are any bytes.
  std::string finish(double width, double height, std::string_view classes, std::string_view title,
                     std::string_view description) &&;

 private:
  void begin_element(std::string_view name, std::string_view classes);
  void attribute(std::string_view name, double value);
  void add_points(std::span<const Point> points);
  void add(Point point);
  void add(double number);

  std::string body_;
};

// The point of the middle piece of a curve at half its way.
Point middle_of(const Curve& curve);

}  // namespace vorel::report
