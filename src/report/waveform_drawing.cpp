#include "report/waveform_drawing.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "report/drawing_style.h"
#include "report/svg_canvas.h"
#include "report/svg_text.h"

namespace vorel::report {
namespace {

using formats::Waveform;
using formats::WaveKind;
using formats::WaveRow;
using formats::WaveStep;

constexpr std::string_view stylesheet =
    R"(.waves .level { fill: none; stroke: var(--kind, var(--ink)); stroke-width: 1.5;
  stroke-linejoin: round; }
.waves .edge { fill: none; stroke: var(--kind, var(--ink)); stroke-width: 3; stroke-linecap: round; }
.waves .void { fill: none; stroke: var(--alarm); stroke-width: 2; stroke-dasharray: 3 2; }
.waves .high { fill: var(--kind-fill, none); stroke: none; }
.waves .grid { fill: none; stroke: var(--quiet); stroke-width: 0.6; stroke-dasharray: 1 3; }
.waves .past { fill: none; stroke: var(--quiet); stroke-width: 0.8; stroke-dasharray: 1 4; }
.waves .band { fill: var(--alarm); opacity: 0.16; }
.waves text.step { font-size: 10px; }
.waves text.silent { font-style: italic; fill: var(--quiet); }
.waves text.panel { font: bold 11px system-ui, sans-serif; fill: var(--quiet); }
)";

constexpr double row_height = 24, level_height = 13, slope = 2;
constexpr double mark_width = 14, mark_height = 9;
constexpr double line_width = 940;  // of names and steps together, where that is enough for both
constexpr double step_letter_width = 6.1, least_step_width = 30;
constexpr double step_line_height = 22, panel_title_height = 18, panel_gap = 8;
constexpr std::size_t most_step_columns = 14;

using Values = std::vector<bool>;  // by row

Values initial_values(const Waveform& waveform) {
  Values values;
  for (const WaveRow& row : waveform.rows) values.push_back(row.initial_value);
  return values;
}

void play(std::span<const WaveStep> steps, Values& values) {
  for (const WaveStep& step : steps)
    if (step.row) values[*step.row] = step.value;
}

// Borders are those of boxes of transitions; wires that are no signals have sharp corners.
net::SignalKind border_of(WaveKind kind) {
  switch (kind) {
    case WaveKind::input:
      return net::SignalKind::input;
    case WaveKind::output:
      return net::SignalKind::output;
    case WaveKind::internal:
      return net::SignalKind::internal;
    case WaveKind::wire:
      break;
  }
  return net::SignalKind::dummy;
}

std::string_view word_of(WaveKind kind) {
  return kind == WaveKind::wire ? "wire" : kind_word(border_of(kind));
}

std::string step_label(const WaveStep& step) {
  return shortened(printable(step.label), most_step_columns);
}

// What is drawn in one go: steps from a column on, with the values before them.
struct Panel {
  std::string title;  // empty: none
  std::span<const WaveStep> steps;
  Values values = {};
  std::size_t start = 0;
  bool has_band = false;  // behind the last step
};

class Painter {
 public:
  Painter(const std::vector<WaveRow>& rows, const std::vector<Panel>& panels)
      : rows_{rows}, panels_{panels} {
    choose_rows();
    measure();
  }

  std::size_t columns() const { return columns_; }
  std::size_t rows_left_out() const { return rows_.size() - shown_.size(); }

  std::string paint(std::string_view title, std::string_view description) {
    for (const Panel& panel : panels_) draw_panel(panel);
    draw_kinds();
    return std::move(canvas_).finish(width_, y_, "waves", title, description);
  }

 private:
  void choose_rows() {
    std::vector<bool> changes(rows_.size(), rows_.size() <= most_rows_at_rest);
    for (const Panel& panel : panels_)
      for (const WaveStep& step : panel.steps)
        if (step.row) changes[*step.row] = true;
    for (std::size_t r = 0; r < rows_.size(); ++r)
      if (changes[r]) shown_.push_back(r);
    // The order of the rows is kept within a kind.
    std::ranges::stable_sort(shown_, {}, [this](std::size_t r) { return rows_[r].kind; });
  }

  void measure() {
    double names = 0;
    for (const std::size_t r : shown_)
      names = std::max(names, label_width(label_of(rows_[r].name)));
    left_ = mark_width + 8 + names + 10;
    step_width_ = least_step_width;
    for (const Panel& panel : panels_)
      for (const WaveStep& step : panel.steps) {
        const auto columns = static_cast<double>(column_count(step_label(step)));
        step_width_ = std::max(step_width_, step_letter_width * columns + 8);
      }
    columns_ = static_cast<std::size_t>(std::max((line_width - left_) / step_width_, 4.0));
    std::size_t widest = 1;
    for (const Panel& panel : panels_)
      widest = std::max(widest, std::min(panel.start + panel.steps.size(), columns_));
    width_ = x_of(widest) + 16;
  }

