// oracle/net_builder.h - builds a net or STG by names, in any order.
// Here:      places and signals that come to be by being named; arcs; the final sorting.
// Not here:  languages (oracle/net_text.h, oracle/parse_g.h), generators (oracle/random_net.h).
#pragma once

#include <cassert>
#include <map>
#include <string>

#include "net/net.h"

namespace vorel::oracle {

template <class N>
class NetBuilder {
 public:
  using Place = typename N::Place;
  using Transition = typename N::Transition;

  Place& place(const std::string& name) {
    Place*& place = places_[name];
    if (place == nullptr) {
      place = &base::append_new(net_.places);
      place->name = name;
    }
    return *place;
  }
  void mark(const std::string& name) { place(name).initial_marking = 1; }

  // The transition that consume(), produce() and label() speak of from now on.
  NetBuilder& add_transition(const std::string& name) {
    current_ = &base::append_new(net_.transitions);
    current_->name = name;
    return *this;
  }
  NetBuilder& consume(const std::string& name) {
    assert(current_ != nullptr);
    net::add_arc(place(name), *current_);
    return *this;
  }
  NetBuilder& produce(const std::string& name) {
    assert(current_ != nullptr);
    net::add_arc(*current_, place(name));
    return *this;
  }

  net::Signal& add_signal(const std::string& name, net::SignalKind kind) {
    return vorel::net::add_signal(net_, name, kind);
  }
  NetBuilder& label(net::Signal& signal, net::Sign sign) {
    current_->signal = &signal;
    current_->sign = signal.is_dummy() ? net::Sign::toggle : sign;
    return *this;
  }

  // Sorted and numbered as after loading. The builder is empty then.
  N finish() {
    if constexpr (N::has_signals) net::sort_signals(net_);
    net::sort_net(net_);
    places_.clear();
    current_ = nullptr;
    return std::move(net_);
  }

 private:
  N net_;
  std::map<std::string, Place*> places_;
  Transition* current_ = nullptr;
};

}  // namespace vorel::oracle
