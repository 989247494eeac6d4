// tools/unfold_files.h - the files of a run of vorel-unfold.
// Here:      the formats that their names tell, the name of an output that is not given, what is
//            wrong with names before any work is done; writing the result.
// Not here:  the formats themselves.
#pragma once

#include "net/process.h"
#include "tools/unfold_request.h"

namespace vorel::tools {

// Sets the formats and the name of the output. False after an error: an ending or a combination
// that nothing can be made of, or an output that cannot be written.
bool settle_files(UnfoldRequest& request);

// Write the result, after settle_files(). False after an error.
template <class N>
bool write_prefix(const net::PrefixOf<N>& prefix, const UnfoldRequest& request);
template <class N>
bool write_merged(const net::MergedProcessOf<N>& process, const UnfoldRequest& request);

}  // namespace vorel::tools
