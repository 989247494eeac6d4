#include "decomposition/gate_matcher.h"

#include <algorithm>
#include <cassert>
#include <iostream>

#include "base/hashing.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "bdd/cover_bdd.h"
#include "decomposition/gate_covers.h"
#include "decomposition/pin_choices.h"
#include "decomposition/symmetry_classes.h"

namespace vorel::decomposition {
namespace {

constexpr int verbosity_of_queries = 5, verbosity_of_gates = 6, verbosity_of_renaming = 7;

// To list all matches all codes are looked at, which is for diagnostics only.
constexpr std::size_t most_inputs_to_list = 12;

using Code = std::vector<int>;  // 0 or 1, by input

constexpr bdd::Bdd bdd::BDDCover::*the_sets[] = {&bdd::BDDCover::er_plus, &bdd::BDDCover::qr_plus,
                                                 &bdd::BDDCover::er_minus,
                                                 &bdd::BDDCover::qr_minus};

std::vector<bdd::Bdd> key_of(const bdd::BDDCover& cover, OutputInverter inverter) {
  const bdd::Bdd is_admitted(inverter == OutputInverter::admitted);
  return {cover.er_plus, cover.qr_plus, cover.er_minus, cover.qr_minus, is_admitted};
}

// A signal that changes with the output of a gate, and the other way round.
bdd::BDDCover behind_inverter(const bdd::BDDCover& gate) {
  return {gate.er_minus & gate.qr_minus, gate.qr_minus, gate.er_plus & gate.qr_plus, gate.qr_plus};
}

// Where the query asks for what the gate does not do.
bdd::Bdd failures(const bdd::BDDCover& query, const bdd::BDDCover& gate) {
  bdd::Bdd result(false);
  for (const auto set : the_sets) result |= query.*set & ~(gate.*set);
  return result;
}

// The smallest, where the first input is the most significant digit.
Code first_code(bdd::Bdd set, std::size_t input_count) {
  assert(!set.is_false());
  Code code(input_count, 0);
  for (std::uint32_t i = 0; i < input_count; ++i) {
    const bdd::Bdd input = bdd::bdd_variable(i);
    const bdd::Bdd without = cofactor(set, ~input);
    code[i] = without.is_false() ? 1 : 0;
    set = code[i] == 1 ? cofactor(set, input) : without;
  }
  return code;
}

std::vector<std::uint32_t> earlier_twins(const bdd::BDDCover& covers, std::uint32_t pin_count) {
  std::vector<bdd::Bdd> swapped;
  for (std::uint32_t pin = 0; pin < pin_count; ++pin) swapped.push_back(bdd::bdd_variable(pin));
  std::vector<std::uint32_t> twin;
  for (std::uint32_t pin = 0; pin < pin_count; ++pin) {
    twin.push_back(pin);
    for (std::uint32_t earlier = pin; earlier-- > 0 && twin[pin] == pin;) {
      swap(swapped[pin], swapped[earlier]);
      if (compose(covers, swapped) == covers) twin[pin] = earlier;
      swap(swapped[pin], swapped[earlier]);
    }
  }
  return twin;
}

// Making the text may print diagnostics of its own, which come first.
void tell(const char* title, const std::string& text) { std::cerr << title << text << std::flush; }

bdd::BDDCover behind_inverter_if(bool is_inverted, bdd::BDDCover gate) {
  return is_inverted ? behind_inverter(gate) : gate;
}

// What the choice puts on the pins, where input i is variable_of(i).
template <class VariableOf>
GateMatch match_of(const std::string& gate, const PinChoices::Choice& choice,
                   VariableOf variable_of) {
  GateMatch match{.gate = gate, .inputs = {}, .inverted = choice.is_output_inverted};
  for (const PinChoices::Pin& pin : choice.pins) {
    bdd::Bdd input = pin.is_constant ? bdd::Bdd(pin.input == 1) : variable_of(pin.input);
    match.inputs.push_back(pin.is_inverted ? ~std::move(input) : std::move(input));
  }
  return match;
}

}  // namespace

// What a query asks for at one code.
struct GateMatcher::Demand {
  Code code;
  bool is_in_set[std::size(the_sets)];
};

// A query over inputs that are numbered from 0, and the codes at which choices are tried.
class GateMatcher::Query {
 public:
  Query(const bdd::BDDCover& cover, OutputInverter inverter)
      : variables_{cover.support()}, inverter_{inverter}, edges_{false} {
    std::vector<bdd::Bdd> renaming(variables_.empty() ? 0 : variables_.back() + 1, bdd::Bdd(false));
    for (std::uint32_t i = 0; i < variables_.size(); ++i) {
      renaming[variables_[i]] = bdd::bdd_variable(i);
    }
    cover_ = compose(cover, renaming);
    for (std::uint32_t i = 0; i < variables_.size(); ++i) find_edges(i);
    earlier_alike_.resize(variables_.size());
    for (const std::vector<std::uint32_t>& alike : symmetry_classes(cover_))
      for (std::size_t i = 0; i < alike.size(); ++i)
        earlier_alike_[alike[i]] = alike[i == 0 ? 0 : i - 1];
  }

