// report/page_style.h - what a page looks like, on large and small screens and in print.
#pragma once

#include <string_view>

namespace vorel::report {

// For the head of a page, once, behind drawing_style() and waveform_style().
std::string_view page_style();

}  // namespace vorel::report
