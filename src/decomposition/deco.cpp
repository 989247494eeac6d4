#include "decomposition/deco.h"

#include <algorithm>
#include <cassert>
#include <tuple>
#include <utility>

#include "base/messages.h"
#include "bdd/cover_bdd.h"

namespace vorel::decomposition {
namespace {

bool is_first_in_order(const Subfunction& a, const Subfunction& b) {
  const auto order = [](const Subfunction& part) {
    return std::make_tuple(!part.is_settled(), !part.has_local_insertion(), part.extra_acks(),
                           part.insertion->cost);
  };
  return order(a) < order(b);
}

std::vector<bdd::Bdd> identity(std::size_t size) {
  std::vector<bdd::Bdd> variables;
  for (std::size_t i = 0; i < size; ++i)
    variables.push_back(bdd::bdd_variable(static_cast<std::uint32_t>(i)));
  return variables;
}

Deco deco_with_gate(DecoKind kind, const GateMatch& match, const bdd::BDDCover& shape,
                    std::vector<bdd::Bdd> parts) {
  Deco deco;
  deco.kind = kind;
  deco.gate = match;
  deco.shape = shape;
  for (bdd::Bdd& part : parts) deco.subfunctions.emplace_back(std::move(part));
  return deco;
}

constexpr const char* kind_names[] = {"UNINITIALISED", "BOOL", "MONOT", "COLLAPSED"};

class DecoText {
 public:
  DecoText(const Deco& deco, const GateLibrary& library, std::span<const std::string> names)
      : deco_{deco}, library_{library}, names_{names} {}

  std::string run() {
    add_header();
    text_ += "\nCharacteristics:";
    if (deco_.cost < 0) {
      text_ += " ### NOT CALCULATED ###";
    } else {
      add_characteristics();
    }
    if (deco_.gate.exists())
      text_ += "\ngate=" + deco_.gate.gate + (deco_.gate.inverted ? " (inverted)" : "");
    for (const Subfunction& part : deco_.subfunctions) add_part(part);
    if (deco_.degraded) text_ += "\nDEGRADED";
    if (deco_.cost >= 0) text_ += base::format_message("\noverall cost=%.2f", deco_.cost);
    return std::move(text_);
  }

 private:
  void add_header() {
    text_ = std::string(kind_names[static_cast<std::size_t>(deco_.kind)]) + " Deco (" +
            std::to_string(deco_.literals) + " lits) for [" + deco_.signal + "]=";
    const std::string function = toolkit::to_string(deco_.function);
    text_ +=
        deco_.kind == DecoKind::monotonic
            ? "(SET: " + function + ", RESET: " + toolkit::to_string(deco_.inverse_function) + ")"
            : function;
  }

  void add_characteristics() {
    if (deco_.is_trivial()) text_ += " TRIVIAL";
    if (deco_.directly_implementable) text_ += " DIRECTLY-IMPLEMENTABLE";
    if (deco_.useful) text_ += " USEFUL";
    if (deco_.is_local()) text_ += " LOCAL";
    if (std::ranges::all_of(deco_.subfunctions, &Subfunction::is_settled)) text_ += " NICE";
  }

  void add_part(const Subfunction& part) {
    const toolkit::LogicExpr expression = bdd::expression_of(part.function, names_);
    text_ += "\n" + toolkit::to_string(expression) +
             " (cost=" + std::to_string(toolkit::literal_count(expression)) + ") " +
             to_string(part.match, library_, names_);
    if (part.insertion) text_ += "\nIns: " + part.insertion->text;
  }

