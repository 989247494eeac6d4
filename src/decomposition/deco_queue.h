// decomposition/deco_queue.h - the candidates of a signal, the cheapest first.
// Here:      which candidate is the cheapest, with as few questions about insertions as that takes.
// Not here:  where candidates come from and how they are completed
//            (decomposition/signal_decomposer.h).
//
// To look for insertions costs far more than all else. So a candidate is placed by the least that
// it can cost, at first with any insertion that may exist, and is completed when it comes to the
// front.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <queue>
#include <string>
#include <vector>

#include "decomposition/deco.h"
#include "decomposition/deco_cost.h"

namespace vorel::decomposition {

class DecoQueue {
 public:
  // What must be asked for while the queue is used.
  struct Means {
    std::function<void(Deco&)> add_insertions;  // for its sub-functions, until one has none
    std::function<DecoSetting()> setting;
  };

  // Judged by their gates, which are complete.
  DecoQueue(std::vector<Deco> candidates, Means means);

  // The cheapest candidate that can be carried out and is not dropped, the first of several. Null
  // if there is none, and after a reported failure.
  const Deco* front();
  void drop_front();
  // The insertions of the one at the front are no longer the best: it takes the place that those
  // give it which there are now.
  void reconsider_front();
  // All that can be carried out, in their order.
  std::vector<const Deco*> all();

 private:
  // How exactly the cost is known.
  enum class Stage : std::uint8_t { bounded, bounded_with_literals, known };
  struct Entry {
    double cost;
    std::size_t candidate;
    Stage stage;

    bool operator<(const Entry& other) const {  // in a queue the greatest comes first
      return cost != other.cost ? cost > other.cost : candidate > other.candidate;
    }
  };

  bool complete(Deco& deco);

  std::vector<Deco> candidates_;
  Means means_;
  std::priority_queue<Entry> entries_;
};

}  // namespace vorel::decomposition
