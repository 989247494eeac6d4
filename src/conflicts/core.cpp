#include "conflicts/core.h"

#include <cassert>
#include <iostream>
#include <iterator>
#include <string>

#include "base/messages.h"
#include "base/run_state.h"

namespace vorel::conflicts {
namespace {

constexpr int verbosity_of_checks = 6;

std::string text_of(const Core& core) {
  std::string text;
  for (const configuration::EventSet* set : {&core.first, &core.second}) {
    text += text.empty() ? "{" : ", {";
    std::string_view separator;
    for (const configuration::StgEventId event : *set) {
      text += separator;
      text += std::to_string(event.value);
      separator = ", ";
    }
    text += "}";
  }
  return text;
}

// Takes a known core out of a candidate, the known one's sum being a part of the candidate's.
class CoreSplit {
 public:
  CoreSplit(const net::StgPrefix& prefix, const Core& candidate, const Core& known,
            const KeepCore& keep)
      : prefix_{prefix}, candidate_{candidate}, known_{known}, keep_{keep} {}

  std::vector<Core> run() && {
    if (candidate_.nested) {
      split_nested();
    } else if (known_.nested) {
      split_by_nested();
    } else if (accept_without(candidate_.first)) {
      accept_without(candidate_.second);
    } else {
      parts_.clear();
    }
    return std::move(parts_);
  }

 private:
  bool accept(Core core) {
    if (!keep_(core)) return false;
    parts_.push_back(std::move(core));
    return true;
  }

  // The configuration without the known sum, if that is one.
  bool remove_known(const configuration::EventSet& configuration,
                    configuration::EventSet& rest) const {
    rest = configuration::set_difference(configuration, known_.sum);
    if (!configuration::is_causally_closed(prefix_, rest)) return false;
    rest = configuration::without_maximal_dummies(prefix_, rest);
    return true;
  }

  // The known core comes first or last in what the second configuration has more.
  void split_nested() {
    configuration::EventSet part = configuration::set_union(candidate_.first, known_.sum);
    if (configuration::is_causally_closed(prefix_, part)) {
      accept(Core(std::move(part), candidate_.second));
    } else if (remove_known(candidate_.second, part)) {
      accept(Core(candidate_.first, std::move(part)));
    }
  }

  void split_by_nested() {
    const bool in_first = configuration::includes(candidate_.first, known_.sum);
    if (!in_first && !configuration::includes(candidate_.second, known_.sum)) return;
    configuration::EventSet rest;
    if (!remove_known(in_first ? candidate_.first : candidate_.second, rest)) return;
    accept(Core(std::move(rest), in_first ? candidate_.second : candidate_.first));
  }

  // Neither is nested: what the configuration loses may be a core by itself.
  bool accept_without(const configuration::EventSet& configuration) {
    configuration::EventSet rest;
    return remove_known(configuration, rest) && rest != configuration &&
           accept(Core(std::move(rest), configuration));
  }

  const net::StgPrefix& prefix_;
  const Core& candidate_;
  const Core& known_;
  const KeepCore& keep_;
  std::vector<Core> parts_;
};

}  // namespace

Core::Core(configuration::EventSet one, configuration::EventSet other)
    : first{std::move(one)}, second{std::move(other)} {
  if (first.size() > second.size()) std::swap(first, second);
  sum = configuration::symmetric_difference(first, second);
  nested = sum.size() == second.size() - first.size();
}

std::vector<Core> is_composite_due_to(const net::StgPrefix& prefix, const Core& candidate,
                                      const Core& known, const KeepCore& keep) {
  if (base::verbosity() >= verbosity_of_checks) {
    base::print_formatted(std::cerr, "\nChecking if the core\n%s\nis composite due to\n%s",
                          text_of(candidate).c_str(), text_of(known).c_str());
  }
  if (candidate.sum.size() <= known.sum.size() ||
      !configuration::includes(candidate.sum, known.sum))
    return {};
  if (configuration::has_only_dummies(prefix,
                                      configuration::set_difference(candidate.sum, known.sum)))
    return {};
  return CoreSplit(prefix, candidate, known, keep).run();
}

bool MinimalCores::seed(Core core) {
  assert(!core.sum.empty());
  if (!met_.insert(core.sum).second) return false;
  core.seeded = true;
  cores_.push_back(std::move(core));
  return true;
}

std::vector<Core> MinimalCores::split_by_known(const Core& core) const {
  for (const Core& known : cores_) {
    auto parts = is_composite_due_to(prefix_, core, known, keep_);
    if (!parts.empty()) return parts;
  }
  return {};
}

void MinimalCores::take_out_composites_of(const Core& core, std::vector<Core>& pending) {
  for (auto known = cores_.begin(); known != cores_.end();) {
    const auto next = std::next(known);
    if (known->seeded) {
      known = next;
      continue;
    }
    auto parts = is_composite_due_to(prefix_, *known, core, keep_);
    if (!parts.empty()) cores_.erase(known);
    std::ranges::move(parts, std::back_inserter(pending));
    known = next;
  }
}

std::vector<Core> MinimalCores::add(Core core) {
  std::vector<Core> pending, met;
  pending.push_back(std::move(core));
  // Each step enters a sum that is new, and there are only so many.
  for (std::size_t next = 0; next < pending.size(); ++next) {
    const Core current = pending[next];
    assert(!current.sum.empty() && "a conflict has a difference");
    if (!met_.insert(current.sum).second) continue;
    met.push_back(current);
    auto parts = split_by_known(current);
    if (parts.empty()) {
      take_out_composites_of(current, pending);
      cores_.push_back(current);
    } else {
      std::ranges::move(parts, std::back_inserter(pending));
    }
  }
  return met;
}

}  // namespace vorel::conflicts
