#include "unfolder/unfolding_loop.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <iterator>
#include <utility>

#include "base/clock.h"
#include "base/fetch.h"

namespace vorel::unfolder {
namespace {

// Fewer events are not worth being shared by the workers.
constexpr std::size_t few_found = 32;

// So many elements before an element is needed, it is fetched.
constexpr std::size_t fetch_ahead = 8;

// In a large batch, so many ids are taken at a time.
constexpr std::uint32_t id_block = 16;

constexpr std::uint32_t no_level = 0xFFFFFFFFu;

}  // namespace

UnfoldingLoop::Worker::Worker(UnfoldingLoop& owner)
    : loop{owner},
      order{owner.process_, owner.options_},
      finder{
          owner.process_,
          [this](TransitionId t, std::span<const ConditionId> preset) { add_to_queue(t, preset); },
          [&owner] { return owner.must_give_up(); }},
      non_local{owner.process_, order, [&owner] { return owner.must_give_up(); }} {}

void UnfoldingLoop::Worker::add_to_queue(TransitionId t, std::span<const ConditionId> preset) {
  UnfoldedEvent event;
  event.transition = t;
  event.preset_data = preset.data();
  event.preset_size = static_cast<std::uint32_t>(preset.size());
  event.postset_size = static_cast<std::uint32_t>(loop.net_.postset[t].size());
  order.measure(event);
  assert(event.size > loop.level_ && "an extension is larger than what it extends");
  const EventId id = loop.process_.add_event(event, order.causes(), room);
  const std::uint64_t hash = event.state.value();
  const std::uint32_t part = FinalStateTable::part_of(hash);
  found[part].push_back({id, hash});
  found_parts |= 1u << part;
  ++found_count;
  if (pending.size() <= event.size) pending.resize(event.size + 1);
  pending[event.size].emplace_back(id, t, preset);
  lowest = std::min(lowest, event.size);
  ++pending_count;
}

UnfoldingLoop::UnfoldingLoop(const FlatNet& net, const UnfoldOptions& options, Callback callback)
    : net_{net},
      options_{options},
      callback_{std::move(callback)},
      process_{net},
      final_states_{process_},
      pool_{std::max(1u, options.number_of_threads)} {
  for (std::uint32_t i = 0; i < pool_.size(); ++i)
    workers_.push_back(std::make_unique<Worker>(*this));
  if (options.conc_rel_size > process_.condition_count() &&
      process_.condition_count() <= ConcurrencyRelation::most_unseen) {
    relation_ = std::make_unique<ConcurrencyRelation>(process_, pool_);
  } else {
    keep_histories();
  }
}

UnfoldingLoop::~UnfoldingLoop() = default;

UnfoldOutcome UnfoldingLoop::run() {
  if (pool_.size() < options_.number_of_threads) return UnfoldOutcome::too_few_threads;
  start_ticks_ = base::ticks_now();
  extend_with(*workers_.front(), no_event);
  judge_found();
  collect_batch();
  bool stopped = should_stop() || has_enough_events();
  while (!stopped && !batch_.empty() && !must_give_up()) {
    if (options_.non_local_correspondents) find_non_local_cut_offs();
    if (!batch_.empty() && !must_give_up()) {
      add_batch();
      extend_batch();
      batch_.clear();
      if (pool_.lacks_threads()) give_up(UnfoldOutcome::too_few_threads);
    }
    if (must_give_up()) break;
    collect_batch();
    stopped = should_stop() || has_enough_events();
  }
  if (must_give_up() && !keeps_incomplete()) return outcome_;
  if (stopped || outcome_ != UnfoldOutcome::complete) {
    drop_relation();
    drop_histories();
    if (batch_.empty()) collect_batch();
    for (; !batch_.empty(); collect_batch()) add_batch();
  }
  on_finish();
  stats_.seconds = base::seconds_of(base::ticks_now() - start_ticks_);
  return outcome_;
}

// The first reason stays.
void UnfoldingLoop::give_up(UnfoldOutcome outcome) {
  UnfoldOutcome none = UnfoldOutcome::complete;
  outcome_.compare_exchange_strong(none, outcome);
}

bool UnfoldingLoop::has_too_many_events() const {
  return options_.max_events != 0 && process_.event_count() > options_.max_events;
}

// What is to be kept does not depend on the threads: it ends between batches.
bool UnfoldingLoop::has_enough_events() {
  if (options_.keep_incomplete && has_too_many_events() && !batch_.empty())
    give_up(UnfoldOutcome::too_many_events);
  return outcome_ == UnfoldOutcome::too_many_events;
}

// True once the run has to end without a result. All workers ask.
bool UnfoldingLoop::must_give_up() {
  if (outcome_ != UnfoldOutcome::complete) return true;
  // A batch can be wider than memory: what is to be kept ends within one that goes far beyond.
  const std::uint64_t bound = options_.max_events * (options_.keep_incomplete ? 4 : 1);
  if (options_.max_events != 0 && process_.event_count() > bound) {
    give_up(UnfoldOutcome::too_many_events);
  } else if (options_.max_seconds > 0 &&
             options_.seconds_before + base::seconds_of(base::ticks_now() - start_ticks_) >
                 options_.max_seconds) {
    give_up(UnfoldOutcome::out_of_time);
  }
  return outcome_ != UnfoldOutcome::complete;
}

// What was found before a bound was met is as good as ever; only some is missing.
bool UnfoldingLoop::keeps_incomplete() const {
  return options_.keep_incomplete &&
         (outcome_ == UnfoldOutcome::too_many_events || outcome_ == UnfoldOutcome::out_of_time);
}

void UnfoldingLoop::extend_with(Worker& worker, EventId event) {
  worker.finder.run(event, relation_.get(), histories_.get());
  if (!worker.finder.unsafe()) return;
  // Of all pairs of a batch the lowest is told, whichever worker comes first.
  const std::scoped_lock lock(unsafe_mutex_);
  if (unsafe_ == nullptr || *worker.finder.unsafe() < *unsafe_) {
    unsafe_ = std::make_unique<CoSetFinder::UnsafePair>(*worker.finder.unsafe());
  }
}

void UnfoldingLoop::extend_batch() {
  const auto group_count = static_cast<std::uint32_t>(group_starts_.size() - 1);
  // Ids are left over, then: few in comparison, but a bound on events counts each.
  const bool is_large = pool_.size() > 1 && group_count >= 4 * id_block * pool_.size();
  process_.set_id_block(is_large && options_.max_events == 0 ? id_block : 1);
  pool_.run(group_count, [this](std::uint32_t worker, std::uint32_t group) {
    for (std::uint32_t i = group_starts_[group]; i < group_starts_[group + 1]; ++i) {
      if (must_give_up()) return;
      extend_with(*workers_[worker], batch_[i]);
    }
  });
  for (const auto& worker : workers_) process_.drop_ids(worker->room);
  if (unsafe_ != nullptr) outcome_ = UnfoldOutcome::unsafe;
  judge_found();
}

// Which of the events that have just been found are cut-offs. States of different parts have
// nothing to do with each other: nobody waits for a lock. Meanwhile nobody reads the relation, of
// which older rows are to be extended, and the next batch is sorted; all together keep the workers
// busy for longer.
void UnfoldingLoop::judge_found() {
  if (must_give_up() && !keeps_incomplete()) return;
  std::size_t found_count = 0;
  std::uint32_t parts = 0;
  for (const auto& worker : workers_) {
    found_count += std::exchange(worker->found_count, 0);
    parts |= std::exchange(worker->found_parts, 0);
  }
  const std::uint32_t row_parts = relation_ == nullptr ? 0 : relation_->part_count();
  if (found_count < few_found) {
    for (; parts != 0; parts &= parts - 1)
      judge_part(static_cast<std::uint32_t>(std::countr_zero(parts)), *workers_.front());
    return pool_.run(row_parts, [this](std::uint32_t worker, std::uint32_t part) {
      relation_->tell_older(worker, part);
    });
  }
  // Two items for each worker take long: it begins with one of them, and comes to the other one
  // half-way. The short ones even out what is left.
  sorted_level_ = lowest_level();
  const std::uint64_t spread = 2 * pool_.size(), count = spread + FinalStateTable::part_count;
  pool_.run(static_cast<std::uint32_t>(count), [&](std::uint32_t worker, std::uint32_t item) {
    const auto before = static_cast<std::uint32_t>((item * spread + count - 1) / count);
    if (before == spread || before * count / spread != item)
      return judge_part(item - before, *workers_[worker]);
    if (before % 2 != 0) return sort_pending(*workers_[before / 2], sorted_level_);
    if (before / 2 < row_parts) relation_->tell_older(worker, before / 2);
  });
}

void UnfoldingLoop::judge_part(std::uint32_t part, Worker& worker) {
  for (const auto& finder : workers_) {
    judge(finder->found[part], worker.order);
    finder->found[part].clear();
  }
}

// States are all over the table, and what another worker has found is in its cache: what is needed
// soon is fetched meanwhile.
void UnfoldingLoop::judge(std::span<const Found> found, ConfigurationOrder& order) {
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (must_give_up() && outcome_ == UnfoldOutcome::out_of_time) return;
    if (i + fetch_ahead < found.size()) final_states_.fetch_slot(found[i + fetch_ahead].hash);
    if (i + fetch_ahead / 2 < found.size()) {
      final_states_.fetch_member(found[i + fetch_ahead / 2].hash);
      process_.fetch_origin(found[i + fetch_ahead / 2].id);
    }
    final_states_.insert(found[i].id, found[i].hash, order);
  }
}

