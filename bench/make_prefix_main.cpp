// bench/make_prefix_main.cpp - writes a big prefix, of which the deadlock answer is known.
// Usage: make_prefix EVENTS net|stg FILE.pnml|FILE.mci [deadlock]
#include <charconv>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "bench/make_prefix.h"

namespace vorel::bench {
namespace {

constexpr std::uint64_t most_events = 100'000'000;

struct Order {
  std::uint64_t events = 0;
  NetKind kind = NetKind::net;
  std::string file_name;
  bool is_mci = false, with_deadlock = false;
};

std::optional<Order> order_from(int argc, const char* const* argv) {
  if (argc != 4 && argc != 5) return std::nullopt;
  Order order;
  const std::string_view number = argv[1], kind = argv[2];
  const auto [end, error] = std::from_chars(number.begin(), number.end(), order.events);
  if (error != std::errc{} || end != number.end() || order.events > most_events)
    return std::nullopt;
  if (kind != "net" && kind != "stg") return std::nullopt;
  order.kind = kind == "stg" ? NetKind::stg : NetKind::net;
  order.file_name = argv[3];
  order.is_mci = order.file_name.ends_with(".mci");
  if (!order.is_mci && !order.file_name.ends_with(".pnml")) return std::nullopt;
  order.with_deadlock = argc == 5;
  if (order.with_deadlock && argv[4] != std::string_view("deadlock")) return std::nullopt;
  return order;
}

bool write(const Order& order) {
  const PrefixFamily family(standard_templates(order.with_deadlock), order.events);
  std::ofstream out(order.file_name, std::ios::binary);
  if (order.is_mci) {
    write_mci(family, order.kind, out);
  } else {
    write_pnml(family, order.kind, out);
  }
  out.close();
  if (!out) return false;
  const auto& sizes = family.sizes();
  std::printf("%s: |B|=%llu |E|=%llu |C|=%llu, %s\n", order.file_name.c_str(),
              static_cast<unsigned long long>(sizes.conditions),
              static_cast<unsigned long long>(sizes.events),
              static_cast<unsigned long long>(sizes.cut_offs),
              order.with_deadlock ? "with a deadlock" : "deadlock-free");
  return true;
}

}  // namespace
}  // namespace vorel::bench

int main(int argc, char** argv) {
  const auto order = vorel::bench::order_from(argc, argv);
  if (!order) {
    std::fprintf(stderr, "usage: make_prefix EVENTS net|stg FILE.pnml|FILE.mci [deadlock]\n");
    return 2;
  }
  if (vorel::bench::write(*order)) return 0;
  std::fprintf(stderr, "cannot write %s\n", order->file_name.c_str());
  return 1;
}
