#include "sat/definition_recorder.h"

#include <cassert>
#include <limits>

namespace vorel::sat {

void DefinitionRecorder::record_gate(Var output, const Gate& gate, ClauseGroup group) {
  assert(gate.type() != GateConst && gate.type() != GateBuf);
  definitions_.try_emplace(output, Definition{gate, group});
}

void DefinitionRecorder::note_clause(std::span<const Lit> clause, ClauseGroup group) {
  for (const Lit lit : clause) occurrences_.emplace(group, lit.variable());
}

void DefinitionRecorder::remove_group(ClauseGroup group) {
  std::erase_if(definitions_, [group](const auto& entry) { return entry.second.group == group; });
  constexpr Var last{std::numeric_limits<std::uint32_t>::max()};
  occurrences_.erase(occurrences_.lower_bound({group, Var{0}}),
                     occurrences_.upper_bound({group, last}));
}

void DefinitionRecorder::clear() {
  definitions_.clear();
  occurrences_.clear();
}

const DefinitionRecorder::Definition* DefinitionRecorder::definition(Var variable) const {
  const auto found = definitions_.find(variable);
  return found == definitions_.end() ? nullptr : &found->second;
}

bool DefinitionRecorder::occurs(Var variable, ClauseGroup group) const {
  return occurrences_.contains({group, variable});
}

}  // namespace vorel::sat