  const bdd::BDDCover& cover() const { return cover_; }
  OutputInverter inverter() const { return inverter_; }
  std::uint32_t input_count() const { return static_cast<std::uint32_t>(variables_.size()); }
  // Of inputs in one symmetry class each but the first has the one before it.
  const std::vector<std::uint32_t>& earlier_alike() const { return earlier_alike_; }
  // A gate with fewer pins cannot match.
  std::uint32_t needed_inputs() const { return needed_inputs_; }
  bool is_constant() const {
    return (cover_.er_plus.is_false() && cover_.qr_plus.is_false()) ||
           (cover_.er_minus.is_false() && cover_.qr_minus.is_false());
  }

  Demand demand_at(Code code) const {
    Demand demand{.code = std::move(code), .is_in_set = {}};
    for (std::size_t i = 0; i < std::size(the_sets); ++i) {
      demand.is_in_set[i] = (cover_.*the_sets[i]).evaluate(demand.code);
    }
    return demand;
  }

  // What choices are tried with: some edges, then where choices failed so far, of any gate.
  const std::vector<Demand>& demands() const { return demands_; }
  // One of the codes, if possible one that tells much.
  const Demand& add_one_of(const bdd::Bdd& codes) {
    const bdd::Bdd telling = codes & edges_;
    const bdd::Bdd& best = telling.is_false() ? codes : telling;
    return demands_.emplace_back(demand_at(first_code(best, variables_.size())));
  }

  // The input of the query as one of the caller's.
  bdd::Bdd variable(std::uint32_t input) const { return bdd::bdd_variable(variables_[input]); }

 private:
  // Two codes that differ in the input alone, with one value asked for at the one and the other at
  // the other, need the input on a pin.
  void find_edges(std::uint32_t i) {
    const bdd::Bdd input = bdd::bdd_variable(i), no_input = ~input;
    bdd::Bdd edges(false);
    for (const auto& [on, off] : {std::pair{&cover_.er_plus, &cover_.qr_minus},
                                  std::pair{&cover_.qr_plus, &cover_.er_minus}}) {
      edges |= cofactor(*on, input) & cofactor(*off, no_input);
      edges |= cofactor(*on, no_input) & cofactor(*off, input);
    }
    if (edges.is_false()) return;
    ++needed_inputs_;
    edges_ |= edges;
    Code code = first_code(edges, variables_.size());
    for (const int value : {0, 1}) {
      code[i] = value;
      if (std::ranges::find(demands_, code, &Demand::code) == demands_.end()) {
        demands_.push_back(demand_at(code));
      }
    }
  }

