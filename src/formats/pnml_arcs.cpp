#include "formats/pnml_arcs.h"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <string>

#include "base/messages.h"

namespace vorel::formats::pnml {
namespace {

struct Arc {
  std::uint32_t source, target;  // numbers of nodes

  friend auto operator<=>(const Arc&, const Arc&) = default;
};

class ArcReader {
 public:
  ArcReader(const XmlNode& page, const PageNodes& nodes, Producers producers)
      : page_{page}, nodes_{nodes} {
    arcs_.reserve(nodes.arc_count());
    if (producers == Producers::at_most_one) producer_.assign(nodes.size(), base::no_index);
  }

  std::optional<PageArcs> run() {
    if (!read_all()) return std::nullopt;
    PageArcs arcs = sorted_by_source();
    if (has_repetitions(arcs)) {
      drop_repetitions();
      arcs = sorted_by_source();
      assert(!has_repetitions(arcs));
    }
    arcs.in_degree.assign(nodes_.size(), 0);
    for (const std::uint32_t target : arcs.target) ++arcs.in_degree[target];
    return arcs;
  }

 private:
  bool read_all();
  bool read(const XmlNode& element);
  bool is_second_producer(const Arc& arc);
  void report_fault(const XmlNode& element) const;
  void report_misplaced(std::uint32_t source, std::uint32_t target) const;
  PageArcs sorted_by_source() const;
  bool has_repetitions(const PageArcs& arcs) const;
  void drop_repetitions();

  const XmlNode& page_;
  const PageNodes& nodes_;
  std::vector<Arc> arcs_;                // in document order
  std::vector<std::uint32_t> producer_;  // of each node so far; empty if any number may be
};

bool ArcReader::read_all() {
  for (const XmlNode* node = page_.first_node(); node != nullptr; node = node->next_sibling()) {
    if (name_of(*node) != "arc" || read(*node)) continue;
    drop_repetitions();  // whose warnings come before the error
    report_fault(*node);
    return false;
  }
  return true;
}

// Says nothing of a fault: what is wrong is found out afterwards.
bool ArcReader::read(const XmlNode& element) {
  const XmlAttribute* const source = attribute(element, "source");
  const XmlAttribute* const target = attribute(element, "target");
  if (source == nullptr || target == nullptr) return false;
  const Arc arc{nodes_.find(value_of(*source)), nodes_.find(value_of(*target))};
  if (arc.source == base::no_index || arc.target == base::no_index) return false;
  if (nodes_[arc.source].is_place == nodes_[arc.target].is_place) return false;
  if (is_second_producer(arc)) return false;
  arcs_.push_back(arc);
  return true;
}

bool ArcReader::is_second_producer(const Arc& arc) {
  if (producer_.empty() || nodes_[arc.source].is_place) return false;
  std::uint32_t& producer = producer_[arc.target];
  if (producer == base::no_index) producer = arc.source;
  return producer != arc.source;
}

void ArcReader::report_fault(const XmlNode& element) const {
  const XmlAttribute* const source = require_attribute(element, "source");
  const XmlAttribute* const target =
      source == nullptr ? nullptr : require_attribute(element, "target");
  if (target == nullptr) return;
  for (const XmlAttribute* end : {source, target}) {
    if (nodes_.find(value_of(*end)) == base::no_index) return report_undeclared(value_of(*end));
  }
  report_misplaced(nodes_.find(value_of(*source)), nodes_.find(value_of(*target)));
}

void ArcReader::report_misplaced(std::uint32_t source, std::uint32_t target) const {
  assert(source != base::no_index && target != base::no_index);
  const std::string from(nodes_.id(source)), to(nodes_.id(target));
  if (nodes_[source].is_place == nodes_[target].is_place) {
    base::print_error("arc \"" + from + "\" --> \"" + to + "\" must link a place and a transition");
  } else {
    assert(producer_[target] != base::no_index && producer_[target] != source);
    const std::string other(nodes_.id(producer_[target]));
    base::print_error("place \"" + to + "\" has two producers: \"" + other + "\" and \"" + from +
                      "\"");
  }
}

PageArcs ArcReader::sorted_by_source() const {
  PageArcs sorted;
  // Counts go two places up, so that filling leaves each row's beginning where it belongs.
  sorted.first.assign(std::size_t{nodes_.size()} + 2, 0);
  for (const Arc& arc : arcs_) ++sorted.first[arc.source + 2];
  std::partial_sum(sorted.first.begin(), sorted.first.end(), sorted.first.begin());
  sorted.target.resize(arcs_.size());
  for (const Arc& arc : arcs_) sorted.target[sorted.first[arc.source + 1]++] = arc.target;
  sorted.first.pop_back();
  assert(sorted.first.back() == arcs_.size());
  for (std::uint32_t source = 0; source < nodes_.size(); ++source) {
    const auto begin = sorted.target.begin() + sorted.first[source];
    const auto end = sorted.target.begin() + sorted.first[source + 1];
    if (!std::is_sorted(begin, end)) std::sort(begin, end);
  }
  return sorted;
}

bool ArcReader::has_repetitions(const PageArcs& arcs) const {
  for (std::uint32_t source = 0; source < nodes_.size(); ++source) {
    const auto targets = arcs.targets_of(source);
    if (std::ranges::adjacent_find(targets) != targets.end()) return true;
  }
  return false;
}

// Repetitions are rare: only when there are any, the arcs are sorted to tell which they are.
void ArcReader::drop_repetitions() {
  std::vector<std::uint32_t> order(arcs_.size());
  std::iota(order.begin(), order.end(), 0u);
  std::ranges::stable_sort(order, {}, [this](std::uint32_t i) { return arcs_[i]; });
  std::vector<bool> is_repetition(arcs_.size());
  for (std::size_t i = 1; i < order.size(); ++i) {
    is_repetition[order[i]] = arcs_[order[i]] == arcs_[order[i - 1]];
  }
  std::vector<Arc> kept;
  for (std::size_t i = 0; i < arcs_.size(); ++i) {
    if (is_repetition[i]) {
      base::print_warning(std::string("ignoring duplicate arc: ")
                              .append(nodes_.id(arcs_[i].source))
                              .append(" --> ")
                              .append(nodes_.id(arcs_[i].target)));
    } else {
      kept.push_back(arcs_[i]);
    }
  }
  assert(kept.size() <= arcs_.size());
  arcs_.swap(kept);
}

}  // namespace

std::optional<PageArcs> read_arcs(const XmlNode& page, const PageNodes& nodes,
                                  Producers producers) {
  return ArcReader(page, nodes, producers).run();
}

}  // namespace vorel::formats::pnml
