#include "report/channel_router.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include "base/ptr_list.h"
#include "report/channel.h"

namespace vorel::report {
namespace {

constexpr double track_gap = 9, first_gap = 14, last_gap = 17, least_channel = 34;
constexpr double pass_distance = 7;  // of a wire from nodes and wires that it passes
constexpr double longest_step = 16;  // of a node, to make a wire straight
constexpr double margin = 4;

// Where the curve first comes to `x`; nullopt if it does not.
std::optional<double> height_at(const Curve& curve, double x) {
  constexpr int steps = 16;
  Point before = curve.points.front();
  for (std::size_t i = 0; i + 3 < curve.points.size(); i += 3) {
    const Point* const p = &curve.points[i];
    for (int step = 1; step <= steps; ++step) {
      const double t = double{1} * step / steps, s = 1 - t;
      const double a = s * s * s, b = 3 * s * s * t, c = 3 * s * t * t, d = t * t * t;
      const Point now{a * p[0].x + b * p[1].x + c * p[2].x + d * p[3].x,
                      a * p[0].y + b * p[1].y + c * p[2].y + d * p[3].y};
      if ((before.x <= x && x <= now.x) || (now.x <= x && x <= before.x)) return now.y;
      before = now;
    }
  }
  return std::nullopt;
}

class ChannelRouter {
 public:
  ChannelRouter(std::span<const GraphNode> nodes, const GraphLayout& layout,
                std::span<const NetToRoute> nets)
      : nodes_{nodes}, layout_{layout}, nets_{nets} {}

  Wiring run() {
    find_columns();
    straighten();
    for (std::uint32_t net = 0; net < nets_.size(); ++net)
      for (const NetSink& sink : nets_[net].sinks) connect(net, sink);
    for (Channel& channel : channels_) channel.assign_tracks();
    place_columns();
    wiring_.routes.resize(nets_.size());
    for (std::size_t i = 0; i < channels_.size(); ++i)
      for (const Trunk& trunk : channels_[i].trunks()) draw(trunk, i);
    move_into_view();
    return std::move(wiring_);
  }

 private:
  struct Pass {
    std::uint32_t net;
    double y;
  };
  struct Column {
    double centre;  // in the layout
    double left = 0, width = 0;
    std::vector<std::uint32_t> nodes;
    std::vector<Pass> passes;
  };

  double row(std::uint32_t node) const { return rows_[node]; }

  void find_columns() {
    std::map<long, std::vector<std::uint32_t>> by_centre;
    for (std::uint32_t i = 0; i < nodes_.size(); ++i)
      by_centre[std::lround(layout_.centres[i].x)].push_back(i);
    column_of_.resize(nodes_.size());
    for (auto& [centre, members] : by_centre) {
      Column column{static_cast<double>(centre), 0, 0, std::move(members), {}};
      for (const std::uint32_t node : column.nodes) {
        column_of_[node] = columns_.size();
        column.width = std::max(column.width, nodes_[node].width);
      }
      columns_.push_back(std::move(column));
    }
    channels_.resize(columns_.size() + 1);
    for (const Point& centre : layout_.centres) rows_.push_back(centre.y);
  }

  // Moves nodes a little where that makes a wire level that comes to them; those that no wire comes
  // to, where it makes one level that leaves them.
  void straighten() {
    std::vector<std::optional<double>> arriving(nodes_.size()), leaving(nodes_.size());
    const auto keep_least = [](std::optional<double>& step, double other) {
      if (!step || std::abs(other) < std::abs(*step)) step = other;
    };
    for (const Column& column : columns_) {
      for (const std::uint32_t node : column.nodes)
        if (arriving[node]) move_node(column, node, *arriving[node]);
      for (const NetToRoute& net : nets_)
        for (const NetSink& sink : net.sinks)
          if (&columns_[column_of_[net.driver]] == &column && sink.node != net.driver)
            keep_least(arriving[sink.node], row(net.driver) - row(sink.node) - sink.offset);
    }
    for (const NetToRoute& net : nets_)
      for (const NetSink& sink : net.sinks)
        keep_least(leaving[net.driver], row(sink.node) + sink.offset - row(net.driver));
    for (std::uint32_t node = 0; node < nodes_.size(); ++node)
      if (leaving[node] && !arriving[node])
        move_node(columns_[column_of_[node]], node, *leaving[node]);
  }

