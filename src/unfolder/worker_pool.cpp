#include "unfolder/worker_pool.h"

#include <cassert>
#include <system_error>

namespace vorel::unfolder {

WorkerPool::WorkerPool(std::uint32_t worker_count) {
  assert(worker_count >= 1);
  threads_.reserve(worker_count - 1);
  try {
    for (std::uint32_t worker = 1; worker < worker_count; ++worker) {
      threads_.emplace_back([this, worker] { serve(worker); });
    }
  } catch (const std::system_error&) {  // size() tells
  }
}

WorkerPool::~WorkerPool() {
  {
    const std::scoped_lock lock(mutex_);
    ending_ = true;
  }
  start_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void WorkerPool::run(std::uint32_t item_count, const Work& work) {
  work_ = &work;
  item_count_ = item_count;
  next_item_ = 0;
  // Waking the others costs more than a single item.
  if (item_count > 1 && !threads_.empty()) {
    {
      const std::scoped_lock lock(mutex_);
      ++phase_;
      busy_ = static_cast<std::uint32_t>(threads_.size());
    }
    start_.notify_all();
  }
  take_items(0);
  std::unique_lock lock(mutex_);
  done_.wait(lock, [this] { return busy_ == 0; });
}

void WorkerPool::serve(std::uint32_t worker) {
  std::uint64_t served = 0;
  while (true) {
    {
      std::unique_lock lock(mutex_);
      start_.wait(lock, [&] { return ending_ || phase_ != served; });
      if (ending_) return;
      served = phase_;
    }
    take_items(worker);
    const std::scoped_lock lock(mutex_);
    if (--busy_ == 0) done_.notify_one();
  }
}

void WorkerPool::take_items(std::uint32_t worker) {
  while (true) {
    const std::uint32_t item = next_item_.fetch_add(1);
    if (item >= item_count_) return;
    (*work_)(worker, item);
  }
}

}  // namespace vorel::unfolder
