#include "tools/remove_cut_offs.h"

#include <algorithm>
#include <vector>

#include "net/check.h"

namespace vorel::tools {

template <class N>
void remove_cut_offs(net::PrefixOf<N>& prefix) {
  for (const auto& condition : prefix.conditions) {
    auto& consumers = condition->postset;
    const auto is_cut_off = [](const net::EventOf<N>* event) { return event->is_cut_off(); };
    consumers.erase(std::remove_if(consumers.begin(), consumers.end(), is_cut_off),
                    consumers.end());
  }
  std::erase_if(prefix.conditions, [](const auto& condition) {
    return !condition->is_initial() && condition->pre_event->is_cut_off();
  });
  std::erase_if(prefix.events, [](const auto& event) { return event->is_cut_off(); });
  base::renumber(prefix.conditions);
  base::renumber(prefix.events);
  net::check(prefix);
}

template void remove_cut_offs<net::Net>(net::NetPrefix&);
template void remove_cut_offs<net::Stg>(net::StgPrefix&);

}  // namespace vorel::tools
