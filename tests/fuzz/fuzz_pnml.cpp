// Any bytes as a PNML document, of every kind of process. That what it reads is sound, the reader
// asserts itself.
#include "formats/pnml_reader.h"
#include "fuzz/fuzzing.h"

namespace vorel::fuzzing {

// Some documents are refused without a word.
void fuzz_pnml(const std::string& bytes) { formats::read_pnml_text<net::FullVariant>(bytes); }

}  // namespace vorel::fuzzing