  std::vector<std::uint32_t> variables_;  // of the caller, by input
  const OutputInverter inverter_;
  bdd::BDDCover cover_;
  bdd::Bdd edges_;
  std::uint32_t needed_inputs_ = 0;
  std::vector<std::uint32_t> earlier_alike_;
  std::vector<Demand> demands_;
};

GateMatcher::GateMatcher(const GateLibrary& library, const std::vector<std::string>& gates)
    : library_{library} {
  for (const std::string& name : gates) {
    const toolkit::LibraryGate& gate = library.gate(name);
    assert((gates_.empty() || gates_.back().description->area <= gate.area) && "sorted by area");
    number_of_.emplace(name, gates_.size());
    gates_.push_back({.description = &gate, .covers = {}, .earlier_twin = {}, .valid_choices = {}});
    max_inputs_ = std::max(max_inputs_, gate.input_count());
  }
}

std::size_t GateMatcher::SetsHash::operator()(const std::vector<bdd::Bdd>& sets) const {
  std::uint64_t hash = 0;
  for (const bdd::Bdd& set : sets) hash = base::combine_hash(hash, bdd::IdentityHash{}(set));
  return hash;
}

const bdd::BDDCover& GateMatcher::covers(Gate& gate) {
  if (!gate.covers) gate.covers = covers_of(*gate.description);
  return *gate.covers;
}

const bdd::BDDCover& GateMatcher::covers(const std::string& gate) {
  const auto found = number_of_.find(gate);
  assert(found != number_of_.end() && "a gate of the matcher");
  return covers(gates_[found->second]);
}

const bdd::Bdd& GateMatcher::valid_choices(Gate& gate, const Query& query) {
  const std::uint32_t pin_count = gate.description->input_count();
  if (gate.valid_choices.empty()) gate.earlier_twin = earlier_twins(covers(gate), pin_count);
  bdd::Bdd& valid = gate.valid_choices[query.earlier_alike()];
  if (valid.is_null())
    valid =
        PinChoices(pin_count, query.input_count()).valid(gate.earlier_twin, query.earlier_alike());
  return valid;
}

bool GateMatcher::is_admitted(const Gate& gate, const Query& query) const {
  const toolkit::LibraryGate& description = *gate.description;
  if (query.is_constant()) return description.pins.empty();
  return description.input_count() >= std::max(1u, query.needed_inputs());
}

bdd::BDDCover GateMatcher::covers_of_match(const GateMatch& match) {
  assert(match.exists());
  return behind_inverter_if(match.inverted, compose(covers(match.gate), match.inputs));
}

bool GateMatcher::implements(const bdd::BDDCover& query, const GateMatch& match) {
  return does(covers_of_match(match), query);
}

// The choices that make the gate do at the code what is asked for there.
bdd::Bdd GateMatcher::right_choices(Gate& gate, const PinChoices& choices, const Demand& demand) {
  const bdd::BDDCover direct = compose(covers(gate), choices.values_at(demand.code));
  const bdd::BDDCover inverted = behind_inverter(direct);
  bdd::Bdd right_direct(true), right_inverted(true);
  for (std::size_t i = 0; i < std::size(the_sets); ++i) {
    if (!demand.is_in_set[i]) continue;
    right_direct &= direct.*the_sets[i];
    right_inverted &= inverted.*the_sets[i];
  }
  return ite(PinChoices::output_inversion(), right_inverted, right_direct);
}

std::optional<GateMatch> GateMatcher::cheapest_match(Gate& gate, Query& query) {
  ++stats_.gates;
  const std::string& name = gate.description->name;
  const PinChoices choices(gate.description->input_count(), query.input_count());
  bdd::Bdd left = valid_choices(gate, query);
  if (query.inverter() == OutputInverter::refused) left &= ~PinChoices::output_inversion();
  for (const Demand& demand : query.demands()) {
    if (left.is_false()) break;
    left &= right_choices(gate, choices, demand);
  }
  while (const auto choice = choices.cheapest(left)) {
    const bdd::Bdd wrong =
        failures(query.cover(), covers_of_match(match_of(name, *choice, bdd::bdd_variable)));
    if (wrong.is_false()) {
      if (base::verbosity() >= verbosity_of_gates) tell_all_matches(gate, query, left);
      return match_of(name, *choice, bdd::bdd_variable);
    }
    ++stats_.codes;
    left &= right_choices(gate, choices, query.add_one_of(wrong));
  }
  if (base::verbosity() >= verbosity_of_gates) tell("\nNo match for gate ", name);
  return std::nullopt;
}

void GateMatcher::tell_all_matches(Gate& gate, const Query& query, bdd::Bdd matches) {
  tell("\nMatch(es) exist for gate ", gate.description->name);
  const std::uint32_t input_count = query.input_count();
  if (input_count > most_inputs_to_list) return;
  const PinChoices choices(gate.description->input_count(), input_count);
  for (std::uint32_t number = 0; number < 1u << input_count; ++number) {
    Code code(input_count);
    for (std::uint32_t i = 0; i < input_count; ++i) code[i] = static_cast<int>(number >> i) & 1;
    matches &= right_choices(gate, choices, query.demand_at(std::move(code)));
  }
  tell("\nBDD for all matches: ", toolkit::to_string(bdd::expression_of(matches)));
}

GateMatch GateMatcher::best_match(Query& query) {
  GateMatch best;
  double best_area = 0;
  for (Gate& gate : gates_) {
    if (!is_admitted(gate, query)) continue;
    const double gate_area = gate.description->area;
    if (best.exists() &&
        (gate_area > best_area || (gate_area == best_area && inversion_count(best) == 0))) {
      if (base::verbosity() >= verbosity_of_gates) {
        tell("\nNo improvement in cost with gate ", gate.description->name + "; skip the gate");
      }
      break;
    }
    auto match = cheapest_match(gate, query);
    if (!match) continue;
    const double area = area_of(*match, library_);
    if (best.exists() && (area > best_area || (area == best_area &&
                                               inversion_count(*match) >= inversion_count(best)))) {
      continue;
    }
    if (base::verbosity() >= verbosity_of_gates) {
      tell("\nBetter match found with gate ", match->gate);
    }
    best = std::move(*match);
    best_area = area;
  }
  return best;
}

GateMatch GateMatcher::found_match(const bdd::BDDCover& cover, OutputInverter inverter) {
  Query query(cover, inverter);
  if (query.needed_inputs() > max_inputs_) return {};
  if (base::verbosity() >= verbosity_of_renaming)
    tell("\nCovers after substituting variables: ", to_string(query.cover()));
  // Signals alike have queries that differ in the numbers of variables only.
  const auto [entry, is_new] = known_renamed_.try_emplace(key_of(query.cover(), inverter));
  if (is_new) entry->second = best_match(query);
  GateMatch best = entry->second;
  for (bdd::Bdd& input : best.inputs) {
    if (input.is_constant()) continue;
    const bdd::Bdd variable = query.variable(input.variable());
    input = input.is_complement() ? ~variable : variable;
  }
  assert(!best.exists() || implements(cover, best));
  return best;
}

GateMatch GateMatcher::match(const bdd::BDDCover& cover, std::span<const std::string> names,
                             OutputInverter inverter) {
  ++stats_.queries;
  const bool is_told = base::verbosity() >= verbosity_of_queries;
  if (is_told) tell("\nTrying to match ", to_string(cover, names));
  const auto [entry, is_new] = known_.try_emplace(key_of(cover, inverter));
  if (is_new) entry->second = found_match(cover, inverter);
  const GateMatch& best = entry->second;
  if (is_told) {
    if (best.exists()) {
      tell("\nBest match: ", to_string(best, library_, names));
    } else {
      const bool is_wide = Query(cover, inverter).needed_inputs() > max_inputs_;
      tell("\nNo match found", is_wide ? " - too many inputs" : "");
    }
  }
  return best;
}

bool does(const bdd::BDDCover& gate, const bdd::BDDCover& query) {
  return failures(query, gate).is_false();
}

bdd::BDDCover monotonic_shape(const bdd::Bdd& set, const bdd::Bdd& reset) {
  return {set & ~reset, set | ~reset, reset & ~set, reset | ~set};
}

}  // namespace vorel::decomposition
