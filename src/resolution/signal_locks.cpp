#include "resolution/signal_locks.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <iostream>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/messages.h"
#include "base/run_state.h"
#include "resolution/event_copies.h"

namespace vorel::resolution {
namespace {

using net::Signal;
using net::SignalKind;
using net::StgPrefix;
using Word = std::uint64_t;

constexpr int verbosity_of_numbers = 1;
constexpr int verbosity_of_pairs = 4;

// A row of bits for each of a number of things, one bit for each copy of a small set.
class Rows {
 public:
  void reset(std::size_t rows, std::size_t stride) {
    stride_ = stride;
    words_.assign(rows * stride, 0);
  }
  std::span<Word> operator[](std::size_t row) {
    return std::span(words_).subspan(row * stride_, stride_);
  }

 private:
  std::size_t stride_ = 0;
  std::vector<Word> words_;
};

void add(std::span<Word> to, std::span<const Word> from) {
  for (std::size_t i = 0; i < to.size(); ++i) to[i] |= from[i];
}
void set_bit(std::span<Word> row, std::size_t bit) { row[bit / 64] |= Word{1} << bit % 64; }

// What is known of an ordered pair of signals a, b from the events of a.
struct Difference {
  static constexpr std::int64_t none = 2147483647;  // no event met yet

  bool is_locked = true;
  std::int64_t first_seen = none;  // events of b less those of a, up to an event of a
};

// Looks at the events of one signal at a time, in chunks, as the columns of rows of bits: which of
// them are in the past of each copy, follow it, or are concurrent with it.
class LockSearch {
 public:
  LockSearch(const StgPrefix& prefix, EventCopies copies)
      : copies_{std::move(copies)},
        signals_{prefix.internals_end},
        differences_(std::size_t{signals_} * signals_),
        events_of_(signals_),
        own_count_(copies_.size(), 0),
        count_(copies_.size(), 0),
        shared_(prefix.conditions.size(), base::no_index) {
    for (std::uint32_t copy = 0; copy < copies_.size(); ++copy) {
      if (const Signal& signal = signal_of(copy); !signal.is_dummy()) {
        events_of_[signal.index].push_back(copy);
      }
    }
    find_shared_conditions();
    for (std::uint32_t b = 0; b < signals_; ++b) {
      count_events(b);
      for (const std::uint32_t copy : events_of_[b]) own_count_[copy] = count_[copy];
    }
  }

  void compare_all() {
    for (std::uint32_t b = 0; b < signals_; ++b) compare_with(b);
  }
  // Enough for the pairs that have the signal.
  void compare_one(std::uint32_t signal) {
    for (std::uint32_t b = 0; b < signals_; ++b) {
      if (b == signal) {
        compare_with(b);
      } else {
        count_events(b);
        for (const std::uint32_t copy : events_of_[signal]) note_difference(copy, b);
      }
    }
  }

  bool are_locked(std::uint32_t a, std::uint32_t b) const {
    return difference(a, b).is_locked && difference(b, a).is_locked;
  }

 private:
  static constexpr std::size_t words_in_chunk = 8;
  static std::size_t stride_of(std::span<const std::uint32_t> columns) {
    return (columns.size() + 63) / 64;
  }

  const Signal& signal_of(std::uint32_t copy) const {
    return *copies_.event(copy).transition->signal;
  }
  Difference& difference(std::uint32_t a, std::uint32_t b) {
    return differences_[std::size_t{a} * signals_ + b];
  }
  const Difference& difference(std::uint32_t a, std::uint32_t b) const {
    return differences_[std::size_t{a} * signals_ + b];
  }

  // Conditions with several consumers are numbered.
  void find_shared_conditions() {
    base::IndexedBy<StgPrefix::Condition, std::uint32_t> consumers(shared_.size());
    for (std::uint32_t copy = 0; copy < copies_.size(); ++copy) {
      for (const auto* condition : copies_.event(copy).preset) {
        if (++consumers[*condition] == 2) shared_[*condition] = shared_count_++;
      }
    }
  }

