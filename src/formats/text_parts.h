// formats/text_parts.h - a long text whose parts several threads make.
// Here:      the order of the parts in the stream.
// Not here:  what a part is.
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>

#include "base/text_sink.h"
#include "base/worker_pool.h"

namespace vorel::formats {

// Writes so many parts, each as `add_part` makes it from its number; calls for different ones may
// come at the same time. In memory is a part for each worker of the pool, but for one whose turn
// has come when it is begun: of that there is no more than a buffer. False after an error: a write
// has failed.
bool write_parts(std::uint32_t part_count, base::WorkerPool& pool, std::ostream& stream,
                 const std::function<void(std::uint32_t part, base::TextSink& sink)>& add_part);

}  // namespace vorel::formats
