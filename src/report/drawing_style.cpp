#include "report/drawing_style.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "report/svg_text.h"

namespace vorel::report {
namespace {

constexpr std::string_view stylesheet = R"(.drawing {
  --ink: #1b1f24; --quiet: #6a737d; --paper: #ffffff;
  --input: #b4470f; --output: #0b5cad; --internal: #0f7a4d; --dummy: #6a737d;
  --input-fill: #fdf1ea; --output-fill: #ebf3fc; --internal-fill: #e9f6f0; --dummy-fill: #f3f4f6;
  --core1: #fff0c2; --core2: #ffdf8a; --core3: #ffc85c; --core4: #ffab40; --core5: #fb8c2b;
  --core-ink: #1b1f24;
  display: block; width: 100%; max-width: var(--natural); height: auto;
  font: 12px "DejaVu Sans Mono", ui-monospace, Menlo, Consolas, "Liberation Mono", monospace;
}
@media screen and (prefers-color-scheme: dark) {
  .drawing {
    --ink: #e6e9ed; --quiet: #98a2ad; --paper: #14171b;
    --input: #f2a171; --output: #7db6f2; --internal: #69cfa0; --dummy: #98a2ad;
    --input-fill: #37241a; --output-fill: #172a40; --internal-fill: #14302a;
    --dummy-fill: #24282e;
    --core1: #5c4a12; --core2: #7d6114; --core3: #a87c15; --core4: #d29a1c; --core5: #f5b52e;
    --core-ink: #e6e9ed;
  }
}
.drawing text { fill: var(--ink); text-anchor: middle; stroke: none; }
.drawing text.start { text-anchor: start; }
.drawing text.end { text-anchor: end; }
.drawing text.small { font-size: 9px; fill: var(--quiet); }
.drawing text.halo { paint-order: stroke; stroke: var(--paper); stroke-width: 3px; }
.drawing .arc { fill: none; stroke: var(--quiet); stroke-width: 1.1; }
.drawing .head { fill: var(--quiet); }
.drawing .token { fill: var(--ink); }
.drawing .place { fill: var(--paper); stroke: var(--ink); stroke-width: 1.1; }
.drawing .border { stroke-width: 1.2; }
.drawing .inner { fill: none; stroke-width: 0.9; }
.drawing .input { --kind: var(--input); --kind-fill: var(--input-fill); }
.drawing .output { --kind: var(--output); --kind-fill: var(--output-fill); }
.drawing .internal { --kind: var(--internal); --kind-fill: var(--internal-fill); }
.drawing .dummy { --kind: var(--dummy); --kind-fill: var(--dummy-fill); }
.drawing .border { fill: var(--kind-fill, var(--paper)); stroke: var(--kind, var(--ink)); }
.drawing .inner { stroke: var(--kind, var(--ink)); }
.drawing .output .border { stroke-width: 2.2; }
.drawing .dummy text.label { font-style: italic; }
.drawing .cut-off { stroke-dasharray: 5 3; }
.drawing .core1 { fill: var(--core1); } .drawing .core2 { fill: var(--core2); }
.drawing .core3 { fill: var(--core3); } .drawing .core4 { fill: var(--core4); }
.drawing .core5 { fill: var(--core5); }
.drawing .deep text { fill: #1b1f24; }
.drawing .badge { fill: var(--ink); }
.drawing text.badge-text { fill: var(--paper); font-size: 8px; font-weight: bold; }
.drawing .wire { fill: none; stroke: var(--kind, var(--quiet)); stroke-width: 1.3; stroke-linecap: round; }
.drawing .joint { fill: var(--kind, var(--quiet)); }
.drawing .gate { fill: var(--paper); stroke: var(--ink); stroke-width: 1.4; }
.drawing .bubble { fill: var(--paper); stroke: var(--ink); stroke-width: 1.2; }
.drawing .slow { fill: var(--ink); stroke: var(--ink); stroke-width: 1.2; }
.drawing .pin { stroke: var(--ink); stroke-width: 1.2; }
.drawing text.letter { font-size: 17px; font-weight: bold; }
.drawing .instant { fill: var(--paper); stroke: var(--input); stroke-width: 1.6; }
@media print { .drawing { print-color-adjust: exact; break-inside: avoid; } }
)";

constexpr std::array<std::string_view, net::signal_kind_count> kind_words = {"input", "output",
                                                                             "internal", "dummy"};

}  // namespace

std::string_view drawing_style() { return stylesheet; }

std::string_view kind_word(net::SignalKind kind) {
  return kind_words[static_cast<std::size_t>(kind)];
}

std::string label_of(std::string_view name) {
  return shortened(printable(name), most_label_columns);
}

double label_width(std::string_view label) {
  return letter_width * static_cast<double>(column_count(label));
}

double box_width(std::string_view label) { return std::max(label_width(label) + 16, 26.0); }

void draw_border(SvgCanvas& canvas, net::SignalKind kind, Point centre, double width, double height,
                 std::string_view more_classes) {
  using enum net::SignalKind;
  const double radius = kind == input ? height / 2 : kind == dummy ? 0 : 5;
  std::string classes = "border";
  if (!more_classes.empty()) classes += " " + std::string{more_classes};
  canvas.box(centre, width, height, radius, classes);
  if (kind == internal) canvas.box(centre, width - 5, height - 5, radius - 2, "inner");
}

void draw_arc(SvgCanvas& canvas, const Curve& curve, bool has_arrow) {
  canvas.curve(curve.points, "arc");
  if (has_arrow) canvas.arrowhead(curve.points.back(), curve.tip);
}

LegendItem kind_sample(net::SignalKind kind) {
  constexpr double width = 24;
  const auto draw = [kind](SvgCanvas& canvas, Point middle) {
    canvas.begin_group(kind_word(kind));
    draw_border(canvas, kind, middle, width, 14);
    canvas.end_group();
  };
  return {width, draw, std::string{kind_word(kind)}};
}

void draw_legend(SvgCanvas& canvas, const std::vector<LegendItem>& items, double& width,
                 double& height) {
  constexpr double space = 6, gap = 16, line_height = 20, margin = 4, least_width = 170;
  const auto item_width = [](const LegendItem& item) {
    return item.width + space + small_letter_width * static_cast<double>(item.text.size());
  };
  width = std::max(width, least_width);
  for (const LegendItem& item : items) width = std::max(width, item_width(item) + 2 * margin);
  Point at{margin, height + line_height};
  canvas.begin_group("legend");
  for (const LegendItem& item : items) {
    if (at.x > margin && at.x + item_width(item) + margin > width)
      at = {margin, at.y + line_height};
    item.draw(canvas, {at.x + item.width / 2, at.y});
    canvas.text({at.x + item.width + space, at.y + 3}, "small start", item.text);
    at.x += item_width(item) + gap;
  }
  canvas.end_group();
  height = at.y + line_height / 2;
}

std::string listed(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " and " : ", ";
    text += names[i];
  }
  return text;
}

std::string counted(std::size_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string{noun} + (count == 1 ? "" : "s");
}

}  // namespace vorel::report