  template <class Visit>
  void for_each_chunk(std::uint32_t signal, Visit visit) const {
    constexpr std::size_t size = words_in_chunk * 64;
    const std::span<const std::uint32_t> events = events_of_[signal];
    for (std::size_t first = 0; first < events.size(); first += size) {
      visit(events.subspan(first, std::min(size, events.size() - first)));
    }
  }

  // count_[copy] = events of the signal in the past of the copy, itself included.
  void count_events(std::uint32_t signal) {
    std::ranges::fill(count_, 0);
    for_each_chunk(signal, [this](std::span<const std::uint32_t> columns) {
      past_.reset(copies_.size(), stride_of(columns));
      for (std::size_t i = 0; i < columns.size(); ++i) set_bit(past_[columns[i]], i);
      for (std::uint32_t copy = 0; copy < copies_.size(); ++copy) {
        for (const std::uint32_t cause : copies_.causes(copy)) add(past_[copy], past_[cause]);
        for (const Word word : past_[copy]) count_[copy] += std::popcount(word);
      }
    });
  }

  void compare_with(std::uint32_t b) {
    count_events(b);
    for (std::uint32_t copy = 0; copy < copies_.size(); ++copy) note_difference(copy, b);
    for_each_chunk(
        b, [this, b](std::span<const std::uint32_t> columns) { find_concurrency(columns, b); });
  }

  void note_difference(std::uint32_t copy, std::uint32_t b) {
    const Signal& a = signal_of(copy);
    if (a.is_dummy()) return;
    const std::int64_t d = std::int64_t{count_[copy]} - std::int64_t{own_count_[copy]};
    Difference& known = difference(a.index, b);
    if (known.first_seen == Difference::none) known.first_seen = d;
    if (d != known.first_seen || d < -1 || d > 1) known.is_locked = false;
  }

  // Columns that neither follow the copy, nor are in its past, nor are in conflict with it: do not
  // follow a rival for a condition that its past consumes. Followers of rivals are never those of
  // the consumer in the past.
  void find_concurrency(std::span<const std::uint32_t> columns, std::uint32_t b) {
    find_followers(columns);
    barred_.reset(copies_.size(), stride_of(columns));
    for (std::size_t i = 0; i < columns.size(); ++i) set_bit(barred_[columns[i]], i);
    for (std::uint32_t copy = 0; copy < copies_.size(); ++copy) {
      const std::span<Word> barred = barred_[copy];
      const std::span<const Word> after = after_[copy];
      for (const std::uint32_t cause : copies_.causes(copy)) add(barred, barred_[cause]);
      for (const auto* condition : copies_.event(copy).preset) {
        const std::uint32_t number = shared_[*condition];
        if (number == base::no_index) continue;
        const std::span<const Word> needed = need_[number];
        for (std::size_t i = 0; i < barred.size(); ++i) barred[i] |= needed[i] & ~after[i];
      }
      const Signal& a = signal_of(copy);
      if (a.is_dummy() || a.index == b) continue;
      int related = 0;
      for (std::size_t i = 0; i < barred.size(); ++i)
        related += std::popcount(barred[i] | after[i]);
      if (static_cast<std::size_t>(related) < columns.size()) {
        difference(a.index, b).is_locked = false;
      }
    }
  }

  // after_[copy]: the columns that the copy is a cause of, or is. need_[number]: those that need
  // the condition.
  void find_followers(std::span<const std::uint32_t> columns) {
    after_.reset(copies_.size(), stride_of(columns));
    need_.reset(shared_count_, stride_of(columns));
    for (std::size_t i = 0; i < columns.size(); ++i) set_bit(after_[columns[i]], i);
    for (std::uint32_t copy = copies_.size(); copy-- > 0;) {
      for (const std::uint32_t cause : copies_.causes(copy)) add(after_[cause], after_[copy]);
      for (const auto* condition : copies_.event(copy).preset) {
        if (shared_[*condition] != base::no_index) add(need_[shared_[*condition]], after_[copy]);
      }
    }
  }

