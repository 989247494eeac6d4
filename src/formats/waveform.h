// formats/waveform.h - a trace as what wires do one step after another.
// Here:      the data.
// Not here:  its forms (formats/vcd_writer.h and whoever draws it).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vorel::formats {

enum class WaveKind : std::uint8_t { input, output, internal, wire };

struct WaveRow {
  std::string name;
  WaveKind kind = WaveKind::wire;
  bool initial_value = false;
};

struct WaveStep {
  std::optional<std::size_t> row;  // none: something that no row shows, such as a dummy
  bool value = false;              // of the row afterwards
  std::string label;               // "lds+", or the transition
};

// One step at each of the times 1, 2, ...
struct Waveform {
  std::string title;  // one line
  std::vector<WaveRow> rows;
  std::vector<WaveStep> steps;
};

}  // namespace vorel::formats
