#include "flow/waveforms.h"

#include <cassert>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace vorel::flow {
namespace {

formats::WaveKind kind_of(const net::Signal& signal) {
  switch (signal.kind) {
    case net::SignalKind::input:
      return formats::WaveKind::input;
    case net::SignalKind::output:
      return formats::WaveKind::output;
    default:
      return formats::WaveKind::internal;
  }
}

}  // namespace

formats::Waveform waveform_of(const net::Stg& stg, const StgTrace& trace, std::string title) {
  formats::Waveform waveform{.title = std::move(title), .rows = {}, .steps = {}};
  std::unordered_map<std::string_view, std::size_t> row_of;
  for (const net::SignalId id : stg.visible_signals()) {
    const net::Signal& signal = *stg.signals[id.value];
    assert(signal.initial_value != net::unknown_value && "found with the prefix");
    row_of.emplace(signal.name, waveform.rows.size());
    waveform.rows.push_back({signal.name, kind_of(signal), signal.initial_value == 1});
  }
  for (const TraceStep& step : trace) {
    std::optional<std::size_t> row;
    if (const auto found = row_of.find(step.signal); found != row_of.end()) row = found->second;
    assert((row.has_value() || step.signal.empty()) && "the trace is one of the STG");
    waveform.steps.push_back({row, step.value, step.transition});
  }
  return waveform;
}

formats::Waveform waveform_of(const StgTrace& trace, std::string title) {
  formats::Waveform waveform{.title = std::move(title), .rows = {}, .steps = {}};
  std::unordered_map<std::string_view, std::size_t> row_of;
  for (const TraceStep& step : trace) {
    std::optional<std::size_t> row;
    if (!step.signal.empty()) {
      const auto [found, is_new] = row_of.emplace(step.signal, waveform.rows.size());
      if (is_new) waveform.rows.push_back({step.signal, formats::WaveKind::wire, !step.value});
      row = found->second;
    }
    waveform.steps.push_back({row, step.value, step.transition});
  }
  return waveform;
}

formats::Waveform waveform_of(const net::Stg& stg, const verify::Circuit& circuit,
                              const verify::Finding& finding) {
  formats::Waveform waveform{.title = finding.message, .rows = {}, .steps = {}};
  for (const verify::Wire& wire : circuit.wires) {
    const auto kind =
        wire.signal ? kind_of(*stg.signals[wire.signal->value]) : formats::WaveKind::wire;
    waveform.rows.push_back({wire.name, kind, wire.initial_value});
  }
  for (const verify::TraceEdge& edge : finding.trace)
    waveform.steps.push_back({edge.wire.value, edge.rises,
                              circuit.wires[edge.wire.value].name + (edge.rises ? "+" : "-")});
  return waveform;
}

}  // namespace vorel::flow
