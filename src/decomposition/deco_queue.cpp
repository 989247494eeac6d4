#include "decomposition/deco_queue.h"

#include <cassert>
#include <iostream>
#include <utility>

#include "base/messages.h"
#include "base/run_state.h"

namespace vorel::decomposition {
namespace {

constexpr int verbosity_of_useless = 5;

}  // namespace

DecoQueue::DecoQueue(std::vector<Deco> candidates, Means means)
    : candidates_{std::move(candidates)}, means_{std::move(means)} {
  const DecoSetting setting = means_.setting();
  for (std::size_t i = 0; i < candidates_.size(); ++i)
    entries_.push({least_cost(candidates_[i], setting, LiteralsLeft::ignored), i, Stage::bounded});
}

const Deco* DecoQueue::front() {
  while (!entries_.empty() && entries_.top().stage != Stage::known) {
    Entry entry = entries_.top();
    entries_.pop();
    Deco& deco = candidates_[entry.candidate];
    if (entry.stage == Stage::bounded) {
      entry.stage = Stage::bounded_with_literals;
      entry.cost = least_cost(deco, means_.setting(), LiteralsLeft::counted);
    } else {
      const double bound = entry.cost;
      const bool is_useful = complete(deco);
      if (base::run_failed()) return nullptr;
      if (!is_useful) continue;
      entry.stage = Stage::known;
      entry.cost = deco.cost;
      assert(deco.cost >= bound);
      static_cast<void>(bound);
    }
    entries_.push(entry);
  }
  return entries_.empty() ? nullptr : &candidates_[entries_.top().candidate];
}

void DecoQueue::drop_front() {
  assert(!entries_.empty() && entries_.top().stage == Stage::known);
  entries_.pop();
}

void DecoQueue::reconsider_front() {
  Entry entry = entries_.top();
  drop_front();
  Deco& deco = candidates_[entry.candidate];
  for (Subfunction& part : deco.subfunctions) part.insertion.reset();
  entry.stage = Stage::bounded_with_literals;
  entry.cost = least_cost(deco, means_.setting(), LiteralsLeft::counted);
  entries_.push(entry);
}

std::vector<const Deco*> DecoQueue::all() {
  std::vector<const Deco*> result;
  std::priority_queue<Entry> known;
  while (const Deco* deco = front()) {
    result.push_back(deco);
    known.push(entries_.top());
    entries_.pop();
  }
  entries_ = std::move(known);
  return result;
}

bool DecoQueue::complete(Deco& deco) {
  means_.add_insertions(deco);
  const DecoSetting setting = means_.setting();
  rate(deco, setting);
  if (!deco.useful && base::verbosity() >= verbosity_of_useless) {
    std::cerr << "\n\nDeleting useless decomposition:\n\n"
              << to_string(deco, setting.library, setting.names);
  }
  return deco.useful;
}

}  // namespace vorel::decomposition