// Events of one size enter in the order of their presets and transitions, which does not depend on
// the threads.
bool UnfoldingLoop::enters_before(const Pending& a, const Pending& b) const {
  if (a.first != b.first) return a.first < b.first;
  if (a.transition != b.transition) return a.transition < b.transition;
  if (a.second != b.second) return a.second < b.second;
  return std::ranges::lexicographical_compare(process_.event(a.event).preset(),
                                              process_.event(b.event).preset());
}

// Of all that is pending; no_level if nothing is.
std::uint32_t UnfoldingLoop::lowest_level() {
  std::uint32_t level = no_level;
  for (const auto& worker : workers_) {
    std::uint32_t& lowest = worker->lowest;
    while (lowest < worker->pending.size() && worker->pending[lowest].empty()) ++lowest;
    if (lowest < worker->pending.size()) level = std::min(level, lowest);
  }
  return level;
}

void UnfoldingLoop::sort_pending(Worker& worker, std::uint32_t level) const {
  if (level >= worker.pending.size()) return;
  std::ranges::sort(worker.pending[level],
                    [this](const auto& a, const auto& b) { return enters_before(a, b); });
}

// Takes what is pending at this level from all workers.
void UnfoldingLoop::merge_pending() {
  merged_.clear();
  for (const auto& worker : workers_) {
    if (worker->pending.size() <= level_) continue;
    if (sorted_level_ != level_) sort_pending(*worker, level_);
    const std::vector<Pending> found = std::exchange(worker->pending[level_], {});
    worker->pending_count -= found.size();
    merging_.clear();
    std::ranges::merge(merged_, found, std::back_inserter(merging_),
                       [this](const auto& a, const auto& b) { return enters_before(a, b); });
    std::swap(merged_, merging_);
  }
}