  void move_node(const Column& column, std::uint32_t node, double step) {
    if (std::abs(step) > longest_step) return;
    const bool is_free = std::ranges::none_of(column.nodes, [&](std::uint32_t other) {
      const double distance = (nodes_[node].height + nodes_[other].height) / 2 + 2 * pass_distance;
      return other != node && std::abs(row(node) + step - row(other)) < distance;
    });
    if (is_free) rows_[node] += step;
  }

  // Channel i lies before column i.
  void connect(std::uint32_t net, const NetSink& sink) {
    const std::uint32_t driver = nets_[net].driver;
    const std::size_t from = column_of_[driver], to = column_of_[sink.node];
    const double end = row(sink.node) + sink.offset;
    channels_[from + 1].add_left(net, {row(driver), driver});
    channels_[to].add_right(net, {end, sink.node});
    if (from < to) {
      double y = row(driver);
      for (std::size_t i = from + 1; i < to; ++i) y = pass(net, i, forward_wish(sink, i, y));
      return;
    }
    // Back, beside the driver first and beside the node at last.
    double y = row(driver);
    for (std::size_t i = from + 1; i-- > to;) {
      const bool is_between = i < from && i > to;
      y = pass(net, i, is_between ? wish(sink, i, y) : i == to ? end : y);
    }
  }

  // The way goes straight on if it can, or changes to the row of its end for good.
  double forward_wish(const NetSink& sink, std::size_t column, double y) const {
    const double end = row(sink.node) + sink.offset;
    bool is_end_free = true;
    for (std::size_t i = column; i < column_of_[sink.node]; ++i)
      is_end_free = is_end_free && free_row(columns_[i], end) == end;
    if (is_end_free) return end;
    return free_row(columns_[column], y) == y ? y : wish(sink, column, y);
  }

  double wish(const NetSink& sink, std::size_t column, double otherwise) const {
    if (sink.curve == nullptr) return otherwise;
    return height_at(*sink.curve, columns_[column].centre).value_or(otherwise);
  }

  double pass(std::uint32_t net, std::size_t column, double wish) {
    std::vector<Pass>& passes = columns_[column].passes;
    auto known = std::ranges::find(passes, net, &Pass::net);
    if (known == passes.end())
      known = passes.insert(known, {net, free_row(columns_[column], wish)});
    channels_[column].add_right(net, {known->y, base::no_index});
    channels_[column + 1].add_left(net, {known->y, base::no_index});
    return known->y;
  }

  // As near as can be to the wish.
  double free_row(const Column& column, double wish) const {
    std::vector<std::pair<double, double>> taken;  // from, to
    for (const std::uint32_t node : column.nodes) {
      const double reach = nodes_[node].height / 2 + pass_distance;
      taken.emplace_back(row(node) - reach, row(node) + reach);
    }
    for (const Pass& other : column.passes)
      taken.emplace_back(other.y - pass_distance, other.y + pass_distance);
    std::vector<double> candidates = {wish};
    for (const auto& [from, to] : taken) candidates.insert(candidates.end(), {from, to});
    std::ranges::sort(candidates, {}, [wish](double y) {
      return std::pair{std::abs(y - wish), y};
    });
    const auto is_free = [&taken](double y) {
      return std::ranges::none_of(
          taken, [y](const auto& range) { return range.first < y && y < range.second; });
    };
    const auto found = std::ranges::find_if(candidates, is_free);
    assert(found != candidates.end() && "above all others there is room");
    return *found;
  }

  double channel_width(std::size_t channel) const {
    const std::size_t tracks = channels_[channel].track_count();
    const bool is_outside = channel == 0 || channel == columns_.size();
    const double labels = label_room(channel);
    if (tracks == 0) return is_outside ? labels : std::max(least_channel, labels);
    return std::max(least_channel,
                    first_track(channel) + track_gap * static_cast<double>(tracks - 1) + last_gap);
  }

  // Behind the labels.
  double first_track(std::size_t channel) const { return std::max(first_gap, label_room(channel)); }

  // What the labels of nets that begin in the channel take of it.
  double label_room(std::size_t channel) const {
    double room = 0;
    for (const NetToRoute& net : nets_) {
      if (net.label_width == 0 || column_of_[net.driver] + 1 != channel) continue;
      const double beside = (columns_[channel - 1].width - nodes_[net.driver].width) / 2;
      room = std::max(room, net.label_width - beside);
    }
    return room;
  }

  void place_columns() {
    wiring_.centres.resize(nodes_.size());
    double x = 0;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      channel_left_.push_back(x);
      x += channel_width(i);
      columns_[i].left = x;
      for (const std::uint32_t node : columns_[i].nodes)
        wiring_.centres[node] = {x + columns_[i].width / 2, row(node)};
      x += columns_[i].width;
    }
    channel_left_.push_back(x);
    wiring_.width = x + channel_width(columns_.size());
  }

