// base/worker_pool.h - threads that share the items of one phase after another.
// Here:      handing out items, waiting until all are done.
// Not here:  what an item is.
// The calling thread is worker 0 and works too; with one worker no thread is started.
//
// Each worker begins with a range of the items that is its own, the same share in each phase, and
// goes on with what others have left: where neighbours and successive phases have data in common, a
// worker mostly finds them in its cache.
//
// Phases can be shorter than the time that it takes to wake a thread. So a worker that has nothing
// to do looks out for the next phase for some microseconds before it sleeps; those asleep are woken
// only once a phase lasts; and nobody waits for a worker that has not come. No thread is started
// before the pool has been there for some time: what is done soon is done sooner by one.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace vorel::base {

class WorkerPool {
 public:
  using Work = std::function<void(std::uint32_t worker, std::uint32_t item)>;

  // Of more workers than there are processors all start at once: fewer, as size() tells, where the
  // system starts no more threads.
  explicit WorkerPool(std::uint32_t worker_count);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  std::uint32_t size() const { return size_; }
  // True once the system has not started a thread that was to help; the others do its work.
  bool lacks_threads() const { return lacks_threads_; }

  // Runs the work on items 0 .. count - 1, in no order; returns when all are done. Not from within
  // the work.
  void run(std::uint32_t item_count, const Work& work);

  // The same for ranges of so many items (the last one may be shorter), where one is too little
  // work to be handed out.
  using RangeWork =
      std::function<void(std::uint32_t worker, std::uint32_t first, std::uint32_t end)>;
  void run_ranges(std::uint32_t item_count, std::uint32_t range_size, const RangeWork& work);

  // Calls the work once for each worker, at the same time unless one does not come; then another
  // one does its share. For work that hands out its items itself.
  void run_all(const std::function<void(std::uint32_t worker)>& work);

 private:
  // Numbers of the state: how many threads are in the phase, whether it takes more, which it is.
  static constexpr std::uint64_t one_thread = 1, open = 1u << 16, one_phase = 1u << 17;

  struct alignas(64) Range {  // of the items, as a worker begins with
    std::atomic<std::uint64_t> next{0};
    std::uint64_t end = 0;
  };

  void start_threads();
  bool is_worth_threads(std::uint64_t now) const;
  void share(std::uint32_t item_count, const Work& work);
  void serve(std::uint32_t worker);
  bool join_phase(std::uint64_t& served);
  void leave_phase();
  bool can_join(std::uint64_t served) const;
  void take_items(std::uint32_t worker);
  void take_from(Range& range, std::uint32_t worker);
  void call_for_help();
  void wait_for_threads();
  template <class Condition>
  bool look_out_for(Condition condition) const;

  // Written by many, each in a cache line of its own.
  std::unique_ptr<Range[]> ranges_;  // by worker
  alignas(64) std::atomic<std::uint64_t> state_{0};
  alignas(64) std::atomic<std::uint32_t> asleep_{0};  // threads
  std::atomic<bool> is_waiting_{false};               // worker 0, asleep
  std::atomic<bool> ending_{false};
  std::mutex mutex_;  // of the two that sleepers wait for
  std::condition_variable start_, done_;
  // Set before a phase is opened, read in it.
  const Work* work_ = nullptr;
  std::uint64_t step_ = 1;
  std::uint32_t size_ = 1;
  // Of worker 0 alone.
  std::uint64_t start_ticks_ = 0;
  std::uint64_t first_ticks_ = 0;  // when the pool was made
  std::uint32_t items_alone_ = 0;  // done before threads were started, some at a time
  bool lacks_threads_ = false;
  bool has_called_ = false;
  bool was_long_ = false;  // the last phase
  bool looks_out_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace vorel::base
