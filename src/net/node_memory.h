// net/node_memory.h - memory for the nodes of large XML documents.
// Here:      the two functions that the parser's pool takes its blocks from and returns them to.
// A tree of nodes is five times the size of its text. Taken in pages of 4 KiB, most of the time of
// parsing would go into page faults; blocks of several MiB are therefore asked for in huge pages.
#pragma once

#include <cstddef>

namespace vorel::net {

// Never null: ends in memory_overflow().
void* allocate_node_block(std::size_t size);
void free_node_block(void* block);

}  // namespace vorel::net
