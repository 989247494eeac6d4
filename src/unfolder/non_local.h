// unfolder/non_local.h - correspondents that are no local configurations.
// Here:      searching the prefix for a smaller configuration with the final state of an event.
// Not here:  local correspondents, which a table finds (unfolder/final_states.h).
//
// The conditions that are marked after the event's local configuration are sought among all
// conditions of their places; each set of concurrent ones is the cut of a configuration.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "unfolder/branching_process.h"
#include "unfolder/configuration_order.h"
#include "unfolder/marked_past.h"
#include "unfolder/stop_check.h"

namespace vorel::unfolder {

// All events of the corresponding configuration, by cut-off.
using NonLocalCorrespondents = std::map<EventId, std::vector<EventId>>;

// Scratch of one worker.
class NonLocalSearch {
 public:
  NonLocalSearch(const BranchingProcess& process, ConfigurationOrder& order,
                 std::function<bool()> must_stop)
      : process_{process}, order_{order}, must_stop_{std::move(must_stop)}, past_{process} {}

  // True if a smaller configuration of the prefix has the final state of the event, which is not
  // in the prefix yet; `correspondents` become its events. False also if it has to stop.
  bool find(EventId event, std::vector<EventId>& correspondents);

 private:
  std::vector<PlaceId> final_marking(EventId event);
  bool choose(std::size_t next);
  bool accept();

  const BranchingProcess& process_;
  ConfigurationOrder& order_;
  StopCheck must_stop_;
  MarkedPast past_;
  EventId event_ = no_event;
  std::vector<PlaceId> places_;  // the marking to be reached, fewest conditions first
  std::vector<ConditionId> chosen_;
  std::vector<EventId> configuration_;
};

}  // namespace vorel::unfolder
