// oracle/equation_circuit.h - derived equations, their values and the circuit that they describe.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "oracle/coding.h"
#include "synthesis/signal_solution.h"

namespace vorel::oracle {

// The names of its literals.
std::set<std::string> names_in(const toolkit::LogicExpr& expression);

// The value of an equation under a code.
bool value_of(const toolkit::LogicExpr& expression, const net::Stg& stg, const Values& code);

// The fault of the circuit in which each output and internal signal is the output of a C-element
// driven by two gates, SET and RESET. An STG in which an output can be disabled is a hazard of its
// own: it is passed over.
std::string find_hazard(const net::Stg& stg, const StateGraph<net::Stg>& graph,
                        const Values& initial,
                        const std::vector<const synthesis::SignalSolution*>& solutions);

}  // namespace vorel::oracle