  const Deco& deco_;
  const GateLibrary& library_;
  const std::span<const std::string> names_;
  std::string text_;
};

}  // namespace

bool Deco::is_trivial() const {
  return std::ranges::all_of(subfunctions, &Subfunction::is_trivial);
}

bool Deco::is_local() const {
  if (directly_implementable) return true;
  const Subfunction* const part = chosen_part();
  return part != nullptr && part->insertion && part->extra_acks() == 0;
}

void Deco::judge() {
  useful = kind != DecoKind::uninitialised && gate.exists();
  directly_implementable = useful && kind != DecoKind::collapsed;
  chosen.reset();
  for (std::size_t i = 0; i < subfunctions.size(); ++i) {
    const Subfunction& part = subfunctions[i];
    if (!must_be_inserted(part)) continue;
    directly_implementable = false;
    if (!part.insertion) {
      useful = false;
    } else if (!chosen || is_first_in_order(part, subfunctions[*chosen])) {
      chosen = i;
    }
  }
}

bdd::Bdd next_value(const Deco& deco, std::optional<std::size_t> replaced,
                    std::uint32_t replacement) {
  const bdd::Bdd variable = bdd::bdd_variable(replacement);
  const auto put_in_place = [&](const bdd::Bdd& part) {
    if (!replaced) return part;
    const bdd::Bdd& function = deco.subfunctions[*replaced].function;
    return part == function ? variable : part == ~function ? ~variable : part;
  };
  if (deco.kind == DecoKind::collapsed) {
    assert(deco.subfunctions.size() == 1);
    const bdd::Bdd placeholder = bdd::bdd_variable(deco.placeholder);
    return bdd::ite(put_in_place(deco.subfunctions.front().function),
                    bdd::cofactor(deco.collapsed, placeholder),
                    bdd::cofactor(deco.collapsed, ~placeholder));
  }
  std::vector<bdd::Bdd> inputs;
  for (const Subfunction& part : deco.subfunctions) inputs.push_back(put_in_place(part.function));
  return bdd::ite(bdd::bdd_variable(deco.variable), bdd::compose(deco.shape.qr_plus, inputs),
                  bdd::compose(deco.shape.er_plus, inputs));
}

Deco boolean_deco(const std::string& gate, const bdd::BDDCover& covers,
                  const std::vector<bdd::Bdd>& pins) {
  return deco_with_gate(DecoKind::boolean, {.gate = gate, .inputs = identity(pins.size())}, covers,
                        pins);
}

Deco matched_deco(const GateMatch& match, const bdd::BDDCover& shape) {
  assert(match.exists());
  std::vector<bdd::Bdd> parts, position;  // of a variable
  for (const bdd::Bdd& input : match.inputs) {
    if (input.is_constant()) continue;
    assert(bdd::is_literal(input));
    const bdd::Bdd part = bdd::bdd_variable(input.variable());
    if (std::ranges::find(parts, part) == parts.end()) parts.push_back(part);
  }
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::uint32_t variable = parts[i].variable();
    for (auto v = static_cast<std::uint32_t>(position.size()); v <= variable; ++v)
      position.push_back(bdd::bdd_variable(v));
    position[variable] = bdd::bdd_variable(static_cast<std::uint32_t>(i));
  }
  GateMatch moved = match;
  for (bdd::Bdd& input : moved.inputs) input = bdd::compose(input, position);
  return deco_with_gate(DecoKind::boolean, moved, bdd::compose(shape, position), parts);
}

Deco gate_deco(const AlgDecomposition& decomposition, const GateMatch& match,
               const bdd::BDDCover& shape) {
  assert(match.exists() && decomposition.kind != AlgKind::collapsed);
  std::vector<bdd::Bdd> parts{decomposition.first, decomposition.second};
  std::vector<bdd::Bdd> turned = identity(parts.size());
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto is_input = [&](const bdd::Bdd& input) { return input == turned[i]; };
    if (std::ranges::any_of(match.inputs, is_input)) continue;
    parts[i] = ~parts[i];
    turned[i] = ~turned[i];
  }
  GateMatch direct = match;
  for (bdd::Bdd& input : direct.inputs) input = bdd::compose(input, turned);
  return deco_with_gate(DecoKind::boolean, direct, bdd::compose(shape, turned), std::move(parts));
}

Deco monotonic_deco(const bdd::Bdd& set, const bdd::Bdd& reset, const GateMatch& match,
                    const bdd::BDDCover& shape) {
  return deco_with_gate(DecoKind::monotonic, match, shape, {set, reset});
}

Deco collapsed_deco(const AlgDecomposition& decomposition, std::uint32_t placeholder) {
  assert(decomposition.kind == AlgKind::collapsed);
  Deco deco;
  deco.kind = DecoKind::collapsed;
  deco.gate.gate = "COLLAPSED";
  deco.collapsed = decomposition.second;
  deco.placeholder = placeholder;
  deco.subfunctions.emplace_back(decomposition.first);
  return deco;
}

std::optional<Deco> collapsed_deco(const Deco& deco, std::size_t part, std::uint32_t placeholder) {
  const bdd::Bdd around = next_value(deco, part, placeholder);
  if (bdd::cofactor(around, bdd::bdd_variable(placeholder)) == around) return std::nullopt;
  Deco result =
      collapsed_deco({AlgKind::collapsed, deco.subfunctions[part].function, around}, placeholder);
  result.signal = deco.signal;
  result.variable = deco.variable;
  result.literals = deco.literals;
  return result;
}

std::string to_string(const Deco& deco, const GateLibrary& library,
                      std::span<const std::string> names) {
  return DecoText(deco, library, names).run();
}

}  // namespace vorel::decomposition
