// reach/reach_check.h - the engine of -F and -Fs.
// Here:      the search for a configuration whose final state satisfies a property.
// Not here:  the language of properties and its translation (src/reachlang).
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "configuration/search_engine.h"
#include "reachlang/expansion.h"

namespace vorel::reach {

// What a configuration ends in.
enum class FinalState : std::uint8_t {
  marking,    // -F: any configuration, whose last events may be dummies
  stg_state,  // -Fs: none ends in a dummy, and what dummies lead to counts as enabled
};

template <net::Process P>
class ReachCheck : public configuration::SearchEngine<P> {
 public:
  // Parses the property. After a reported error the engine must not be run. Only a prefix of an STG
  // has STG states.
  ReachCheck(const P& process, const base::Params& params, std::string_view property,
             FinalState final_state);

 protected:
  void encode(sat::ClauseGroup group) override;
  bool validate(const results::Solution& solution) const override;

 private:
  const bool via_dummies_;
  std::unique_ptr<reachlang::ReachExpr> property_;
  std::optional<reachlang::NormalForm> normal_form_;  // what was encoded
};

}  // namespace vorel::reach
