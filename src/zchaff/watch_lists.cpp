#include "zchaff/watch_lists.h"

namespace vorel::zchaff {

void WatchLists::clean(const ClauseArena& arena) {
  for (const Literal literal : dirty_literals_) {
    std::erase_if(of(literal),
                  [&](const Watch& watch) { return arena[watch.clause()].is_garbage(); });
    dirty_[literal.code()] = 0;
  }
  dirty_literals_.clear();
}

void WatchLists::move(ClauseArena& arena) {
  assert(dirty_literals_.empty());
  for (std::vector<Watch>& list : lists_)
    for (Watch& watch : list)
      watch = Watch(arena.moved(watch.clause()), watch.blocker(), watch.is_binary());
}

}  // namespace vorel::zchaff