  double x_of(std::size_t column) const {
    return left_ + step_width_ * static_cast<double>(column);
  }
  double y_of(std::size_t position, bool value) const {
    const double base = y_ + row_height * static_cast<double>(position + 1) - 5;
    return value ? base - level_height : base;
  }
  double bottom() const { return y_ + row_height * static_cast<double>(shown_.size()); }

  void draw_panel(const Panel& panel) {
    if (!panel.title.empty()) {
      canvas_.text({0, y_ + 12}, "panel start", panel.title);
      y_ += panel_title_height;
    }
    Values values = panel.values;
    std::span<const WaveStep> left = panel.steps;
    std::size_t start = panel.start;
    do {
      const std::size_t count = std::min(left.size(), columns_ - start);
      const bool is_last = count == left.size();
      if (is_last && panel.has_band) draw_band(start + count - 1);
      draw_line(left.first(count), values, start, is_last);
      left = left.subspan(count);
      start = 0;
    } while (!left.empty());
    y_ += panel_gap;
  }

  void draw_band(std::size_t column) {
    canvas_.box({x_of(column) + step_width_ / 2, (y_ + bottom() + step_line_height) / 2},
                step_width_, bottom() + step_line_height - y_, 3, "band");
  }

  // As many steps as a line has room for; `values` become those behind them.
  void draw_line(std::span<const WaveStep> steps, Values& values, std::size_t start,
                 bool shows_values) {
    draw_steps(steps, start);
    for (std::size_t position = 0; position < shown_.size(); ++position)
      draw_row(position, steps, values[shown_[position]], start, shows_values);
    play(steps, values);
    y_ = bottom() + step_line_height;
  }

  void draw_steps(std::span<const WaveStep> steps, std::size_t start) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const double x = x_of(start + i) + step_width_ / 2;
      canvas_.line(std::array<Point, 2>{{{x, y_ + 2}, {x, bottom() + 2}}}, "grid");
      canvas_.text({x, bottom() + 14}, steps[i].row ? "step" : "step silent", step_label(steps[i]));
    }
  }

  void draw_row(std::size_t position, std::span<const WaveStep> steps, bool value,
                std::size_t start, bool shows_value) {
    const WaveRow& row = rows_[shown_[position]];
    const net::SignalKind border = border_of(row.kind);
    canvas_.begin_group(kind_word(border), std::string{word_of(row.kind)} + " " + row.name);
    const double middle = y_of(position, false) - level_height / 2;
    draw_border(canvas_, border, {mark_width / 2 + 1, middle}, mark_width, mark_height);
    canvas_.text({mark_width + 8, middle + text_height}, "start", label_of(row.name));
    if (start > 0)
      canvas_.line(std::array<Point, 2>{{{left_, y_of(position, value)},
                                         {x_of(start), y_of(position, value)}}},
                   "past");
    draw_level(position, steps, value, start);
    if (shows_value) {
      const double end = x_of(start + std::max(steps.size(), std::size_t{1}));
      canvas_.text({end + 8, middle + 3}, "small", value_after(position, steps, value) ? "1" : "0");
    }
    canvas_.end_group();
  }

  bool value_after(std::size_t position, std::span<const WaveStep> steps, bool value) const {
    for (const WaveStep& step : steps)
      if (step.row == shown_[position]) value = step.value;
    return value;
  }

  // The line itself, what lies below it where it is high, and the edges on top. An edge to the
  // value that is there already is dashed.
  void draw_level(std::size_t position, std::span<const WaveStep> steps, bool value,
                  std::size_t start) {
    std::vector<Point> level{{x_of(start), y_of(position, value)}};
    std::vector<std::array<Point, 2>> edges, void_edges;
    for (std::size_t i = 0; i < steps.size(); ++i) {
      if (steps[i].row != shown_[position]) continue;
      const double x = x_of(start + i) + step_width_ / 2;
      const std::array<Point, 2> edge{{{x - slope, y_of(position, !steps[i].value)},
                                       {x + slope, y_of(position, steps[i].value)}}};
      if (steps[i].value == value) {
        void_edges.push_back(edge);
        continue;
      }
      edges.push_back(edge);
      level.insert(level.end(), edges.back().begin(), edges.back().end());
      value = !value;
    }
    // The state alone, where there are no steps.
    const std::size_t end = start + std::max(steps.size(), std::size_t{1});
    level.push_back({x_of(end), y_of(position, value)});
    std::vector<Point> area = level;
    area.push_back({x_of(end), y_of(position, false)});
    area.push_back({x_of(start), y_of(position, false)});
    canvas_.polygon(area, "high");
    canvas_.line(level, "level");
    for (const std::array<Point, 2>& edge : edges) canvas_.line(edge, "edge");
    for (const std::array<Point, 2>& edge : void_edges) canvas_.line(edge, "void");
  }

  void draw_kinds() {
    std::vector<LegendItem> items;
    for (const WaveKind kind :
         {WaveKind::input, WaveKind::output, WaveKind::internal, WaveKind::wire}) {
      const auto is_of_kind = [this, kind](std::size_t r) { return rows_[r].kind == kind; };
      if (!std::ranges::any_of(shown_, is_of_kind)) continue;
      items.push_back(kind_sample(border_of(kind)));
      items.back().text = word_of(kind);
    }
    const bool is_of_kinds = std::ranges::any_of(
        shown_, [this](std::size_t r) { return rows_[r].kind != WaveKind::wire; });
    if (is_of_kinds) draw_legend(canvas_, items, width_, y_);
  }

  const std::vector<WaveRow>& rows_;
  const std::vector<Panel>& panels_;
  std::vector<std::size_t> shown_;  // rows, from above
  double left_ = 0, step_width_ = 0, width_ = 0;
  std::size_t columns_ = 0;  // of a line
  double y_ = 0;             // where the next thing begins
  SvgCanvas canvas_;
};

