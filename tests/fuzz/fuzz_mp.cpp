// Any bytes as a *.mp file, of a net and of an STG.
#include "fuzz/fuzzing.h"
#include "formats/mp_reader.h"
#include "formats/mp_writer.h"

namespace vorel::fuzzing {

void fuzz_mp(const std::string& bytes) {
  try_round_trip(bytes, read_mp_net, write_mp<Net>);
  try_round_trip(bytes, read_mp_stg, write_mp<Stg>);
}

}  // namespace vorel::fuzzing
