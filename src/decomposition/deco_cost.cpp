#include "decomposition/deco_cost.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <tuple>
#include <vector>

#include "base/messages.h"
#include "base/run_state.h"
#include "bdd/cover_bdd.h"

namespace vorel::decomposition {
namespace {

constexpr int verbosity_of_costs = 3;
constexpr double largest_area = 1e12;  // that still fits above bit 23

double literal_area(const bdd::Bdd& function, const DecoSetting& setting) {
  return setting.library.literal_area(setting.literal_count(function));
}

double area_of(const Subfunction& part, const DecoSetting& setting) {
  return part.is_gate() ? area_of(part.match, setting.library)
                        : literal_area(part.function, setting);
}

// Of what is between the sub-functions and the signal.
double top_area(const Deco& deco, const DecoSetting& setting) {
  return deco.kind == DecoKind::collapsed ? literal_area(deco.collapsed, setting)
                                          : area_of(deco.gate, setting.library);
}

// With a new signal for the sub-function, the others merged into the signal's function.
bool reduces_literals(const Deco& deco, std::size_t part, const DecoSetting& setting) {
  return setting.literal_count(next_value(deco, part, setting.first_free_variable)) < deco.literals;
}

// Whether the gate and all that is not settled are one gate of what is settled: nothing of it needs
// to be split.
bool is_one_gate(const Deco& deco, const DecoSetting& setting) {
  std::vector<bdd::Bdd> inputs;
  bool is_settled = true;
  std::uint32_t free = setting.first_free_variable;
  for (const Subfunction& part : deco.subfunctions) {
    is_settled = is_settled && (part.is_constant() || part.is_settled());
    const bool stays = part.is_trivial() || !part.is_settled();
    inputs.push_back(stays ? part.function : bdd::bdd_variable(free++));
  }
  return is_settled || setting.has_gate(bdd::compose(deco.shape, inputs));
}

double non_splittable_area(const Deco& deco, const DecoSetting& setting) {
  if (deco.directly_implementable) return 0;
  if (deco.kind != DecoKind::collapsed && is_one_gate(deco, setting)) return 0;
  double area = top_area(deco, setting);
  for (const Subfunction& part : deco.subfunctions)
    if (!part.is_constant() && !part.is_settled()) area += area_of(part, setting);
  return area;
}

double non_mappable_area(const Deco& deco, const DecoSetting& setting) {
  double area = deco.kind == DecoKind::collapsed ? literal_area(deco.collapsed, setting) : 0;
  for (const Subfunction& part : deco.subfunctions)
    if (!part.is_gate()) area += literal_area(part.function, setting);
  return area;
}

double total_area(const Deco& deco, const DecoSetting& setting) {
  double area = top_area(deco, setting);
  for (const Subfunction& part : deco.subfunctions)
    if (!part.is_constant()) area += area_of(part, setting);
  return area;
}

void print(const Deco& deco, const DecoCost& cost, const DecoSetting& setting) {
  std::cerr << "\n Evaluating the cost of decomposition\n"
            << to_string(deco, setting.library, setting.names);
  base::print_formatted(
      std::cerr,
      "\n\tnot directly implementable=%d\n\tchosen not expected=%d\n\tnot reduced literals=%d"
      "\n\tnot local=%d\n\tnon-splittable area=%g\n\textra acknowledgements=%llu"
      "\n\tnon-mappable area=%g\n\tinsertion cost=%llu\n\ttotal area=%g",
      cost.not_directly_implementable, cost.chosen_not_expected, cost.not_reduced_literals,
      cost.not_local, cost.non_splittable_area, static_cast<unsigned long long>(cost.extra_acks),
      cost.non_mappable_area, static_cast<unsigned long long>(cost.insertion_cost),
      cost.total_area);
}

}  // namespace

double DecoCost::value(double inverter_area) const {
  const double unit = inverter_area > 0 ? inverter_area : 1;
  const auto field = [](std::uint64_t number, int lowest_bit) { return number << lowest_bit; };
  // The area of literals may be negative (GateLibrary::literal_area), that of gates anything.
  const auto whole = [](double area, double most) {
    return static_cast<std::uint64_t>(std::clamp(area, 0.0, most));
  };
  const std::uint64_t key = field(not_directly_implementable, 31) + field(chosen_not_expected, 30) +
                            field(not_reduced_literals, 29) + field(not_local, 28) +
                            field(whole(non_splittable_area, largest_area), 23) +
                            field(std::min<std::uint64_t>(extra_acks, 7), 20) +
                            field(whole(2 * non_mappable_area / unit, 31), 15);
  return static_cast<double>(key) + 0.1 * static_cast<double>(insertion_cost) +
         2 * total_area / unit;
}

DecoCost cost_of(const Deco& deco, const DecoSetting& setting) {
  assert(deco.useful);
  DecoCost cost;
  cost.not_directly_implementable = !deco.directly_implementable;
  cost.not_local = !deco.is_local();
  if (const Subfunction* const part = deco.chosen_part()) {
    cost.chosen_not_expected = !part->is_settled();
    cost.not_reduced_literals = !reduces_literals(deco, *deco.chosen, setting);
    cost.extra_acks = part->extra_acks();
    cost.insertion_cost = part->insertion->cost / (std::uint64_t{setting.signal_count} + 1);
  }
  cost.non_splittable_area = non_splittable_area(deco, setting);
  cost.non_mappable_area = non_mappable_area(deco, setting);
  cost.total_area = total_area(deco, setting);
  return cost;
}

// With the best insertions a sub-function is settled, delays nothing else and costs nothing.
double least_cost(const Deco& deco, const DecoSetting& setting, LiteralsLeft literals) {
  DecoCost cost;
  bool reduces = literals == LiteralsLeft::ignored;
  cost.not_directly_implementable = deco.kind == DecoKind::collapsed;
  for (std::size_t i = 0; i < deco.subfunctions.size(); ++i) {
    if (!deco.must_be_inserted(deco.subfunctions[i])) continue;
    cost.not_directly_implementable = true;
    reduces = reduces || reduces_literals(deco, i, setting);
  }
  cost.not_reduced_literals = cost.not_directly_implementable && !reduces;
  if (deco.kind == DecoKind::collapsed) cost.non_splittable_area = top_area(deco, setting);
  cost.non_mappable_area = non_mappable_area(deco, setting);
  cost.total_area = total_area(deco, setting);
  return cost.value(setting.library.inverter_area());
}

void rate(Deco& deco, const DecoSetting& setting) {
  deco.judge();
  deco.degraded = false;
  deco.cost = -1;
  if (!deco.useful) {
    deco.cost = useless_cost;
    return;
  }
  const DecoCost cost = cost_of(deco, setting);
  deco.degraded = cost.not_reduced_literals;
  if (base::verbosity() >= verbosity_of_costs) print(deco, cost, setting);
  deco.cost = cost.value(setting.library.inverter_area());
}

bool is_preferred(const RatedDeco& candidate, const RatedDeco& best) {
  const auto order = [](const RatedDeco& rated) {
    const Subfunction& part = *rated.deco->chosen_part();
    return std::make_tuple(!part.is_settled(), ~rated.gate_literals, !rated.deco->is_local(),
                           part.extra_acks(), rated.deco->cost);
  };
  return order(candidate) < order(best);
}

}  // namespace vorel::decomposition
