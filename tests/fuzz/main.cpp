// What libFuzzer calls, with the one target that this program was built for.
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const vorel::support::CaughtMessages ignored;
  vorel::fuzzing::FUZZ_TARGET(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
