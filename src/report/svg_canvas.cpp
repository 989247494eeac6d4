#include "report/svg_canvas.h"

#include <array>
#include <cassert>
#include <cmath>

#include "report/svg_text.h"

namespace vorel::report {

void SvgCanvas::add(double number) {
  const long tenths = std::lround(number * 10);
  if (tenths < 0) body_ += '-';
  const long size = std::labs(tenths);
  body_ += std::to_string(size / 10);
  if (size % 10 == 0) return;
  body_ += '.';
  body_ += static_cast<char>('0' + size % 10);
}

void SvgCanvas::add(Point point) {
  add(point.x);
  body_ += ' ';
  add(point.y);
}

void SvgCanvas::attribute(std::string_view name, double value) {
  body_ += ' ';
  body_ += name;
  body_ += "=\"";
  add(value);
  body_ += '"';
}

void SvgCanvas::begin_element(std::string_view name, std::string_view classes) {
  body_ += '<';
  body_ += name;
  body_ += " class=\"";
  body_ += classes;
  body_ += '"';
}

void SvgCanvas::begin_group(std::string_view classes, std::string_view title) {
  begin_element("g", classes);
  body_ += '>';
  if (title.empty()) return;
  body_ += "<title>";
  body_ += escaped(printable(title));
  body_ += "</title>";
}

void SvgCanvas::box(Point centre, double width, double height, double radius,
                    std::string_view classes) {
  begin_element("rect", classes);
  attribute("x", centre.x - width / 2);
  attribute("y", centre.y - height / 2);
  attribute("width", width);
  attribute("height", height);
  if (radius > 0) attribute("rx", radius);
  body_ += "/>";
}

void SvgCanvas::circle(Point centre, double radius, std::string_view classes) {
  begin_element("circle", classes);
  attribute("cx", centre.x);
  attribute("cy", centre.y);
  attribute("r", radius);
  body_ += "/>";
}

void SvgCanvas::add_points(std::span<const Point> points) {
  body_ += " points=\"";
  for (const Point& point : points) {
    if (&point != points.data()) body_ += ' ';
    add(point);
  }
  body_ += "\"/>";
}

void SvgCanvas::line(std::span<const Point> points, std::string_view classes) {
  begin_element("polyline", classes);
  add_points(points);
}

void SvgCanvas::polygon(std::span<const Point> points, std::string_view classes) {
  begin_element("polygon", classes);
  add_points(points);
}

void SvgCanvas::curve(std::span<const Point> points, std::string_view classes) {
  assert(points.size() % 3 == 1);
  begin_element("path", classes);
  body_ += " d=\"M";
  add(points.front());
  for (std::size_t i = 1; i < points.size(); ++i) {
    body_ += i == 1 ? 'C' : ' ';
    add(points[i]);
  }
  body_ += "\"/>";
}

void SvgCanvas::arrowhead(Point base, Point tip) {
  constexpr double slimness = 0.4;  // half the base, as a part of the length
  const Point along{tip.x - base.x, tip.y - base.y};
  const Point aside{-along.y * slimness, along.x * slimness};
  const std::array<Point, 3> corners = {
      {tip, {base.x + aside.x, base.y + aside.y}, {base.x - aside.x, base.y - aside.y}}};
  polygon(corners, "head");
}

void SvgCanvas::path(Point origin, std::string_view data, std::string_view classes) {
  begin_element("path", classes);
  body_ += " transform=\"translate(";
  add(origin);
  body_ += ")\" d=\"";
  body_ += data;
  body_ += "\"/>";
}

void SvgCanvas::text(Point at, std::string_view classes, std::string_view text) {
  begin_element("text", classes);
  attribute("x", at.x);
  attribute("y", at.y);
  body_ += '>';
  body_ += escaped(printable(text));
  body_ += "</text>";
}

std::string SvgCanvas::finish(double width, double height, std::string_view classes,
                              std::string_view title, std::string_view description) && {
  const std::string body = std::move(body_);
  body_ = "<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" class=\"drawing ";
  body_ += classes;
  body_ += "\" viewBox=\"0 0 ";
  add({width, height});
  body_ += "\" style=\"--natural:";
  add(width);
  body_ += "px\">\n<title>";
  body_ += escaped(printable(title));
  body_ += "</title>\n<desc>";
  body_ += escaped(printable(description));
  body_ += "</desc>\n";
  body_ += body;
  body_ += "</svg>\n";
  return std::move(body_);
}

Point middle_of(const Curve& curve) {
  assert(curve.points.size() >= 4);
  const std::size_t pieces = curve.points.size() / 3;
  const Point* const p = &curve.points[pieces / 2 * 3];
  // Between two pieces, if there is an even number of them.
  if (pieces % 2 == 0) return *p;
  return {(p[0].x + 3 * p[1].x + 3 * p[2].x + p[3].x) / 8,
          (p[0].y + 3 * p[1].y + 3 * p[2].y + p[3].y) / 8};
}

}  // namespace vorel::report
