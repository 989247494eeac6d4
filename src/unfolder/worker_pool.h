// unfolder/worker_pool.h - threads that share the items of one phase after another.
// Here:      handing out items in order, waiting until all are done.
// Not here:  what an item is.
// The calling thread is worker 0 and works too; with one worker no thread is started.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vorel::unfolder {

class WorkerPool {
 public:
  using Work = std::function<void(std::uint32_t worker, std::uint32_t item)>;

  // Fewer workers, as size() tells, where the system starts no more threads.
  explicit WorkerPool(std::uint32_t worker_count);
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  std::uint32_t size() const { return static_cast<std::uint32_t>(threads_.size()) + 1; }

  // Runs the work on items 0 .. count - 1, handed out in this order; returns when all are done.
  void run(std::uint32_t item_count, const Work& work);

 private:
  void serve(std::uint32_t worker);
  void take_items(std::uint32_t worker);

  std::mutex mutex_;
  std::condition_variable start_, done_;
  std::uint64_t phase_ = 0;       // guarded by mutex_: rises with each phase
  std::uint32_t busy_ = 0;        // guarded by mutex_: workers still in the phase
  bool ending_ = false;           // guarded by mutex_
  const Work* work_ = nullptr;    // set before a phase, read in it
  std::uint32_t item_count_ = 0;  // likewise
  std::atomic<std::uint32_t> next_item_{0};
  std::vector<std::thread> threads_;
};

}  // namespace vorel::unfolder
