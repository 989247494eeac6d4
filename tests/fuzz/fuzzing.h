// fuzz/fuzzing.h - what the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

namespace vorel::fuzzing {

// Messages are nothing but a waste of time here.
inline void silence_messages() { std::cerr.setstate(std::ios::failbit); }

// Stays in force when assertions are off.
inline void require(bool fact) {
  if (!fact) std::abort();
}

}  // namespace vorel::fuzzing