  // A wire that passes a column is drawn with what is right of it.
  double start_of(const Terminal& terminal, std::size_t channel) const {
    if (terminal.node == base::no_index) return columns_[channel - 1].left;
    return wiring_.centres[terminal.node].x + nodes_[terminal.node].width / 2;
  }
  double end_of(const Terminal& terminal, std::size_t channel) const {
    if (terminal.node == base::no_index) return columns_[channel].left;
    return wiring_.centres[terminal.node].x - nodes_[terminal.node].width / 2;
  }

  double track_x(const Trunk& trunk, std::size_t channel) const {
    return channel_left_[channel] + first_track(channel) +
           track_gap * static_cast<double>(trunk.track);
  }

  void draw(const Trunk& trunk, std::size_t channel) {
    NetRoute& route = wiring_.routes[trunk.net];
    if (trunk.is_level()) {
      // It has no track, and no end in the channel.
      assert(trunk.left.size() == 1 && trunk.right.size() == 1);
      route.segments.push_back({{start_of(trunk.left.front(), channel), trunk.low},
                                {end_of(trunk.right.front(), channel), trunk.low}});
      return;
    }
    const double x = track_x(trunk, channel);
    route.segments.push_back({{x, trunk.low}, {x, trunk.high}});
    for (const Terminal& terminal : trunk.left)
      route.segments.push_back({{start_of(terminal, channel), terminal.y}, {x, terminal.y}});
    for (const Terminal& terminal : trunk.right)
      route.segments.push_back({{x, terminal.y}, {end_of(terminal, channel), terminal.y}});
    if (!trunk.links.empty() && trunk.right.empty()) {
      const auto is_other = [&trunk](const Trunk& other) {
        return other.net == trunk.net && other.left.empty();
      };
      const Trunk& other = *std::ranges::find_if(channels_[channel].trunks(), is_other);
      const double level = trunk.links.front();
      route.segments.push_back({{x, level}, {track_x(other, channel), level}});
    }
    add_joints(trunk, x, route);
  }

  static void add_joints(const Trunk& trunk, double x, NetRoute& route) {
    std::map<double, int> pieces;  // by the level at which they come to the trunk
    for (const Terminal& terminal : trunk.left) ++pieces[terminal.y];
    for (const Terminal& terminal : trunk.right) ++pieces[terminal.y];
    for (const double level : trunk.links) ++pieces[level];
    for (const auto& [y, count] : pieces)
      if (count + (y > trunk.low ? 1 : 0) + (y < trunk.high ? 1 : 0) > 2)
        route.joints.push_back({x, y});
  }

  void move_into_view() {
    double top = 0, bottom = 0;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
      const double y = wiring_.centres[i].y, reach = nodes_[i].height / 2;
      top = i == 0 ? y - reach : std::min(top, y - reach);
      bottom = i == 0 ? y + reach : std::max(bottom, y + reach);
    }
    for (const NetRoute& route : wiring_.routes)
      for (const Segment& segment : route.segments) {
        top = std::min({top, segment.from.y, segment.to.y});
        bottom = std::max({bottom, segment.from.y, segment.to.y});
      }
    const Point shift{margin, margin - top};
    const auto move = [shift](Point& point) { point = {point.x + shift.x, point.y + shift.y}; };
    for (Point& centre : wiring_.centres) move(centre);
    for (NetRoute& route : wiring_.routes) {
      for (Segment& segment : route.segments) {
        move(segment.from);
        move(segment.to);
      }
      for (Point& joint : route.joints) move(joint);
    }
    wiring_.width += 2 * margin;
    wiring_.height = bottom - top + 2 * margin;
  }

  const std::span<const GraphNode> nodes_;
  const GraphLayout& layout_;
  const std::span<const NetToRoute> nets_;
  std::vector<Column> columns_;
  std::vector<std::size_t> column_of_;  // by node
  std::vector<double> rows_;            // by node
  std::vector<Channel> channels_;       // before each column, and behind the last
  std::vector<double> channel_left_;
  Wiring wiring_;
};

}  // namespace

Wiring route_wires(std::span<const GraphNode> nodes, const GraphLayout& layout,
                   std::span<const NetToRoute> nets) {
  return ChannelRouter(nodes, layout, nets).run();
}

}  // namespace vorel::report
