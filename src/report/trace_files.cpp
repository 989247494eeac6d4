#include "report/trace_files.h"

#include <cassert>
#include <utility>

#include "flow/flow_words.h"
#include "flow/waveforms.h"
#include "verify/verification_words.h"

namespace vorel::report {
namespace {

std::string in_folder(const std::string& name) { return "traces/" + name + ".vcd"; }

class Collection {
 public:
  explicit Collection(const flow::FlowResult& result) : result_{result} {}

  std::vector<TraceFile> run() {
    for (std::size_t i = 0; i < result_.findings.size(); ++i) {
      const flow::StgFinding& finding = result_.findings[i];
      if (finding.trace) add(finding_file(result_, i), *finding.trace, finding.message);
    }
    const std::size_t conflicts = result_.coding ? result_.coding->conflicts.size() : 0;
    for (std::size_t i = 0; i < conflicts; ++i) add_conflict(i);
    for (std::size_t i = 0; i < result_.properties.size(); ++i) {
      const flow::PropertyResult& property = result_.properties[i];
      add(property_file(i), property.trace, property.name);
    }
    if (result_.circuit && result_.circuit->verification) add_verification();
    return std::move(files_);
  }

 private:
  // Without a prefix there are no initial values either.
  void add(std::string name, const flow::StgTrace& trace, std::string title) {
    if (trace.empty()) return;
    files_.push_back({std::move(name), result_.given
                                           ? flow::waveform_of(*result_.given, trace, title)
                                           : flow::waveform_of(trace, title)});
  }

  void add_conflict(std::size_t i) {
    const flow::Conflict& conflict = result_.coding->conflicts[i];
    const auto add_branch = [&](const flow::StgTrace& trace, Branch branch) {
      flow::StgTrace whole = conflict.common;
      whole.insert(whole.end(), trace.begin(), trace.end());
      add(conflict_file(i, branch), whole, "to a state with the code " + conflict.code);
    };
    add_branch(conflict.first, Branch::first);
    add_branch(conflict.second, Branch::second);
  }

  void add_verification() {
    const net::Stg& stg = *result_.circuit_stg();
    for (const verify::Finding& finding : result_.circuit->verification->findings) {
      if (finding.trace.empty()) continue;
      files_.push_back({question_file(finding.question),
                        flow::waveform_of(stg, result_.circuit->circuit, finding)});
    }
  }

  const flow::FlowResult& result_;
  std::vector<TraceFile> files_;
};

}  // namespace

std::string finding_file(const flow::FlowResult& result, std::size_t i) {
  return in_folder("finding" + std::to_string(i + 1) + '_' +
                   std::string(flow::row_of(result.findings.at(i).kind).key));
}

std::string conflict_file(std::size_t i, Branch branch) {
  return in_folder("conflict" + std::to_string(i + 1) +
                   (branch == Branch::first ? "_first" : "_second"));
}

std::string property_file(std::size_t i) { return in_folder("property" + std::to_string(i + 1)); }

std::string question_file(verify::Question question) {
  return in_folder("circuit_" + std::string(verify::row_of(question).key));
}

std::vector<TraceFile> trace_files(const flow::FlowResult& result) {
  return Collection(result).run();
}

}  // namespace vorel::report
