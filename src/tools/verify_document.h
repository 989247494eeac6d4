// tools/verify_document.h - the answers of vorel-verify as a JSON document.
// docs/verification.schema.json tells its keys.
#pragma once

#include <ostream>

#include "tools/verify_result.h"

namespace vorel::tools {

// False after an error: the stream took not all of it. Of names that are no UTF-8, which JSON
// cannot hold, what is none is replaced.
bool write_document(const VerifyResult& result, std::ostream& stream);

}  // namespace vorel::tools
