// report/waveform_drawing.h - waveforms as SVG.
// Here:      rows of levels with an edge at each step, long traces in several lines.
// Not here:  what a trace is (formats/waveform.h), colours (report/drawing_style.h).
#pragma once

#include <cstddef>
#include <string_view>

#include "formats/waveform.h"
#include "report/drawings.h"

namespace vorel::report {

// Of a longer trace the end is drawn.
inline constexpr std::size_t most_drawn_steps = 120;
// Beyond it rows that never change are left out.
inline constexpr std::size_t most_rows_at_rest = 16;

enum class Emphasis { none, last_step };

// For the head of a page, once, behind drawing_style().
std::string_view waveform_style();

Drawing draw_waveform(const formats::Waveform& waveform, Emphasis emphasis = Emphasis::none);
// Two traces that begin with the same steps: what they have in common is drawn once, and what comes
// behind it one below the other. The rows are the same in all three; `first` and `second` go on
// where `common` ends, whatever their initial values.
Drawing draw_waveforms(const formats::Waveform& common, const formats::Waveform& first,
                       const formats::Waveform& second);

}  // namespace vorel::report