void UnfoldingLoop::collect_batch() {
  batch_.clear();
  while (batch_.empty()) {
    level_ = lowest_level();
    if (level_ == no_level) return;
    first_cut_off_ = cut_offs_.size();
    merge_pending();
    for (std::size_t i = 0; i < merged_.size(); ++i) {
      if (i + fetch_ahead < merged_.size()) process_.fetch_event(merged_[i + fetch_ahead].event);
      const EventId event = merged_[i].event;
      if (process_.event(event).correspondent == not_cut_off) {
        batch_.push_back(event);
      } else {
        on_cut_off(event);
      }
    }
  }
}

void UnfoldingLoop::on_cut_off(EventId event) {
  ++stats_.cutoffs;
  if (options_.no_cutoffs) return;
  assert(process_.event(event).size == level_);
  cut_offs_.push_back(event);
}

void UnfoldingLoop::find_non_local_cut_offs() {
  const auto batch_size = static_cast<std::uint32_t>(batch_.size());
  std::vector<std::vector<EventId>> found(batch_size);
  std::vector<std::uint8_t> is_cut_off(batch_size);
  pool_.run(batch_size, [&](std::uint32_t worker, std::uint32_t i) {
    if (must_give_up()) return;
    is_cut_off[i] = workers_[worker]->non_local.find(batch_[i], found[i]);
  });
  const std::size_t others = cut_offs_.size();
  for (std::uint32_t i = 0; i < batch_size; ++i) {
    if (is_cut_off[i] == 0) continue;
    UnfoldedEvent& event = process_.event(batch_[i]);
    event.correspondent = found[i].empty() ? initial_state : found[i].front();
    if (found[i].size() > 1) non_local_.emplace(batch_[i], std::move(found[i]));
    final_states_.remove(batch_[i]);
    on_cut_off(batch_[i]);
    batch_[i] = no_event;
  }
  std::erase(batch_, no_event);
  // Those that were found to be cut-offs before are sorted, too.
  const auto all = std::span(cut_offs_).subspan(first_cut_off_);
  const auto as_pending = [this](EventId e) {
    return Pending(e, process_.event(e).transition, process_.event(e).preset());
  };
  std::ranges::inplace_merge(
      all, all.begin() + static_cast<std::ptrdiff_t>(others - first_cut_off_),
      [this](const auto& a, const auto& b) { return enters_before(a, b); }, as_pending);
}

