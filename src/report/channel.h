// report/channel.h - one channel of a schematic: which net's trunk stands on which track.
// Here:      the nets' terminals on both sides, the order of the trunks, tracks.
// Not here:  how wires get from channel to channel (report/channel_router.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vorel::report {

// What comes to the channel from the column on its left or from that on its right.
struct Terminal {
  double y = 0;
  std::uint32_t node = 0;  // base::no_index: a wire that passes the column
};

// An upright piece of wire with what it connects. Without a length it is a level wire.
struct Trunk {
  std::uint32_t net = 0;
  std::vector<Terminal> left, right;
  std::vector<double> links;  // where it is connected with the other trunk of its net
  std::size_t track = 0;
  double low = 0, high = 0;

  bool is_level() const { return low == high; }
};

class Channel {
 public:
  void add_left(std::uint32_t net, Terminal terminal) { add(trunk_of(net).left, terminal); }
  void add_right(std::uint32_t net, Terminal terminal) { add(trunk_of(net).right, terminal); }

  // Then tracks and lengths are known, and a net has two trunks if there was no other way: the
  // first has its terminals on the left, the second those on the right.
  void assign_tracks();
  std::size_t track_count() const { return track_count_; }
  const std::vector<Trunk>& trunks() const { return trunks_; }

 private:
  Trunk& trunk_of(std::uint32_t net);
  static void add(std::vector<Terminal>& list, Terminal terminal);
  bool must_be_left_of(const Trunk& a, const Trunk& b) const;
  bool order_trunks(std::vector<std::size_t>& order) const;
  void split_one(const std::vector<std::size_t>& ordered);
  double free_level(const Trunk& trunk) const;
  std::size_t first_track(const Trunk& trunk, const std::vector<std::size_t>& before) const;

  std::vector<Trunk> trunks_;
  std::size_t track_count_ = 0;
};

}  // namespace vorel::report
