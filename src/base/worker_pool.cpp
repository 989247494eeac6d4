#include "base/worker_pool.h"

#include <algorithm>
#include <cassert>
#include <system_error>

#include "base/clock.h"

namespace vorel::base {
namespace {

// Waking a thread takes some ten microseconds, on both sides; what is done by one worker between
// the phases of a batch, some ten or a hundred.
constexpr std::uint64_t look_out_ticks = 400'000, long_ticks = 50'000, call_ticks = 20'000;

// To start a thread takes a hundred microseconds. What has lasted some milliseconds goes on for
// some more, as often as not.
constexpr std::uint64_t most_ticks_alone = 2'000'000;

void pause() {
#if defined(__x86_64__)
  __builtin_ia32_pause();
#endif
}

}  // namespace

WorkerPool::WorkerPool(std::uint32_t worker_count)
    : size_{worker_count}, first_ticks_{ticks_now()} {
  assert(worker_count >= 1 && worker_count <= open);
  // Looking out is for those who have a processor to themselves.
  looks_out_ = worker_count <= std::thread::hardware_concurrency();
  ranges_ = std::make_unique<Range[]>(worker_count);
  if (looks_out_) return;
  start_threads();
  size_ = static_cast<std::uint32_t>(threads_.size()) + 1;
}

void WorkerPool::start_threads() {
  threads_.reserve(size_ - 1);
  try {
    for (std::uint32_t worker = 1; worker < size_; ++worker) {
      threads_.emplace_back([this, worker] { serve(worker); });
    }
  } catch (const std::system_error&) {
    lacks_threads_ = true;
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
  if (item_count > 1 && size() > 1) return share(item_count, work);
  for (std::uint32_t item = 0; item < item_count; ++item) work(0, item);
}

void WorkerPool::run_ranges(std::uint32_t item_count, std::uint32_t range_size,
                            const RangeWork& work) {
  assert(range_size >= 1);
  const std::uint32_t range_count = item_count / range_size + (item_count % range_size != 0);
  run(range_count, [&](std::uint32_t worker, std::uint32_t range) {
    const std::uint32_t first = range * range_size;
    work(worker, first, first + std::min(range_size, item_count - first));
  });
}

void WorkerPool::run_all(const std::function<void(std::uint32_t worker)>& work) {
  was_long_ = true;  // it is worth waking threads, and starting them
  first_ticks_ = ticks_now() - most_ticks_alone;
  run(size(), [&](std::uint32_t worker, std::uint32_t) { work(worker); });
}

void WorkerPool::share(std::uint32_t item_count, const Work& work) {
  work_ = &work;
  // Some items at a time, so that the counters are no bottleneck, but few: the last ones decide how
  // long all wait for one.
  step_ = std::clamp<std::uint64_t>(item_count / (std::uint64_t{64} * size()), 1, 16);
  for (std::uint64_t worker = 0; worker < size(); ++worker) {
    ranges_[worker].next.store(item_count * worker / size(), std::memory_order_relaxed);
    ranges_[worker].end = item_count * (worker + 1) / size();
  }
  start_ticks_ = ticks_now();
  has_called_ = false;
  if (was_long_ && is_worth_threads(start_ticks_)) call_for_help();
  take_items(0);
  if (has_called_) {
    state_ -= open;
    wait_for_threads();
  }
  was_long_ = ticks_now() - start_ticks_ >= long_ticks;
}

bool WorkerPool::is_worth_threads(std::uint64_t now) const {
  return !threads_.empty() || now - first_ticks_ >= most_ticks_alone;
}

// Opens the phase. A short one worker 0 does alone: what it would tell another processor, and have
// told back, takes longer. Whoever falls asleep after this has seen the open phase: it counts
// itself before it looks.
void WorkerPool::call_for_help() {
  if (threads_.empty() && !lacks_threads_) start_threads();
  has_called_ = true;
  state_ = (state_ / one_phase + 1) * one_phase + open;
  if (asleep_ == 0) return;
  { const std::scoped_lock lock(mutex_); }
  start_.notify_all();
}

void WorkerPool::wait_for_threads() {
  const auto all_have_left = [this] { return state_ % open == 0; };
  if (all_have_left() || look_out_for(all_have_left)) return;
  std::unique_lock lock(mutex_);
  is_waiting_ = true;
  done_.wait(lock, all_have_left);
  is_waiting_ = false;
}

void WorkerPool::serve(std::uint32_t worker) {
  std::uint64_t served = 0;
  while (join_phase(served)) {
    take_items(worker);
    leave_phase();
  }
}

bool WorkerPool::can_join(std::uint64_t served) const {
  const std::uint64_t state = state_;
  return ending_ || ((state & open) != 0 && state / one_phase != served);
}

// False when there will be no more phases.
bool WorkerPool::join_phase(std::uint64_t& served) {
  while (true) {
    if (!look_out_for([&] { return can_join(served); })) {
      std::unique_lock lock(mutex_);
      ++asleep_;
      start_.wait(lock, [&] { return can_join(served); });
      --asleep_;
    }
    if (ending_) return false;
    std::uint64_t state = state_;
    while ((state & open) != 0) {
      if (!state_.compare_exchange_weak(state, state + one_thread)) continue;
      served = state / one_phase;
      return true;
    }
  }
}

void WorkerPool::leave_phase() {
  const std::uint64_t state = state_ -= one_thread;
  if (state % one_phase != 0 || !is_waiting_) return;
  { const std::scoped_lock lock(mutex_); }
  done_.notify_one();
}

void WorkerPool::take_items(std::uint32_t worker) {
  for (std::uint32_t k = 0; k < size(); ++k) take_from(ranges_[(worker + k) % size()], worker);
}

void WorkerPool::take_from(Range& range, std::uint32_t worker) {
  const Work& work = *work_;
  const std::uint64_t count = range.end, step = step_;
  while (range.next.load(std::memory_order_relaxed) < count) {
    const std::uint64_t first = range.next.fetch_add(step, std::memory_order_relaxed);
    const std::uint64_t end = std::min(first + step, count);
    for (std::uint64_t item = first; item < end; ++item)
      work(worker, static_cast<std::uint32_t>(item));
    if (worker != 0 || has_called_) continue;
    // To read the clock takes as long as a short item.
    if (threads_.empty() && ++items_alone_ % 8 != 0) continue;
    const std::uint64_t now = ticks_now();
    if (now - start_ticks_ >= call_ticks && is_worth_threads(now)) call_for_help();
  }
}

// False when the condition did not become true in some microseconds.
template <class Condition>
bool WorkerPool::look_out_for(Condition condition) const {
  if (!looks_out_) return condition();
  const std::uint64_t start = ticks_now();
  do {
    for (int i = 0; i < 32; ++i) {
      if (condition()) return true;
      pause();
    }
  } while (ticks_now() - start < look_out_ticks);
  return condition();
}

}  // namespace vorel::base
