#include "zchaff/decision_order.h"

#include <cassert>

namespace vorel::zchaff {
namespace {

constexpr double highest_activity = 1e100;

}  // namespace

void DecisionOrder::place(Variable v, std::uint32_t position) {
  heap_[position] = v;
  position_[index_of(v)] = position;
}

void DecisionOrder::rise(std::uint32_t position) {
  const Variable v = heap_[position];
  while (position > 0) {
    const std::uint32_t parent = (position - 1) / 2;
    if (!before(v, heap_[parent])) break;
    place(heap_[parent], position);
    position = parent;
  }
  place(v, position);
}

void DecisionOrder::sink(std::uint32_t position) {
  const Variable v = heap_[position];
  const auto size = static_cast<std::uint32_t>(heap_.size());
  for (std::uint32_t child = 2 * position + 1; child < size; child = 2 * position + 1) {
    if (child + 1 < size && before(heap_[child + 1], heap_[child])) ++child;
    if (!before(heap_[child], v)) break;
    place(heap_[child], position);
    position = child;
  }
  place(v, position);
}

void DecisionOrder::insert(Variable v) {
  assert(position_[index_of(v)] == absent);
  heap_.push_back(v);
  rise(static_cast<std::uint32_t>(heap_.size()) - 1);
}

void DecisionOrder::add_variable(bool candidate) {
  const Variable v{static_cast<std::uint32_t>(position_.size())};
  position_.push_back(absent);
  activity_.push_back(0);
  candidate_.push_back(candidate ? 1 : 0);
  if (candidate) insert(v);
}

void DecisionOrder::pop() {
  assert(!heap_.empty());
  position_[index_of(heap_.front())] = absent;
  const Variable last = heap_.back();
  heap_.pop_back();
  if (heap_.empty()) return;
  heap_.front() = last;
  sink(0);
}

void DecisionOrder::bump(Variable v) {
  activity_[index_of(v)] += increment_;
  if (activity_[index_of(v)] > highest_activity) rescale();
  if (position_[index_of(v)] != absent) rise(position_[index_of(v)]);
}

// Underflow may make activities equal, but never reverses an order: the heap stays one.
void DecisionOrder::rescale() {
  for (double& activity : activity_) activity /= highest_activity;
  increment_ /= highest_activity;
}

}  // namespace vorel::zchaff
