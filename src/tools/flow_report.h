// tools/flow_report.h - what vorel-flow tells, on the standard output or beside it.
#pragma once

#include <ostream>

#include "flow/flow_result.h"
#include "tools/flow_task.h"

namespace vorel::tools {

// One line, with the seconds.
void print_step(const flow::StepRecord& record, std::ostream& stream);

// What steps do not say: findings, properties and answers that are no, with their traces; the
// equations, unless files hold them; the verdict and the hint.
void print_outcome(const FlowTask& task, const flow::FlowResult& result, std::ostream& stream);

}  // namespace vorel::tools
