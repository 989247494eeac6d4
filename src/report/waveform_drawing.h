// report/waveform_drawing.h - waveforms as SVG.
#pragma once

#include "formats/waveform.h"
#include "report/drawings.h"

namespace vorel::report {

Drawing draw_waveform(const formats::Waveform& waveform);
// Two that begin with the same steps: what they have in common is drawn once, and behind it one
// below the other.
Drawing draw_waveforms(const formats::Waveform& common, const formats::Waveform& first,
                       const formats::Waveform& second);

}  // namespace vorel::report