void UnfoldingLoop::add_batch() {
  form_groups();
  assert(std::ranges::all_of(batch_,
                             [this](EventId e) {
                               return process_.event(e).size == level_ &&
                                      process_.event(e).correspondent == not_cut_off;
                             }) &&
         "a batch has events of one size, and no cut-off");
  if (callback_) print_running_line();
  const bool is_full = process_.condition_count() + batch_.size() > options_.conc_rel_size;
  process_.enter(batch_);
  const auto enter_conditions = [this] { process_.enter_conditions(batch_); };
  const bool keeps_relation = relation_ != nullptr && !is_full &&
                              relation_->memory() <= options_.conc_rel_memory &&
                              relation_->begin_batch(batch_);
  if (keeps_relation) {
    relation_->add_batch(batch_, enter_conditions);
  } else {
    enter_conditions();
    if (relation_ != nullptr) {
      drop_relation();
      keep_histories();
    }
  }
  entered_.insert(entered_.end(), batch_.begin(), batch_.end());
  if (histories_ != nullptr) histories_->add_batch(batch_);
}

// Events of one transition that compete for a condition: no two of them are concurrent.
void UnfoldingLoop::form_groups() {
  group_starts_.clear();
  for (std::uint32_t i = 0; i < batch_.size(); ++i) {
    const UnfoldedEvent& event = process_.event(batch_[i]);
    const UnfoldedEvent* before = i == 0 ? nullptr : &process_.event(batch_[i - 1]);
    if (before == nullptr || before->preset_data[0] != event.preset_data[0] ||
        before->transition != event.transition) {
      group_starts_.push_back(i);
    }
  }
  ++stats_.batches;
  stats_.groups += group_starts_.size();
  stats_.largest_group_count =
      std::max<std::uint64_t>(stats_.largest_group_count, group_starts_.size());
  stats_.largest_batch = std::max<std::uint64_t>(stats_.largest_batch, batch_.size());
  stats_.queue_size = 0;
  for (const auto& worker : workers_) stats_.queue_size += worker->pending_count;
  stats_.largest_queue_size = std::max(stats_.largest_queue_size, stats_.queue_size);
  group_starts_.push_back(static_cast<std::uint32_t>(batch_.size()));
}

