#include "report/drawings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <regex>
#include <set>
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

std::vector<Group> groups_of(const std::string& svg) {
  static const std::regex group("<g class=\"([^\"]*)\"><title>([^<]*)</title>([^\\n]*)</g>");
  std::vector<Group> groups;
  for (std::sregex_iterator it(svg.begin(), svg.end(), group), end; it != end; ++it)
    groups.push_back({(*it)[1], (*it)[2], (*it)[3]});
  return groups;
}

std::vector<double> numbers_of(const std::string& text) {
  static const std::regex number("-?\\d+(\\.\\d+)?");
  std::vector<double> numbers;
  for (std::sregex_iterator it(text.begin(), text.end(), number), end; it != end; ++it)
    numbers.push_back(std::stod(it->str()));
  return numbers;
}

std::string attribute(const std::string& text, const std::string& name) {
  std::smatch match;
  const std::regex pattern("[ ]" + name + "=\"([^\"]*)\"");
  return std::regex_search(text, match, pattern) ? match[1].str() : "0";
}

Box box_of(const std::string& body) {
  const auto number = [&](const char* name) { return std::stod(attribute(body, name)); };
  const double r = number("r");
  if (r > 0 && body.starts_with("<circle"))
    return {number("cx") - r, number("cy") - r, 2 * r, 2 * r};
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
  const support::Seeds seeds = support::seeds(40);
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
      EXPECT_EQ(arcs.count(escaped(place->name)),
                is_node ? place->preset.size() + place->postset.size() : 1u)
          << "seed " << seed << ' ' << place->name;
      for (const Group& group : groups) {
        if (group.title != escaped(place->name) || group.classes != "edge") continue;
        const std::vector<double> curve = numbers_of(attribute(group.body, "d"));
        const std::vector<double> head = numbers_of(attribute(group.body, "points"));
        ASSERT_TRUE(curve.size() >= 8 && head.size() == 6);
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
      const bool has_token =
          drawing.svg.find("<title>" + escaped(place->name) + "</title>") != std::string::npos &&
          std::ranges::any_of(groups, [&](const Group& group) {
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
  EXPECT_EQ(classes("event 0: a+, in 1 conflict core"), "border core1");
  EXPECT_EQ(classes("event 1: x+, in 5 conflict cores"), "border core5");
  EXPECT_EQ(classes("event 2: a-, cut-off"), "border cut-off");
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
