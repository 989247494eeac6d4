#include "report/waveform_drawing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "support/seeds.h"

namespace vorel::report {
namespace {

using formats::Waveform;
using formats::WaveKind;

Waveform random_waveform(std::mt19937_64& random, std::size_t rows, std::size_t steps) {
  Waveform waveform;
  std::vector<bool> values;
  for (std::size_t r = 0; r < rows; ++r) {
    values.push_back(random() % 2 == 0);
    waveform.rows.push_back({"s" + std::to_string(r), WaveKind(random() % 4), values.back()});
  }
  for (std::size_t i = 0; i < steps; ++i) {
    const std::size_t r = random() % (rows + 1);
    if (r == rows) {
      waveform.steps.push_back({std::nullopt, false, "silent"});
      continue;
    }
    values[r] = !values[r];
    waveform.steps.push_back({r, values[r], waveform.rows[r].name + (values[r] ? "+" : "-")});
  }
  return waveform;
}

// The edges of a picture in the order of its steps, as "s0+", and "silent".
std::vector<std::string> steps_seen(const std::string& svg) {
  struct Edge {
    double x, y;
    std::string text;
  };
  struct Label {
    double x, y;
    std::string text;
  };
  static const std::regex element(
      "<title>\\w+ (\\w+)</title>"
      "|class=\"edge\" points=\"([-.\\d]+) ([-.\\d]+) ([-.\\d]+) ([-.\\d]+)\""
      "|class=\"step[ a-z]*\" x=\"([-.\\d]+)\" y=\"([-.\\d]+)\">([^<]*)<");
  std::vector<Edge> edges;
  std::vector<Label> labels;
  std::string row;
  for (std::sregex_iterator it(svg.begin(), svg.end(), element), end; it != end; ++it) {
    const std::smatch& match = *it;
    const auto number = [&](std::size_t group) { return std::stod(match[group]); };
    if (match[1].matched) {
      row = match[1];
    } else if (match[2].matched) {
      const bool rises = number(5) < number(3);
      edges.push_back({(number(2) + number(4)) / 2, number(3), row + (rises ? "+" : "-")});
    } else {
      labels.push_back({number(6), number(7), match[8]});
    }
  }
  std::vector<std::string> seen;
  for (const Label& label : labels) {
    // Of those at the same place the nearest above the label is in its line.
    const Edge* found = nullptr;
    for (const Edge& edge : edges)
      if (std::abs(edge.x - label.x) < 0.2 && edge.y < label.y &&
          (found == nullptr || edge.y > found->y))
        found = &edge;
    const bool is_of_line = found != nullptr && std::ranges::none_of(labels, [&](const Label& l) {
                              return found->y < l.y && l.y < label.y;
                            });
    seen.push_back(is_of_line ? found->text : "silent");
  }
  return seen;
}

std::vector<std::string> labels_of(const Waveform& waveform) {
  std::vector<std::string> labels;
  for (const auto& step : waveform.steps) labels.push_back(step.label);
  return labels;
}

TEST(WaveformDrawing, ShowsEachStepAsAnEdgeOfItsRowAboveItsLabel) {
  for (auto [seed, end] = support::seeds(40); seed < end; ++seed) {
    std::mt19937_64 random(seed);
    const std::size_t rows = 1 + random() % 30;
    const Waveform waveform = random_waveform(random, rows, random() % 100);
    EXPECT_EQ(steps_seen(draw_waveform(waveform).svg), labels_of(waveform)) << "seed " << seed;
  }
}

TEST(WaveformDrawing, ShowsWhatTwoTracesHaveInCommonOnce) {
  for (auto [seed, end] = support::seeds(40); seed < end; ++seed) {
    std::mt19937_64 random(seed);
    const Waveform whole = random_waveform(random, 4, 40);
    const auto part = [&](std::size_t from, std::size_t to) {
      Waveform waveform = whole;
      waveform.title = "trace";
      waveform.steps.assign(whole.steps.begin() + std::ptrdiff_t(from),
                            whole.steps.begin() + std::ptrdiff_t(to));
      return waveform;
    };
    const std::size_t fork = random() % 30, ends = fork + random() % 10;
    const Drawing drawing = draw_waveforms(part(0, fork), part(fork, ends), part(fork, 40));
    std::vector<std::string> expected = labels_of(part(0, ends));
    const std::vector<std::string> second = labels_of(part(fork, 40));
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(steps_seen(drawing.svg), expected) << "seed " << seed;
  }
}

TEST(WaveformDrawing, LeavesTheBeginningOfALongTraceOutAndSaysSo) {
  std::mt19937_64 random(1);
  const Waveform waveform = random_waveform(random, 3, most_drawn_steps + 7);
  const Drawing drawing = draw_waveform(waveform);
  std::vector<std::string> expected = labels_of(waveform);
  expected.erase(expected.begin(), expected.begin() + 7);
  EXPECT_EQ(steps_seen(drawing.svg), expected);
  EXPECT_NE(drawing.svg.find("the first 7 steps not drawn"), std::string::npos);
}

TEST(WaveformDrawing, LeavesRowsAtRestOutOfManyAndSaysSo) {
  Waveform waveform;
  for (std::size_t r = 0; r <= most_rows_at_rest; ++r)
    waveform.rows.push_back({"s" + std::to_string(r), WaveKind::input, false});
  waveform.steps = {{3, true, "s3+"}};
  const Drawing drawing = draw_waveform(waveform);
  EXPECT_EQ(drawing.svg.find(">s2<"), std::string::npos);
  EXPECT_EQ(steps_seen(drawing.svg), std::vector<std::string>{"s3+"});
  EXPECT_EQ(drawing.alternative,
            "High at the start: none. 1 step: s3+. High at the end: s3. Not drawn: 16 rows without "
            "a change.");
}

}  // namespace
}  // namespace vorel::report