// Leaves the beginning out, if there is too much, and says so in the title.
Panel make_panel(std::string title, const std::vector<WaveStep>& steps, Values values,
                 std::size_t most_steps) {
  Panel panel{.title = std::move(title), .steps = steps, .values = std::move(values)};
  if (steps.empty() && !panel.title.empty()) panel.title += ": no further step";
  if (steps.size() <= most_steps) return panel;
  const std::size_t left_out = steps.size() - most_steps;
  play(panel.steps.first(left_out), panel.values);
  panel.steps = panel.steps.subspan(left_out);
  if (!panel.title.empty()) panel.title += "; ";
  panel.title += "the first " + counted(left_out, "step") + " not drawn";
  return panel;
}

std::string high_rows(const std::vector<WaveRow>& rows, const Values& values) {
  std::vector<std::string> names;
  for (std::size_t r = 0; r < rows.size(); ++r)
    if (values[r]) names.push_back(printable(rows[r].name));
  return names.empty() ? "none" : listed(names);
}

std::string steps_as_text(std::span<const WaveStep> steps) {
  if (steps.empty()) return "no step";
  std::string text;
  for (const WaveStep& step : steps) {
    if (!text.empty()) text += ", ";
    text += printable(step.label);
  }
  return text;
}

std::string of_rows_left_out(std::size_t count) {
  return count == 0 ? "" : " Not drawn: " + counted(count, "row") + " without a change.";
}

}  // namespace

std::string_view waveform_style() { return stylesheet; }

Drawing draw_waveform(const Waveform& waveform, Emphasis emphasis) {
  Values values = initial_values(waveform);
  std::vector<Panel> panels{make_panel("", waveform.steps, values, most_drawn_steps)};
  panels[0].has_band = emphasis == Emphasis::last_step && !waveform.steps.empty();
  Painter painter(waveform.rows, panels);
  Drawing drawing;
  drawing.alternative = "High at the start: " + high_rows(waveform.rows, values) + ". " +
                        counted(waveform.steps.size(), "step") + ": " +
                        steps_as_text(waveform.steps) + ".";
  play(waveform.steps, values);
  drawing.alternative += " High at the end: " + high_rows(waveform.rows, values) + "." +
                         of_rows_left_out(painter.rows_left_out());
  drawing.svg = painter.paint(waveform.title, drawing.alternative);
  return drawing;
}

Drawing draw_waveforms(const Waveform& common, const Waveform& first, const Waveform& second) {
  assert(common.rows.size() == first.rows.size() && common.rows.size() == second.rows.size());
  constexpr std::size_t most_steps = most_drawn_steps / 2;
  const Values start = initial_values(common);
  Values fork = start;
  play(common.steps, fork);
  std::vector<Panel> panels;
  if (!common.steps.empty())
    panels.push_back(make_panel("both traces", common.steps, start, most_steps));
  panels.push_back(make_panel(first.title, first.steps, fork, most_steps));
  panels.push_back(make_panel(second.title, second.steps, fork, most_steps));
  if (!common.steps.empty()) {
    // Behind what they have in common, if they fit in there.
    const std::size_t columns = Painter(common.rows, panels).columns();
    const std::size_t column = panels[0].steps.size() % columns;
    const std::size_t longest = std::max(panels[1].steps.size(), panels[2].steps.size());
    if (column + std::max(longest, std::size_t{1}) <= columns)
      panels[1].start = panels[2].start = column;
  }
  Painter painter(common.rows, panels);
  Drawing drawing;
  drawing.alternative = "High at the start: " + high_rows(common.rows, start) +
                        ". Both traces begin with: " + steps_as_text(common.steps) + ". Then " +
                        printable(first.title) + ": " + steps_as_text(first.steps) + ". Or " +
                        printable(second.title) + ": " + steps_as_text(second.steps) + "." +
                        of_rows_left_out(painter.rows_left_out());
  drawing.svg = painter.paint(common.title, drawing.alternative);
  return drawing;
}

}  // namespace vorel::report