std::string UnfoldingLoop::sizes() const {
  return "|B|=" + std::to_string(process_.condition_count()) +
         " |E|=" + std::to_string(entered_.size() + cut_offs_.size()) +
         " |C|=" + std::to_string(stats_.cutoffs);
}

std::string UnfoldingLoop::progress() const {
  std::uint64_t queued = 0;
  for (const auto& worker : workers_) queued += worker->pending_count;
  return sizes() + ", events queued: " + std::to_string(queued);
}

void UnfoldingLoop::print_running_line() {
  callback_(sizes() + " |Q|=" + std::to_string(stats_.queue_size) +
            " |[e]|=" + std::to_string(level_) + " |SP|/|Si|=" + std::to_string(batch_.size()) +
            "/" + std::to_string(group_starts_.size() - 1));
}

void UnfoldingLoop::drop_relation() {
  if (relation_ == nullptr) return;
  relation_.reset();
  stats_.relation_dropped = true;
}

void UnfoldingLoop::keep_histories() {
  histories_ = std::make_unique<LocalHistories>(process_, entered_, options_.history_nodes);
  for (const auto& worker : workers_) worker->order.use(histories_.get());
}

void UnfoldingLoop::drop_histories() {
  for (const auto& worker : workers_) worker->order.use(nullptr);
  histories_.reset();
}

// A correspondent that was found to be a cut-off later hands on its own.
void UnfoldingLoop::pass_on_correspondent(EventId cut_off) {
  EventId& correspondent = process_.event(cut_off).correspondent;
  while (!non_local_.contains(cut_off) && correspondent != initial_state &&
         process_.event(correspondent).correspondent != not_cut_off) {
    const auto several = non_local_.find(correspondent);
    correspondent = process_.event(correspondent).correspondent;
    if (several != non_local_.end()) non_local_.emplace(cut_off, several->second);
  }
}

void UnfoldingLoop::on_finish() {
  // Most correspondents are settled by that; of the others few are cut-offs.
  std::vector<std::uint8_t> is_settled(cut_offs_.size());
  constexpr std::uint32_t range_size = 256;
  const auto cut_off_count = static_cast<std::uint32_t>(cut_offs_.size());
  const auto resolve = [&](std::uint32_t worker, std::uint32_t range) {
    const std::uint32_t first = range * range_size;
    const std::uint32_t end = std::min(first + range_size, cut_off_count);
    for (std::uint32_t i = first; i < end; ++i) {
      assert(process_.event(cut_offs_[i]).correspondent != not_cut_off);
      if (i + fetch_ahead < end) {
        process_.fetch_event(cut_offs_[i + fetch_ahead]);
        final_states_.fetch_slot(process_.event(cut_offs_[i + fetch_ahead / 2]).state.value());
      }
      is_settled[i] = non_local_.contains(cut_offs_[i]) ||
                      final_states_.resolve(cut_offs_[i], workers_[worker]->order);
    }
  };
  // The prefix that is made now needs the memory of the relation, which takes long to give back.
  pool_.run(1 + (cut_off_count + range_size - 1) / range_size,
            [&](std::uint32_t worker, std::uint32_t item) {
              item == 0 ? relation_.reset() : resolve(worker, item - 1);
            });
  for (std::size_t i = 0; i < cut_offs_.size(); ++i) {
    if (is_settled[i] == 0) pass_on_correspondent(cut_offs_[i]);
  }
  process_.enter_last(cut_offs_, pool_);
  entered_.insert(entered_.end(), cut_offs_.begin(), cut_offs_.end());
  drop_histories();
  stats_.conditions = process_.condition_count();
  stats_.events = entered_.size();
  for (const auto& worker : workers_) stats_.comparisons += worker->order.comparisons();
}

}  // namespace vorel::unfolder
