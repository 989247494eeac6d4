// reach/reach_check.h - the engine of -F and -Fs.
// Here:      the search for a configuration whose final state satisfies a property.
// Not here:  the language of properties and its translation (src/reachlang).
#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "configuration/search_engine.h"
#include "reachlang/expansion.h"

namespace vorel::reach {

// A state that satisfies a property.
struct Witness {
  results::Trace trace;
  std::vector<reachlang::BoundVariable> elements;  // of the outermost quantifiers `exists`
};

template <net::Process P>
class ReachCheck : public configuration::SearchEngine<P> {
 public:
  // Parses the property. After a reported error the engine must not be run. Only a prefix of an STG
  // has STG states.
  ReachCheck(const P& process, const configuration::SearchOptions& options,
             std::string_view property, configuration::Enabledness enabledness);

  // After run(): the last solution, replayed. Nothing without one, or after a reported error.
  std::optional<Witness> witness() const;

 protected:
  void encode(sat::ClauseGroup group) override;
  bool validate(const results::Solution& solution) const override;

 private:
  std::unique_ptr<reachlang::ReachExpr> property_;
  std::optional<reachlang::NormalForm> normal_form_;  // what was encoded
};

}  // namespace vorel::reach
