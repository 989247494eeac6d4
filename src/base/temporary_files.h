// base/temporary_files.h - files that live until the run ends, for parts that only read streams.
// Here:      creating them, deleting all of them at the end.
// Not here:  the list of their names (base/run_state.h). Used from the main thread only.
#pragma once

#include <cstdio>

namespace vorel::base {

// An open stream, for reading and writing, on a new file whose name starts with "_tmp", in $TMPDIR
// or else /tmp. The caller closes it. Null after an error.
std::FILE* create_temporary_file();

// Deletes the files created so far; warns of each that cannot be deleted.
void delete_temporary_files();

}  // namespace vorel::base
