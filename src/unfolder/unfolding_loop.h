// unfolder/unfolding_loop.h - the unfolding of a safe net, batch by batch, on numbers.
// Here:      queue of possible extensions, batches, cut-offs, threads, stopping.
// Not here:  nets with names and the finished Prefix (unfolder/unfolder.h).
//
// All events whose local configurations have one size form a batch: they enter the prefix
// together, and what they make possible is found in parallel. Then, in parallel again, the
// possible extensions that were found are tested for being cut-offs, which get no successors
// [ERV-2002]: those of equal states by one worker, so that none waits for another.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "base/worker_pool.h"
#include "unfolder/branching_process.h"
#include "unfolder/co_set_finder.h"
#include "unfolder/concurrency_relation.h"
#include "unfolder/configuration_order.h"
#include "unfolder/final_states.h"
#include "unfolder/non_local.h"
#include "unfolder/unfold_options.h"

namespace vorel::unfolder {

enum class UnfoldOutcome : std::uint8_t {
  complete,
  unsafe,
  too_many_events,
  out_of_time,
  too_few_threads,  // the system does not start as many as asked for
};

class UnfoldingLoop {
 public:
  using Callback = std::function<void(const std::string& line)>;

  // The net must outlive the loop; no preset may be empty. The callback gets a line before each
  // batch, and may be empty.
  UnfoldingLoop(const FlatNet& net, const UnfoldOptions& options, Callback callback);
  virtual ~UnfoldingLoop();

  // Runs once. Beyond a bound there is a prefix, if it is to be kept, but not a complete one.
  UnfoldOutcome run();

  // Afterwards.
  const BranchingProcess& process() const { return process_; }
  const std::vector<EventId>& entered() const { return entered_; }  // by number in the prefix
  const NonLocalCorrespondents& non_local() const { return non_local_; }
  const UnfoldStats& stats() const { return stats_; }
  base::WorkerPool& pool() { return pool_; }  // for what is made of the prefix
  // How far it got, in words: sizes of the prefix, events that are not in it yet. While no worker
  // is at work.
  std::string progress() const;
  const CoSetFinder::UnsafePair& unsafe_pair() const { return *unsafe_; }

 protected:
  virtual void print_running_line();
  virtual void on_cut_off(EventId event);
  virtual void collect_batch();
  // True: what is in the queue still enters the prefix, but is not extended.
  virtual bool should_stop() { return false; }
  virtual void on_finish();

 private:
  struct Found {
    EventId id;
    std::uint64_t hash;  // of its final state
  };
  // Not in the prefix yet, with what tells when it enters among events of its size.
  struct Pending {
    Pending(EventId id, TransitionId t, std::span<const ConditionId> preset)
        : first{preset.front()}, second{preset[preset.size() > 1]}, transition{t}, event{id} {}

    ConditionId first, second;  // of its preset; if it has no second one, the first one
    TransitionId transition;
    EventId event;
  };

  struct alignas(64) Worker {  // no cache line belongs to two
    explicit Worker(UnfoldingLoop& loop);
    void add_to_queue(TransitionId t, std::span<const ConditionId> preset);

    UnfoldingLoop& loop;
    ConfigurationOrder order;
    CoSetFinder finder;
    NonLocalSearch non_local;
    BranchingProcess::EventRoom room;
    // In this batch, not judged yet: by part of the table of final states.
    std::array<std::vector<Found>, FinalStateTable::part_count> found;
    std::uint32_t found_parts = 0;              // a bit for each that is not empty
    std::size_t found_count = 0;                // of all parts
    std::vector<std::vector<Pending>> pending;  // by size of the local configuration
    std::uint32_t lowest = 0;                   // no bucket below has anything in it
    std::uint64_t pending_count = 0;
  };

  void extend_batch();
  void extend_with(Worker& worker, EventId event);
  void judge_found();
  void judge_part(std::uint32_t part, Worker& worker);
  void judge(std::span<const Found> found, ConfigurationOrder& order);
  bool enters_before(const Pending& a, const Pending& b) const;
  std::uint32_t lowest_level();
  void sort_pending(Worker& worker, std::uint32_t level) const;
  void merge_pending();
  void find_non_local_cut_offs();
  void add_batch();
  void form_groups();
  void drop_relation();
  void keep_histories();
  void drop_histories();
  void give_up(UnfoldOutcome outcome);
  bool must_give_up();
  bool keeps_incomplete() const;
  bool has_too_many_events() const;
  bool has_enough_events();
  void pass_on_correspondent(EventId cut_off);
  std::string sizes() const;

  const FlatNet& net_;
  const UnfoldOptions options_;
  const Callback callback_;
  BranchingProcess process_;
  FinalStateTable final_states_;
  // One of the two tells what is concurrent: the relation as long as it is small enough.
  std::unique_ptr<ConcurrencyRelation> relation_;
  std::unique_ptr<LocalHistories> histories_;
  NonLocalCorrespondents non_local_;
  base::WorkerPool pool_;
  std::vector<std::unique_ptr<Worker>> workers_;

  std::vector<EventId> batch_, cut_offs_, entered_;
  std::size_t first_cut_off_ = 0;            // in cut_offs_, of those of the size of the batch
  std::vector<Pending> merged_, merging_;    // of all workers, of one size
  std::uint32_t sorted_level_ = 0;           // what is pending of this size is sorted
  std::vector<std::uint32_t> group_starts_;  // in batch_; one more at the end
  std::uint32_t level_ = 0;                  // size of the local configurations of the batch
  UnfoldStats stats_;

  std::uint64_t start_ticks_ = 0;
  std::atomic<UnfoldOutcome> outcome_{UnfoldOutcome::complete};
  std::mutex unsafe_mutex_;
  std::unique_ptr<CoSetFinder::UnsafePair> unsafe_;  // guarded by unsafe_mutex_ in a phase
};

}  // namespace vorel::unfolder
