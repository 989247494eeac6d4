// Any bytes as a *.mp file, of a net and of an STG.
#include "formats/mp_reader.h"
#include "formats/mp_writer.h"
#include "fuzz/fuzzing.h"

namespace vorel::fuzzing {

void fuzz_mp(const std::string& bytes) {
  try_round_trip(bytes, formats::read_mp_net, formats::write_mp<net::Net>);
  try_round_trip(bytes, formats::read_mp_stg, formats::write_mp<net::Stg>);
}

}  // namespace vorel::fuzzing
