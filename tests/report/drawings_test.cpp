#include "report/drawings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "oracle/net_builder.h"
#include "oracle/random_stg.h"
#include "report/svg_text.h"
#include "support/process_builder.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::report {
namespace {

struct Box {
  double x, y, width, height;
  bool has_near(double px, double py) const {
    constexpr double reach = 4;
    return x - reach <= px && px <= x + width + reach && y - reach <= py &&
           py <= y + height + reach;
  }
};

// What a group with a title is, element by element.
struct Group {
  std::string classes, title, body;
};

// What stands behind `start` and before `end`, if both are there.
std::string between(const std::string& text, const std::string& start, const std::string& end) {
  const std::size_t at = text.find(start);
  if (at == std::string::npos) return "";
  const std::size_t from = at + start.size();
  return text.substr(from, text.find(end, from) - from);
}

// Each in a line of its own.
std::vector<Group> groups_of(const std::string& svg) {
  std::vector<Group> groups;
  std::istringstream lines(svg);
  for (std::string line; std::getline(lines, line);) {
    const std::string title = between(line, "<title>", "</title>");
    if (line.starts_with("<g ") && !title.empty())
      groups.push_back({between(line, "class=\"", "\""), title, between(line, "</title>", "</g>")});
  }
  return groups;
}

std::string attribute(const std::string& text, const std::string& name) {
  return between(text, " " + name + "=\"", "\"");
}

std::vector<double> numbers_of(std::string text) {
  std::ranges::replace_if(
      text, [](char c) { return c == 'M' || c == 'C'; }, ' ');
  std::istringstream stream(text);
  std::vector<double> numbers;
  for (double number; stream >> number;) numbers.push_back(number);
  return numbers;
}

Box box_of(const std::string& body) {
  const auto number = [&](const char* name) { return std::stod(attribute(body, name)); };
  const double r = body.starts_with("<circle") ? number("r") : 0;
  if (r > 0) return {number("cx") - r, number("cy") - r, 2 * r, 2 * r};
  return {number("x"), number("y"), number("width"), number("height")};
}

std::string unescaped_name(const net::StgTransition& transition) {
  constexpr std::array<const char*, 4> kinds = {"input", "output", "internal", "dummy"};
  const auto kind = static_cast<std::size_t>(transition.signal->kind);
  return escaped(transition.name + " (" + kinds[kind] + ")");
}

// From the nodes that a place comes from to those that it leads to, whichever way arcs are laid
// out.
TEST(StgDrawing, ArcsLeadFromProducersToConsumers) {
  const support::TemporaryFolder folder;
  const support::Seeds seeds = support::seeds(25);
  for (std::uint64_t seed = seeds.first; seed < seeds.end; ++seed) {
    const net::Stg stg = oracle::random_stg(seed, {.dummies = seed % 2 == 0, .toggles = true});
    const Drawing drawing = draw_stg(stg);
    EXPECT_EQ(drawing.svg, draw_stg(stg).svg) << "twice the same";
    folder.write(std::to_string(seed) + ".svg", drawing.svg);
    std::map<std::string, Box> boxes;
    std::multiset<std::string> arcs;
    const std::vector<Group> groups = groups_of(drawing.svg);
    for (const Group& group : groups) {
      if (group.classes.starts_with("node"))
        boxes[group.title] = box_of(group.body);
      else
        arcs.insert(group.title);
    }
    for (const auto& transition : stg.transitions)
      EXPECT_TRUE(boxes.contains(unescaped_name(*transition))) << transition->name;
    for (const auto& place : stg.places) {
      const bool is_node = boxes.contains(escaped(place->name));
      // One line for both arcs of a transition that only reads.
      const auto readers =
          static_cast<std::size_t>(std::ranges::count_if(place->preset, [&](const auto* t) {
            return std::ranges::find(place->postset, t) != place->postset.end();
          }));
      EXPECT_EQ(arcs.count(escaped(place->name)),
                is_node ? place->preset.size() + place->postset.size() - readers : 1u)
          << "seed " << seed << ' ' << place->name;
      for (const Group& group : groups) {
        if (group.title != escaped(place->name) || group.classes != "edge") continue;
        const std::vector<double> curve = numbers_of(attribute(group.body, "d"));
        const std::vector<double> head = numbers_of(attribute(group.body, "points"));
        ASSERT_GE(curve.size(), 8u);
        if (head.size() != 6) {
          EXPECT_GT(readers, 0u) << "the arc has a direction";
          continue;
        }
        const auto is_at = [&](const auto& transitions, double x, double y) {
          return std::ranges::any_of(transitions, [&](const auto* t) {
            return boxes.at(unescaped_name(*t)).has_near(x, y);
          });
        };
        const auto is_at_place = [&](double x, double y) {
          return is_node && boxes.at(group.title).has_near(x, y);
        };
        EXPECT_TRUE(is_at(place->preset, curve[0], curve[1]) || is_at_place(curve[0], curve[1]));
        EXPECT_TRUE(is_at(place->postset, head[0], head[1]) || is_at_place(head[0], head[1]));
      }
      const bool has_token = std::ranges::any_of(groups, [&](const Group& group) {
        return group.title == escaped(place->name) &&
               group.body.find("\"token\"") != std::string::npos;
      });
      EXPECT_EQ(has_token, place->initial_marking > 0) << place->name;
    }
  }
  const auto run = support::run_program({"/bin/sh", "-c", "xmllint --noout *.svg"},
                                        {.directory = folder.path()});
  EXPECT_EQ(run.exit_code, 0) << run.err;
}

TEST(PrefixDrawing, CutOffsAreDashedAndCoresCounted) {
  support::ProcessBuilder<net::StgPrefix> b;
  auto &p = b.condition("p"), &q = b.condition("q"), &r = b.condition("r");
  b.event("i.a+", {&p}, {&q});
  b.event("O.x+", {&q}, {&r});
  b.event("i.a-", {&r}, {&b.condition("p")}, true);
  const net::StgPrefix& prefix = b.finish();
  const std::string svg = draw_prefix(prefix, {1, 5, 0}).svg;
  std::map<std::string, std::string> body;
  for (const Group& group : groups_of(svg)) body[group.title] = group.body;
  const auto classes = [&](const std::string& title) { return attribute(body[title], "class"); };
  EXPECT_EQ(classes("event 0: i.a+, in 1 conflict core"), "border core1");
  EXPECT_EQ(classes("event 1: O.x+, in 5 conflict cores"), "border core5");
  EXPECT_EQ(classes("event 2: i.a-, cut-off"), "border cut-off");
  EXPECT_EQ(body.size(), 6u) << svg;
  EXPECT_NE(svg.find("in 1 to 5 conflict cores"), std::string::npos);
  EXPECT_EQ(draw_prefix(prefix, {}).svg.find("core"), std::string::npos);
}

TEST(PrefixDrawing, WhatIsTooLargeIsSummarised) {
  support::ProcessBuilder<net::StgPrefix> b;
  auto* last = &b.condition("p");
  for (std::size_t i = 0; i <= most_drawn_events; ++i) {
    auto& next = b.condition("p");
    b.event("O.x+", {last}, {&next});
    last = &next;
  }
  const Drawing drawing = draw_prefix(b.finish(), {});
  EXPECT_EQ(drawing.svg, "");
  EXPECT_EQ(drawing.alternative,
            "Prefix with 401 events, 0 cut-offs and 402 conditions, too large to be drawn.");
}

TEST(SvgText, NamesOfAnyBytesCanBeShown) {
  struct Row {
    std::string name, printable, at_most_9;
  };
  const Row rows[] = {
      {"<a&\"'", "<a&\"'", "<a&\"'"},
      {"a\nb", "a\\x0Ab", "a\\x0Ab"},
      {std::string(1, '\0'), "\\x00", "\\x00"},
      {"\xC3\xA4+", "\xC3\xA4+", "\xC3\xA4+"},
      {"\xC3", "\\xC3", "\\xC3"},
      {"\xC0\xAF\xED\xA0\x80", "\\xC0\\xAF\\xED\\xA0\\x80", "\\xC0\\\u2026x80"},
      {"x\u202Ey", "x\\u202Ey", "x\\u202Ey"},
      {"acknowledge+/12", "acknowledge+/12", "ackno\u2026/12"},
      {"\u6F22\u6F22\u6F22\u6F22\u6F22+", "\u6F22\u6F22\u6F22\u6F22\u6F22+",
       "\u6F22\u6F22\u2026\u6F22+"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(printable(row.name), row.printable);
    EXPECT_EQ(shortened(row.printable, 9), row.at_most_9);
    EXPECT_LE(column_count(shortened(row.printable, 9)), 9u);
  }
  EXPECT_EQ(escaped("<a&\"'>"), "&lt;a&amp;&quot;&#39;&gt;");
}

}  // namespace
}  // namespace vorel::report