  const EventCopies copies_;
  const std::uint32_t signals_;
  std::vector<Difference> differences_;                          // by both signals
  std::vector<std::vector<std::uint32_t>> events_of_;            // by signal
  std::vector<std::uint32_t> own_count_;                         // by copy: of its own signal
  std::vector<std::uint32_t> count_;                             // by copy: of the signal in hand
  base::IndexedBy<StgPrefix::Condition, std::uint32_t> shared_;  // number, or no_index
  std::uint32_t shared_count_ = 0;
  Rows past_, after_, barred_, need_;  // of the chunk in hand
};

EventCopies copies_for(const StgPrefix& prefix, const Reduction* reduction) {
  return reduction == nullptr ? event_copies(prefix) : event_copies(prefix, *reduction);
}

void print_locks(const RelationGraph<Signal>& graph, const Reduction* reduction) {
  if (base::verbosity() < verbosity_of_pairs) return;
  if (reduction == nullptr) {
    std::cerr << "\nLocked signals of the STG:\n";
  } else {
    std::cerr << "\nLock relation after concurrency reduction " << to_text(*reduction);
  }
  for (std::uint32_t a = 0; a < graph.size(); ++a) {
    for (const std::uint32_t b : graph[a].post) {
      if (a < b) std::cerr << '\n' << graph[a].item->name << ' ' << graph[b].item->name;
    }
  }
  std::cerr << std::flush;
}

std::uint64_t weight(const Signal& a, const Signal& b) {
  const auto factor = [](const Signal& s) { return s.kind == SignalKind::input ? 1u : 2u; };
  return factor(a) * factor(b);
}

std::uint64_t weight_of_all_pairs(const net::Stg& stg) {
  const std::uint64_t inputs = stg.inputs_end, others = stg.internals_end - stg.inputs_end;
  const std::uint64_t both_inputs = inputs == 0 ? 0 : inputs * (inputs - 1) / 2;
  return others == 0 ? both_inputs : both_inputs + 2 * (inputs + others - 1) * others;
}

}  // namespace

RelationGraph<Signal> signal_lock_relation(const StgPrefix& prefix, const Reduction* reduction) {
  LockSearch search(prefix, copies_for(prefix, reduction));
  search.compare_all();
  RelationGraph<Signal> graph = graph_over(prefix.signals, prefix.internals_end);
  for (std::uint32_t a = 0; a < graph.size(); ++a) {
    for (std::uint32_t b = 0; b < graph.size(); ++b) {
      if (a != b && search.are_locked(a, b)) graph[a].post.push_back(b);
    }
  }
  print_locks(graph, reduction);
  return graph;
}

LockNumbers lock_numbers(const StgPrefix& prefix, const Reduction* reduction) {
  const RelationGraph<Signal> graph = signal_lock_relation(prefix, reduction);
  LockNumbers numbers;
  for (std::uint32_t a = 0; a < graph.size(); ++a) {
    for (const std::uint32_t b : graph[a].post) {
      if (a < b) numbers.locked += weight(*graph[a].item, *graph[b].item);
    }
  }
  assert(numbers.locked <= weight_of_all_pairs(prefix));
  numbers.unlocked = weight_of_all_pairs(prefix) - numbers.locked;
  if (base::verbosity() >= verbosity_of_numbers) {
    std::cerr << "\nLock/Unlock numbers: " << numbers.locked << '/' << numbers.unlocked
              << std::flush;
  }
  return numbers;
}

std::uint64_t unlocked_weight(const StgPrefix& prefix, const Signal& signal) {
  assert(!signal.is_dummy());
  LockSearch search(prefix, event_copies(prefix));
  search.compare_one(signal.index);
  std::uint64_t sum = 0;
  std::string locked;
  for (const net::SignalId other : prefix.visible_signals()) {
    if (other == base::id_of(signal)) continue;
    if (search.are_locked(signal.index, other.value)) {
      locked += ' ' + base::element(prefix.signals, other).name;
    } else {
      sum += other.value < prefix.inputs_end ? 2 : 4;
    }
  }
  if (base::verbosity() >= verbosity_of_pairs) std::cerr << "\nLocked signals:" << locked << '\n';
  return sum;
}

}  // namespace vorel::resolution
